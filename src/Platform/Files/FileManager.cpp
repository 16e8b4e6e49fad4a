#include "Platform/Files/FileManager.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include "Platform/Files/FileError.h"
#include "Platform/Files/TemporaryName.h"

namespace nomely {
namespace {

using std::filesystem::path;

bool isUntouched(const FileAttributes& former, const FileAttributes& present) {
  return former.device == present.device && former.fileNumber == present.fileNumber &&
         former.size == present.size && former.changed == present.changed;
}

path folderOf(const path& file) {
  const path folder = file.parent_path();
  return folder.empty() ? path(".") : folder;
}

void writeAll(File& file, std::string_view bytes) {
  while (!bytes.empty()) bytes.remove_prefix(file.write(bytes));
}

// The failure that leads here is the one to report, not that of taking away.
void takeAway(FileSystem& fileSystem, const path& name) noexcept {
  try {
    fileSystem.remove(name);
  } catch (const FileError&) {
  }
}

}  // namespace

// A file under a temporary name, taken away again unless it was put in place.
class FileManager::Temporary {
 public:
  Temporary(FileSystem& fileSystem, const path& folder)
      : fileSystem_(fileSystem),
        path_(TemporaryName::freshIn(folder)),
        file_(fileSystem.open(path_, FileSystem::OpenMode::createNew, LinkPolicy::noFollow)) {}

  ~Temporary() {
    if (placed_) return;
    try {
      file_.reset();
      fileSystem_.remove(path_);
    } catch (const FileError&) {
      // The failure that brought us here is the one to report; a sweep removes the file later.
    }
  }

  Temporary(const Temporary&) = delete;
  Temporary& operator=(const Temporary&) = delete;

  [[nodiscard]] File& file() { return *file_; }

  void write(std::string_view bytes) { writeAll(*file_, bytes); }

  // Writes what `produce` gives, small pieces together.
  void write(const Producer& produce) {
    constexpr std::size_t step = std::size_t{1} << 18;
    std::string collected;
    collected.reserve(step);
    const auto flush = [&] {
      write(collected);
      collected.clear();
    };
    produce([&](std::string_view piece) {
      if (collected.size() + piece.size() > step) flush();
      if (piece.size() >= step)
        write(piece);
      else
        collected += piece;
    });
    flush();
  }

  void place(const path& target, Replacement replacement, Durability durability) {
    if (durability == Durability::now) file_->sync();
    file_.reset();
    fileSystem_.rename(path_, target, replacement);
    placed_ = true;
  }

  // The same where `target` must be free, and stays so when it fails.
  void placeNew(const path& target) {
    const FileAttributes own = file_->attributes();
    try {
      place(target, Replacement::forbid, Durability::now);
    } catch (const FileError& error) {
      // It may have been renamed although that was reported to have failed.
      if (error.kind() != FileError::Kind::alreadyExists && isAt(target, own))
        takeAway(fileSystem_, target);
      throw;
    }
  }

 private:
  [[nodiscard]] bool isAt(const path& name, const FileAttributes& own) const {
    try {
      const auto found = fileSystem_.attributes(name, LinkPolicy::noFollow);
      return found && found->device == own.device && found->fileNumber == own.fileNumber;
    } catch (const FileError&) {
      return false;
    }
  }

  FileSystem& fileSystem_;
  path path_;
  std::unique_ptr<File> file_;
  bool placed_ = false;
};

bool FileManager::exists(const path& name) const {
  return fileSystem_.attributes(name, LinkPolicy::noFollow).has_value();
}

bool FileManager::isDirectory(const path& name) const {
  const auto found = fileSystem_.attributes(name, LinkPolicy::follow);
  return found && found->type == FileType::directory;
}

std::optional<FileAttributes> FileManager::attributes(const path& name, LinkPolicy links) const {
  return fileSystem_.attributes(name, links);
}

std::vector<DirectoryEntry> FileManager::listAll(const path& directory) const {
  std::vector<DirectoryEntry> entries = fileSystem_.list(directory);
  std::ranges::sort(entries, {}, &DirectoryEntry::name);
  return entries;
}

std::vector<DirectoryEntry> FileManager::listVisible(const path& directory) const {
  std::vector<DirectoryEntry> entries = fileSystem_.list(directory);
  std::erase_if(entries, [](const DirectoryEntry& entry) { return entry.name.starts_with('.'); });
  std::ranges::sort(entries, {}, &DirectoryEntry::name);
  return entries;
}

std::optional<std::string> FileManager::read(const path& name, std::uint64_t most) const {
  const std::unique_ptr<File> file =
      fileSystem_.open(name, FileSystem::OpenMode::read, LinkPolicy::follow);
  if (!file) return std::nullopt;
  const std::uint64_t size = file->attributes().size;
  if (size > most) throw FileError("读取", name, EFBIG);
  // One byte more than the size, so that the usual file ends with its first read.
  std::string bytes(size + 1, '\0');
  std::size_t length = 0;
  while (const std::size_t count = file->read(std::span(bytes).subspan(length))) {
    length += count;
    if (length > most) throw FileError("读取", name, EFBIG);
    if (length == bytes.size()) bytes.resize(bytes.size() * 2);
  }
  bytes.resize(length);
  return bytes;
}

bool FileManager::contentsEqual(const path& left, const path& right) const {
  const auto a = fileSystem_.open(left, FileSystem::OpenMode::read, LinkPolicy::follow);
  const auto b = fileSystem_.open(right, FileSystem::OpenMode::read, LinkPolicy::follow);
  if (!a || !b) throw FileError("比较", a ? right : left, ENOENT);
  if (a->attributes().size != b->attributes().size) return false;
  constexpr std::size_t step = std::size_t{1} << 16;
  std::string bufferA(step, '\0');
  std::string bufferB(step, '\0');
  const auto fill = [](File& file, std::string& buffer) {
    std::size_t length = 0;
    while (length < buffer.size()) {
      const std::size_t count = file.read(std::span(buffer).subspan(length));
      if (count == 0) break;
      length += count;
    }
    return std::string_view(buffer).substr(0, length);
  };
  for (;;) {
    const std::string_view chunkA = fill(*a, bufferA);
    if (chunkA != fill(*b, bufferB)) return false;
    if (chunkA.empty()) return true;
  }
}

bool FileManager::replace(const path& target, Temporary& written, Durability durability,
                          const FileAttributes* former) const {
  const auto replaced = fileSystem_.attributes(target, LinkPolicy::noFollow);
  if (former && !(replaced && isUntouched(*former, *replaced))) return false;
  if (replaced && replaced->type == FileType::regular &&
      replaced->permissions != written.file().attributes().permissions)
    written.file().setPermissions(replaced->permissions);
  written.place(target, Replacement::allow, durability);
  if (durability == Durability::now) syncParent(target);
  return true;
}

bool FileManager::putNew(const path& target, Temporary& written) const {
  try {
    written.placeNew(target);
  } catch (const FileError& error) {
    if (error.kind() == FileError::Kind::alreadyExists) return false;
    throw;
  }
  settleNew(target);
  return true;
}

void FileManager::writeAtomically(const path& target, std::string_view bytes,
                                  Durability durability) const {
  Temporary temporary(fileSystem_, folderOf(target));
  temporary.write(bytes);
  (void)replace(target, temporary, durability);
}

bool FileManager::replaceAtomically(const path& target, std::string_view bytes,
                                    const FileAttributes& former) const {
  Temporary temporary(fileSystem_, folderOf(target));
  temporary.write(bytes);
  return replace(target, temporary, Durability::now, &former);
}

void FileManager::writeAtomically(const path& target, const Producer& produce) const {
  Temporary temporary(fileSystem_, folderOf(target));
  temporary.write(produce);
  (void)replace(target, temporary, Durability::now);
}

bool FileManager::createAtomically(const path& target, std::string_view bytes,
                                   std::optional<unsigned> permissions) const {
  Temporary temporary(fileSystem_, folderOf(target));
  if (permissions) temporary.file().setPermissions(*permissions);
  temporary.write(bytes);
  return putNew(target, temporary);
}

bool FileManager::createAtomically(const path& target, const Producer& produce) const {
  Temporary temporary(fileSystem_, folderOf(target));
  temporary.write(produce);
  return putNew(target, temporary);
}

bool FileManager::append(const path& name, std::string_view bytes) const {
  const std::unique_ptr<File> file =
      fileSystem_.open(name, FileSystem::OpenMode::append, LinkPolicy::noFollow);
  if (!file) return false;
  writeAll(*file, bytes);
  return true;
}

void FileManager::createDirectories(const path& directory, unsigned permissions) const {
  if (directory.empty() || isDirectory(directory)) return;
  createDirectories(directory.parent_path());
  if (fileSystem_.makeDirectory(directory, permissions)) settleNew(directory);
}

bool FileManager::setPermissions(const path& name, unsigned permissions) const {
  const auto file = fileSystem_.open(name, FileSystem::OpenMode::read, LinkPolicy::follow);
  if (!file) throw FileError("修改权限", name, ENOENT);
  if (file->attributes().permissions == permissions) return false;
  file->setPermissions(permissions);
  return true;
}

void FileManager::copyFile(const path& source, const path& destination, LinkPolicy links) const {
  const auto original = fileSystem_.open(source, FileSystem::OpenMode::read, links);
  if (!original) throw FileError("复制", source, ENOENT);
  const FileType type = original->attributes().type;
  if (type != FileType::regular)
    throw FileError("复制", source, type == FileType::directory ? EISDIR : EOPNOTSUPP);
  Temporary temporary(fileSystem_, folderOf(destination));
  temporary.file().copyContents(*original);
  temporary.file().copyMetadata(*original);
  temporary.placeNew(destination);
  settleNew(destination);
}

void FileManager::moveFile(const path& source, const path& destination) const {
  try {
    fileSystem_.rename(source, destination, Replacement::forbid);
  } catch (const FileError& error) {
    if (error.errorNumber() != EXDEV) throw;
    copyFile(source, destination, LinkPolicy::noFollow);
    fileSystem_.remove(source);
  }
  syncParent(destination);
  if (folderOf(source) != folderOf(destination)) syncParent(source);
}

bool FileManager::removeFile(const path& name) const {
  if (!fileSystem_.remove(name)) return false;
  syncParent(name);
  return true;
}

void FileManager::removeTree(const path& name) const {
  removeContents(name);
  if (fileSystem_.remove(name)) syncParent(name);
}

void FileManager::removeContents(const path& name) const {
  const auto found = fileSystem_.attributes(name, LinkPolicy::noFollow);
  if (!found || found->type != FileType::directory) return;
  for (const DirectoryEntry& entry : fileSystem_.list(name)) {
    removeContents(name / entry.name);
    fileSystem_.remove(name / entry.name);
  }
}

bool FileManager::isTemporaryName(std::string_view name) {
  return TemporaryName::matches(name);
}

std::size_t FileManager::sweepTemporaries(const path& directory) const {
  std::size_t swept = 0;
  for (const DirectoryEntry& entry : fileSystem_.list(directory)) {
    if (entry.type != FileType::regular || !isTemporaryName(entry.name)) continue;
    try {
      swept += fileSystem_.remove(directory / entry.name) ? 1 : 0;
    } catch (const FileError&) {
      // It blocks nothing: the next sweep tries again.
    }
  }
  return swept;
}

void FileManager::settleNew(const path& name) const {
  try {
    syncParent(name);
  } catch (const FileError&) {
    takeAway(fileSystem_, name);
    throw;
  }
}

void FileManager::syncParent(const path& name) const {
  fileSystem_.syncDirectory(folderOf(name));
}

}  // namespace nomely
