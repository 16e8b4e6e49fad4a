#include "Platform/Archive/ZipReader.h"

#include <algorithm>
#include <cerrno>

#include "Platform/Archive/FileWindow.h"
#include "Platform/Archive/ZipDirectory.h"
#include "Platform/Archive/ZipFormat.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

using Kind = ZipError::Kind;
using zip::numberAt;

// Throws unless the local header tells of the entry what the directory tells. Returns where the
// contents begin.
std::uint64_t checkLocalHeader(FileWindow& window, const ZipEntry& entry) {
  std::string_view header = window.at(entry.headerOffset, zip::localHeaderSize);
  if (numberAt<std::uint32_t>(header, 0) != zip::localHeader)
    throw ZipError(Kind::inconsistent, entry.name);
  const std::size_t nameLength = numberAt<std::uint16_t>(header, 26);
  const std::size_t fieldsLength = numberAt<std::uint16_t>(header, 28);
  header = window.at(entry.headerOffset, zip::localHeaderSize + nameLength + fieldsLength);

  // The rest of the flags tells how hard the compressor tried.
  constexpr unsigned meant = zip::flagEncrypted | zip::flagDescriptor | zip::flagStronglyEncrypted |
                             zip::flagUtf8 | zip::flagMasked;
  bool same = ((numberAt<std::uint16_t>(header, 6) ^ entry.flags) & meant) == 0 &&
              numberAt<std::uint16_t>(header, 8) == entry.method &&
              header.substr(zip::localHeaderSize, nameLength) == entry.name;
  if ((entry.flags & zip::flagDescriptor) == 0) {
    std::string_view wide =
        zip::extraField(header.substr(zip::localHeaderSize + nameLength), zip::field64);
    const auto tells = [&](std::size_t offset, std::uint64_t value) {
      const auto narrow = numberAt<std::uint32_t>(header, offset);
      if (narrow != zip::full32 || wide.size() < 8) return narrow == value;
      const auto told = numberAt<std::uint64_t>(wide, 0);
      wide.remove_prefix(8);
      return told == value;
    };
    // In this order: the wide numbers follow one another.
    same = same && numberAt<std::uint32_t>(header, 14) == entry.checksum && tells(22, entry.size) &&
           tells(18, entry.compressedSize);
  }
  if (!same) throw ZipError(Kind::inconsistent, entry.name);
  return entry.headerOffset + header.size();
}

}  // namespace

ZipReader::ZipReader(FileSystem& fileSystem, const std::filesystem::path& path) {
  const std::optional<FileAttributes> found = fileSystem.attributes(path, LinkPolicy::follow);
  // Opening a pipe would wait for somebody to write to it.
  if (found && found->type != FileType::regular) throw ZipError(Kind::notAnArchive);
  if (found) file_ = fileSystem.open(path, FileSystem::OpenMode::read, LinkPolicy::follow);
  if (!file_) throw FileError("读取", path, ENOENT);
  size_ = file_->attributes().size;
  ZipDirectory directory = ZipDirectory::read(*file_, size_);
  directoryOffset_ = directory.offset;
  entries_ = std::move(directory.entries);
}

ZipReader::~ZipReader() = default;

std::vector<const ZipEntry*> ZipReader::inFileOrder() const {
  std::vector<const ZipEntry*> ordered;
  ordered.reserve(entries_.size());
  for (const ZipEntry& entry : entries_) ordered.push_back(&entry);
  std::ranges::stable_sort(ordered, {}, &ZipEntry::headerOffset);
  return ordered;
}

const std::vector<const ZipEntry*>& ZipReader::byName() const {
  std::call_once(sorted_, [this] {
    byName_.reserve(entries_.size());
    for (const ZipEntry& entry : entries_) byName_.push_back(&entry);
    std::ranges::stable_sort(byName_, {}, &ZipEntry::name);
  });
  return byName_;
}

const ZipEntry* ZipReader::find(std::string_view name) const {
  const auto found = std::ranges::lower_bound(
      byName(), name, {}, [](const ZipEntry* entry) { return std::string_view(entry->name); });
  return found != byName_.end() && (*found)->name == name ? *found : nullptr;
}

void ZipReader::checkStructure(const std::stop_token& stop) const {
  constexpr std::size_t width = std::size_t{1} << 16;
  FileWindow window(*file_, size_, width);
  std::uint64_t end = 0;  // of what came before
  for (const ZipEntry* entry : inFileOrder()) {
    throwIfStopped(stop);
    if (entry->headerOffset < end) throw ZipError(Kind::inconsistent, entry->name);
    const std::uint64_t contents = checkLocalHeader(window, *entry);
    if (contents > directoryOffset_ || entry->compressedSize > directoryOffset_ - contents)
      throw ZipError(Kind::inconsistent, entry->name);
    end = contents + entry->compressedSize;
  }
}

void ZipReader::read(const ZipEntry& entry, const Sink& sink) const {
  Cursor(*this).read(entry, sink);
}

std::string ZipReader::contents(const ZipEntry& entry, std::uint64_t most) const {
  if (entry.size > most) throw ZipError(Kind::tooLarge, entry.name);
  std::string bytes;
  read(entry, [&](std::string_view piece) { bytes += piece; });
  return bytes;
}

}  // namespace nomely
