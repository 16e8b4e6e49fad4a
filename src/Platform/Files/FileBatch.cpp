#include "Platform/Files/FileBatch.h"

#include "Platform/Files/FileError.h"
#include "Platform/Files/TemporaryName.h"

namespace nomely {

void FileBatch::discard() noexcept {
  for (const std::filesystem::path& name : temporaries_)
    if (!name.empty()) takeAway(name);
  temporaries_.clear();
}

std::size_t FileBatch::add(const std::filesystem::path& folder,
                           const FileManager::Producer& produce) {
  const std::filesystem::path name = TemporaryName::freshIn(folder);
  const auto file = fileSystem_.open(name, FileSystem::OpenMode::createNew, LinkPolicy::noFollow);
  const std::uint64_t before = bytes_;
  try {
    produce([&](std::string_view piece) {
      bytes_ += piece.size();
      while (!piece.empty()) piece.remove_prefix(file->write(piece));
    });
  } catch (...) {
    bytes_ = before;
    takeAway(name);
    throw;
  }
  temporaries_.push_back(name);
  folder_ = folder;
  return temporaries_.size() - 1;
}

void FileBatch::settle() {
  if (!folder_.empty()) fileSystem_.syncFileSystem(folder_);
}

bool FileBatch::place(std::size_t file, const std::filesystem::path& target) {
  std::filesystem::path& name = temporaries_.at(file);
  try {
    fileSystem_.rename(name, target, Replacement::forbid);
  } catch (const FileError& error) {
    if (error.kind() == FileError::Kind::alreadyExists) return false;
    // It may have been renamed although that was reported to have failed.
    if (isGone(name)) takeAway(target);
    throw;
  }
  name.clear();
  return true;
}

// The failure that leads here is the one to report; a sweep removes a temporary later.
void FileBatch::takeAway(const std::filesystem::path& name) const noexcept {
  try {
    fileSystem_.remove(name);
  } catch (const FileError&) {
  }
}

bool FileBatch::isGone(const std::filesystem::path& name) const noexcept {
  try {
    return !fileSystem_.attributes(name, LinkPolicy::noFollow);
  } catch (const FileError&) {
    return false;
  }
}

}  // namespace nomely
