#include "Core/Storage/RescueFolders.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

namespace fs = std::filesystem;

// Holds the name that the folder had as a root: its parent may have been moved.
fs::path noteIn(const fs::path& rescue) {
  return rescue / ".meta" / "rescued-from.txt";
}

bool mayBeOf(const fs::path& root, const fs::path& rescue, const FileManager& files) {
  constexpr std::uint64_t longestName = 4096;
  try {
    const auto name = files.read(noteIn(rescue), longestName);
    return !name || *name == root.filename().native();
  } catch (const FileError&) {
    return true;
  }
}

std::vector<DirectoryEntry> entriesOf(const fs::path& folder, const FileManager& files) {
  try {
    return files.fileSystem().list(folder);
  } catch (const FileError& error) {
    using enum FileError::Kind;
    if (error.kind() == notFound || error.kind() == notADirectory || error.kind() == accessDenied)
      return {};
    throw;
  }
}

std::string quoted(const fs::path& path) {
  std::string word = "'";
  for (const char byte : path.native()) word += byte == '\'' ? "'\\''" : std::string(1, byte);
  return word + "'";
}

}  // namespace

std::vector<fs::path> RescueFolders::of(const fs::path& root, const FileManager& files) {
  const fs::path parent = root.parent_path();
  std::vector<std::pair<Moment, fs::path>> found;
  for (const DirectoryEntry& entry : entriesOf(parent, files)) {
    if (entry.type != FileType::directory || !entry.name.starts_with(prefix)) continue;
    const fs::path rescue = parent / entry.name;
    if (!mayBeOf(root, rescue, files)) continue;
    // A root changes for the last time when its `.backups` move on to the next one.
    if (const auto attributes = files.attributes(rescue))
      found.emplace_back(attributes->modified, rescue);
  }
  std::ranges::sort(found, std::greater());
  std::vector<fs::path> folders;
  folders.reserve(found.size());
  for (auto& [modified, rescue] : found) folders.push_back(std::move(rescue));
  return folders;
}

void RescueFolders::throwIfAny(const fs::path& root, const FileManager& files) {
  const std::vector<fs::path> folders = of(root, files);
  if (folders.empty()) return;
  throw Error(
      "root.rescue",
      fmt::format("数据目录 {} 不见了，但它旁边有恢复备份时留下的原数据。没有新建空的数据目录；"
                  "请运行 {} 取回原数据，或先把 {} 移到别处再试。",
                  root.string(), wayBack(folders.front(), root),
                  folders.front().filename().string()));
}

std::string RescueFolders::wayBack(const fs::path& rescue, const fs::path& root) {
  // -T: into the place of the root, not into a root that is there by then.
  return fmt::format("mv -T -- {} {}", quoted(rescue), quoted(root));
}

void RescueFolders::mark(const fs::path& rescue, const fs::path& root,
                         const FileManager& files) noexcept {
  try {
    constexpr unsigned ownerOnly = 0700;
    files.createDirectories(noteIn(rescue).parent_path(), ownerOnly);
    files.writeAtomically(noteIn(rescue), root.filename().native());
  } catch (const std::exception& error) {
    Log::error(LogChannel::storage, "⚠️ RescueFolders.mark: {}", error.what());
  }
}

}  // namespace nomely
