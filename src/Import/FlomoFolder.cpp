#include "Import/FlomoFolder.h"

#include <cerrno>

#include "Platform/Files/FileError.h"

namespace nomely {

FlomoFolder::FlomoFolder(const FileManager& files, std::filesystem::path page)
    : fileSystem_(files.fileSystem()), page_(std::move(page)) {}

std::uint64_t FlomoFolder::pageSize() const {
  const auto found = fileSystem_.attributes(page_, LinkPolicy::follow);
  return found ? found->size : 0;
}

void FlomoFolder::readPage(const Sink& sink) {
  read(page_, largestPage, sink);
}

void FlomoFolder::read(const std::filesystem::path& file, std::uint64_t most,
                       const Sink& sink) const {
  const auto open = fileSystem_.open(file, FileSystem::OpenMode::read, LinkPolicy::follow);
  if (!open) throw FileError("读取", file, ENOENT);
  std::string buffer(std::size_t{1} << 18, '\0');
  std::uint64_t length = 0;
  while (const std::size_t count = open->read(buffer)) {
    length += count;
    if (length > most) throw FileError("读取", file, EFBIG);
    sink(std::string_view(buffer).substr(0, count));
  }
}

FlomoSource::Media FlomoFolder::find(const std::string& reference) {
  std::filesystem::path file = page_.parent_path();
  std::optional<FileAttributes> found;
  try {
    for (const std::filesystem::path& part : std::filesystem::path(reference)) {
      if (part == "..") return {};
      if (part.empty() || part == ".") continue;
      file /= part;
      found = fileSystem_.attributes(file, LinkPolicy::noFollow);
      // A link on the way may lead anywhere.
      if (!found || (found->type != FileType::directory && found->type != FileType::regular))
        return {};
    }
  } catch (const FileError&) {
    return {};  // no name for a file, or not to be looked at
  }
  if (!found || found->type != FileType::regular || found->size > largestMedia) return {};
  return [this, file](const Sink& sink) { read(file, largestMedia, sink); };
}

}  // namespace nomely
