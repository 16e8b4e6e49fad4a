#include "Core/Query/DayReader.h"

#include <algorithm>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/MemoFile.h"
#include "Platform/Text/Unicode.h"

namespace nomely {

const std::vector<DirectoryEntry>& DayReader::open(Day day) {
  entries_.clear();
  path_ = context_.paths.dayFolder(day);
  folder_ = context_.files.openFolder(path_);
  folder_->list(entries_);
  std::erase_if(entries_, [](const DirectoryEntry& entry) { return entry.name.starts_with('.'); });
  std::ranges::sort(entries_, {}, &DirectoryEntry::name);
  return entries_;
}

std::optional<FileContent> DayReader::read(const std::string& name) {
  return folder_->read(name, buffer_, MemoFile::maxSize);
}

std::optional<std::int64_t> DayReader::memoNumber(std::string_view name) {
  // As DiskPaths::memoFileName writes it, found out without writing it.
  const auto number = DiskPaths::seqNumber(name);
  const std::size_t digits = number ? name.find('.') : 0;
  const bool isWritten = digits == 3 || (digits > 3 && name.front() != '0');
  return number > 0 && isWritten && name.front() != '+' ? number : std::nullopt;
}

void DayReader::requireText(const std::string& name, std::string_view bytes) const {
  if (!isValidUtf8(bytes)) throw EncodingError(path_ / name);
}

Memo DayReader::parsedHeader(const std::string& name, std::string_view bytes) const {
  requireText(name, bytes);
  return {
      MemoFrontmatterParser::parseHeader(bytes), Uuid::random(), *DiskPaths::seqNumber(name), {}};
}

Memo DayReader::parsed(const std::string& name, std::string_view bytes) const {
  requireText(name, bytes);
  return MemoFile::parsed(bytes, *DiskPaths::seqNumber(name));
}

}  // namespace nomely
