#include "Import/FlomoArchive.h"

#include "Core/Extensions/PathNames.h"
#include "Import/ImportError.h"

namespace nomely {
namespace {

const std::filesystem::path& checked(const FileManager& files, const std::filesystem::path& file) {
  constexpr std::uint64_t smallest = 5;
  const auto found = files.attributes(file);
  if (found && found->type == FileType::regular && found->size < smallest)
    throw ImportError("ZIP 文件过小");
  return file;
}

}  // namespace

FlomoArchive::FlomoArchive(const FileManager& files, const std::filesystem::path& file)
    : zip_(files.fileSystem(), checked(files, file)) {
  for (const ZipEntry* entry : zip_.inFileOrder()) {
    if (entry->isFolder()) continue;
    if (!page_ && (entry->name.ends_with(".html") || entry->name.ends_with(".htm"))) page_ = entry;
    byLastComponent_[lastComponent(entry->name)].push_back(entry);
  }
  if (!page_) throw ImportError("ZIP 中没有找到 HTML 文件");
  if (page_->size > largestPage) throw ZipError(ZipError::Kind::tooLarge, page_->name);
}

void FlomoArchive::readPage(const Sink& sink) {
  zip_.read(*page_, sink);
}

FlomoSource::Media FlomoArchive::find(const std::string& reference) {
  const auto named = byLastComponent_.find(lastComponent(reference));
  if (named == byLastComponent_.end()) return {};
  const std::string inner = "/" + reference;
  for (const ZipEntry* entry : named->second)
    if (entry->name == reference || entry->name.ends_with(inner)) {
      if (entry->size > largestMedia) return {};
      return [this, entry](const Sink& sink) { cursor_.read(*entry, sink); };
    }
  return {};
}

}  // namespace nomely
