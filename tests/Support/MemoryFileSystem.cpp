#include "Support/MemoryFileSystem.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "Platform/Files/FileError.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {

struct MemoryFileSystem::Node {
  FileType type = FileType::regular;
  unsigned permissions = 0644;
  std::string bytes = {};
  std::map<std::string, std::shared_ptr<Node>> entries = {};  // of a folder
  // Both as they were last synchronised.
  std::string durableBytes = {};
  std::map<std::string, std::shared_ptr<Node>> durableEntries = {};

  void sync() {
    durableBytes = bytes;
    durableEntries = entries;
  }
  void syncAll() {
    sync();
    for (const auto& [name, node] : entries) node->syncAll();
  }
  [[nodiscard]] FileAttributes attributes() const {
    return {.type = type,
            .size = bytes.size(),
            .modified = {},
            .fileNumber = reinterpret_cast<std::uintptr_t>(this),
            .permissions = permissions,
            .changed = {}};
  }
};

namespace {

using Node = MemoryFileSystem::Node;
using Left = MemoryFileSystem::Left;

class MemoryFile final : public File {
 public:
  explicit MemoryFile(std::shared_ptr<Node> node) : node_(std::move(node)) {}

  std::size_t read(std::span<char> buffer) override {
    const std::size_t count = node_->bytes.copy(buffer.data(), buffer.size(), position_);
    position_ += count;
    return count;
  }
  std::size_t readAt(std::uint64_t offset, std::span<char> buffer) override {
    if (offset >= node_->bytes.size()) return 0;
    return node_->bytes.copy(buffer.data(), buffer.size(), static_cast<std::size_t>(offset));
  }
  std::size_t write(std::string_view bytes) override {
    node_->bytes += bytes;
    return bytes.size();
  }
  void sync() override { node_->sync(); }
  FileAttributes attributes() override { return node_->attributes(); }
  void copyContents(File& source) override {
    node_->bytes = dynamic_cast<MemoryFile&>(source).node_->bytes;
  }
  bool shareContents(File&) override { return false; }
  void copyMetadata(File& source) override { setPermissions(source.attributes().permissions); }
  void setPermissions(unsigned permissions) override { node_->permissions = permissions; }
  void setModified(Moment) override {}

 private:
  std::shared_ptr<Node> node_;
  std::size_t position_ = 0;
};

void gather(const Node& folder, Left left, const std::string& prefix, Tree& tree) {
  for (const auto& [name, node] : left == Left::durable ? folder.durableEntries : folder.entries) {
    if (node->type == FileType::directory) {
      tree[prefix + name + "/"];
      gather(*node, left, prefix + name + "/", tree);
    } else {
      tree[prefix + name] = left == Left::all ? node->bytes : node->durableBytes;
    }
  }
}

}  // namespace

void writeTree(const fs::path& folder, const Tree& tree) {
  for (const auto& [name, bytes] : tree) {
    if (name.ends_with('/'))
      fs::create_directories(folder / name);
    else
      writeFile(folder / name, bytes);
  }
}

MemoryFileSystem::MemoryFileSystem(fs::path folder, const Tree& tree)
    : folder_(std::move(folder)), root_(std::make_shared<Node>(FileType::directory, 0755U)) {
  for (const auto& [name, bytes] : tree) {
    std::shared_ptr<Node> node = root_;
    for (const fs::path& part : fs::path(name)) {
      if (part.empty()) continue;
      std::shared_ptr<Node>& next = node->entries[part.string()];
      if (!next) next = std::make_shared<Node>(FileType::directory, 0755U);
      node->sync();
      node = next;
    }
    if (name.ends_with('/')) continue;
    *node = {.bytes = bytes, .durableBytes = bytes};
  }
}

Tree MemoryFileSystem::tree(Left left) const {
  Tree tree;
  gather(*root_, left, "", tree);
  return tree;
}

std::shared_ptr<Node> MemoryFileSystem::find(const fs::path& path) const {
  std::shared_ptr<Node> node = root_;
  for (const fs::path& part : path.lexically_normal().lexically_relative(folder_)) {
    if (part == "." || part.empty()) continue;
    const auto found = node->entries.find(part.string());
    if (found == node->entries.end()) return nullptr;
    node = found->second;
  }
  return node;
}

Node& MemoryFileSystem::folder(const fs::path& path) const {
  const auto node = find(path);
  if (!node) throw FileError("测试", path, ENOENT);
  if (node->type != FileType::directory) throw FileError("测试", path, ENOTDIR);
  return *node;
}

std::unique_ptr<File> MemoryFileSystem::open(const fs::path& path, OpenMode mode, LinkPolicy) {
  std::shared_ptr<Node> node = find(path);
  if (mode == OpenMode::createNew) {
    if (node) throw FileError("测试", path, EEXIST);
    node = std::make_shared<Node>();
    folder(path.parent_path()).entries[path.filename().string()] = node;
  }
  return node ? std::make_unique<MemoryFile>(node) : nullptr;
}

std::optional<FileAttributes> MemoryFileSystem::attributes(const fs::path& path, LinkPolicy) {
  const auto node = find(path);
  return node ? std::optional(node->attributes()) : std::nullopt;
}

std::vector<DirectoryEntry> MemoryFileSystem::list(const fs::path& directory) {
  std::vector<DirectoryEntry> entries;
  for (const auto& [name, node] : folder(directory).entries) entries.push_back({name, node->type});
  return entries;
}

bool MemoryFileSystem::makeDirectory(const fs::path& path, unsigned permissions) {
  if (find(path)) return folder(path).type != FileType::directory;
  folder(path.parent_path()).entries[path.filename().string()] =
      std::make_shared<Node>(FileType::directory, permissions);
  if (path.parent_path() == folder_) fs::create_directories(path);
  return true;
}

void MemoryFileSystem::rename(const fs::path& from, const fs::path& to, Replacement replacement) {
  const auto node = find(from);
  if (!node) throw FileError("测试", from, ENOENT);
  if (replacement == Replacement::forbid && find(to)) throw FileError("测试", to, EEXIST);
  folder(to.parent_path()).entries[to.filename().string()] = node;
  folder(from.parent_path()).entries.erase(from.filename().string());
}

bool MemoryFileSystem::remove(const fs::path& path) {
  const auto node = find(path);
  if (!node) return false;
  if (!node->entries.empty()) throw FileError("测试", path, ENOTEMPTY);
  folder(path.parent_path()).entries.erase(path.filename().string());
  return true;
}

void MemoryFileSystem::syncDirectory(const fs::path& path) {
  folder(path).sync();
}

bool MemoryFileSystem::exchange(const fs::path& left, const fs::path& right) {
  const auto [first, second] = std::pair(find(left), find(right));
  if (!first || !second) throw FileError("测试", first ? right : left, ENOENT);
  folder(left.parent_path()).entries[left.filename().string()] = second;
  folder(right.parent_path()).entries[right.filename().string()] = first;
  return true;
}

bool MemoryFileSystem::link(const fs::path& from, const fs::path& to) {
  const auto node = find(from);
  if (!node) throw FileError("测试", from, ENOENT);
  if (find(to)) throw FileError("测试", to, EEXIST);
  folder(to.parent_path()).entries[to.filename().string()] = node;
  return true;
}

void MemoryFileSystem::syncFileSystem(const fs::path&) {
  root_->syncAll();
}

}  // namespace nomely::test
