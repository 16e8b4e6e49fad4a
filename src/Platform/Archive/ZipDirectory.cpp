#include "Platform/Archive/ZipDirectory.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "Platform/Archive/FileWindow.h"
#include "Platform/Archive/ZipFormat.h"
#include "Platform/Time/LocalTime.h"

namespace nomely {
namespace {

using Kind = ZipError::Kind;
using zip::numberAt;

constexpr std::size_t windowWidth = std::size_t{1} << 18;

// What the end record, or its ZIP64 twin, tells of the directory.
struct Extent {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
  std::uint64_t count = 0;
  std::uint64_t end = 0;  // where the records that tell this begin
};

// The end record is the last thing in the file but for a comment that may hold anything, even the
// signature: only a record whose comment ends with the file is one.
std::uint64_t endRecordOffset(FileWindow& window, std::uint64_t size) {
  if (size < zip::endRecordSize) throw ZipError(Kind::notAnArchive);
  const std::uint64_t reach = std::min<std::uint64_t>(size, zip::endRecordSize + zip::full16);
  const std::string_view tail = window.at(size - reach, static_cast<std::size_t>(reach));
  for (std::size_t i = tail.size() - zip::endRecordSize + 1; i-- > 0;)
    if (numberAt<std::uint32_t>(tail, i) == zip::endRecord &&
        numberAt<std::uint16_t>(tail, i + 20) == tail.size() - i - zip::endRecordSize)
      return size - reach + i;
  throw ZipError(Kind::notAnArchive);
}

// The value of a number that may have had no room: where it had, both have to say the same.
std::uint64_t settled(std::uint64_t narrow, std::uint64_t full, std::uint64_t wide) {
  if (narrow != full && narrow != wide) throw ZipError(Kind::inconsistent);
  return wide;
}

Extent extentOf(FileWindow& window, std::uint64_t size) {
  const std::uint64_t end = endRecordOffset(window, size);
  const std::string_view record = window.at(end, zip::endRecordSize);
  const auto disk = numberAt<std::uint16_t>(record, 4);
  const auto firstDisk = numberAt<std::uint16_t>(record, 6);
  const auto countHere = numberAt<std::uint16_t>(record, 8);
  const auto count = numberAt<std::uint16_t>(record, 10);
  const auto bytes = numberAt<std::uint32_t>(record, 12);
  const auto offset = numberAt<std::uint32_t>(record, 16);

  std::string_view locator;
  if (end >= zip::end64LocatorSize)
    locator = window.at(end - zip::end64LocatorSize, zip::end64LocatorSize);
  if (locator.empty() || numberAt<std::uint32_t>(locator, 0) != zip::end64Locator) {
    if (disk != 0 || firstDisk != 0 || countHere != count) throw ZipError(Kind::unsupported);
    return {offset, bytes, count, end};
  }

  if (numberAt<std::uint32_t>(locator, 16) > 1) throw ZipError(Kind::unsupported);
  const auto at = numberAt<std::uint64_t>(locator, 8);
  if (at > end) throw ZipError(Kind::truncated);
  const std::string_view wide = window.at(at, zip::end64RecordSize);
  if (numberAt<std::uint32_t>(wide, 0) != zip::end64Record) throw ZipError(Kind::inconsistent);
  // The record tells its length without its first twelve bytes, and the locator follows it.
  const std::uint64_t room = end - zip::end64LocatorSize - at;
  if (room < zip::end64RecordSize || numberAt<std::uint64_t>(wide, 4) != room - 12)
    throw ZipError(Kind::inconsistent);
  if (numberAt<std::uint32_t>(wide, 16) != 0 || numberAt<std::uint32_t>(wide, 20) != 0)
    throw ZipError(Kind::unsupported);
  const auto wideCount = numberAt<std::uint64_t>(wide, 32);
  if (numberAt<std::uint64_t>(wide, 24) != wideCount) throw ZipError(Kind::unsupported);
  return {settled(offset, zip::full32, numberAt<std::uint64_t>(wide, 48)),
          settled(bytes, zip::full32, numberAt<std::uint64_t>(wide, 40)),
          settled(count, zip::full16, wideCount), at};
}

Moment dosTime(std::uint16_t date, std::uint16_t time) {
  LocalTime local;
  local.year = 1980 + (date >> 9);
  local.month = std::clamp((date >> 5) & 15, 1, 12);
  local.day = std::max(date & 31, 1);
  local.hour = time >> 11;
  local.minute = (time >> 5) & 63;
  local.second = 2 * (time & 31);
  return local.moment();
}

Moment modifiedOf(std::string_view header, std::string_view fields) {
  const std::string_view times = zip::extraField(fields, zip::fieldTime);
  constexpr unsigned modificationTime = 1;
  if (times.size() >= 5 && (static_cast<unsigned char>(times[0]) & modificationTime) != 0)
    return Moment(
        std::chrono::seconds(static_cast<std::int32_t>(numberAt<std::uint32_t>(times, 1))));
  return dosTime(numberAt<std::uint16_t>(header, 14), numberAt<std::uint16_t>(header, 12));
}

void takeWideNumbers(ZipEntry& entry, std::string_view fields) {
  std::string_view wide = zip::extraField(fields, zip::field64);
  for (std::uint64_t* number : {&entry.size, &entry.compressedSize, &entry.headerOffset}) {
    if (*number != zip::full32) continue;
    if (wide.size() < 8) throw ZipError(Kind::damaged, entry.name);
    *number = numberAt<std::uint64_t>(wide, 0);
    wide.remove_prefix(8);
  }
}

// Unix, and the two that record modes in the same way.
bool tellsMode(std::uint16_t madeBy) {
  const int system = madeBy >> 8;
  return system == 3 || system == 16 || system == 19;
}

}  // namespace

ZipDirectory ZipDirectory::read(File& file, std::uint64_t size) {
  FileWindow window(file, size, windowWidth);
  const Extent extent = extentOf(window, size);
  if (extent.offset > extent.end || extent.size > extent.end - extent.offset)
    throw ZipError(Kind::truncated);
  if (extent.offset + extent.size != extent.end) throw ZipError(Kind::inconsistent);
  if (extent.count > extent.size / zip::directoryHeaderSize) throw ZipError(Kind::inconsistent);

  ZipDirectory directory;
  directory.offset = extent.offset;
  directory.entries.reserve(static_cast<std::size_t>(extent.count));
  std::uint64_t at = extent.offset;
  for (std::uint64_t i = 0; i < extent.count; ++i) {
    if (extent.end - at < zip::directoryHeaderSize) throw ZipError(Kind::damaged);
    std::string_view header = window.at(at, zip::directoryHeaderSize);
    if (numberAt<std::uint32_t>(header, 0) != zip::directoryHeader) throw ZipError(Kind::damaged);
    const std::size_t nameLength = numberAt<std::uint16_t>(header, 28);
    const std::size_t fieldsLength = numberAt<std::uint16_t>(header, 30);
    const std::size_t length =
        zip::directoryHeaderSize + nameLength + fieldsLength + numberAt<std::uint16_t>(header, 32);
    if (length > extent.end - at) throw ZipError(Kind::damaged);
    header = window.at(at, length);
    const std::string_view fields =
        header.substr(zip::directoryHeaderSize + nameLength, fieldsLength);

    ZipEntry entry{.name = std::string(header.substr(zip::directoryHeaderSize, nameLength)),
                   .size = numberAt<std::uint32_t>(header, 24),
                   .compressedSize = numberAt<std::uint32_t>(header, 20),
                   .headerOffset = numberAt<std::uint32_t>(header, 42),
                   .checksum = numberAt<std::uint32_t>(header, 16),
                   .method = numberAt<std::uint16_t>(header, 10),
                   .flags = numberAt<std::uint16_t>(header, 8),
                   .modified = modifiedOf(header, fields)};
    if (tellsMode(numberAt<std::uint16_t>(header, 4)))
      entry.mode = numberAt<std::uint32_t>(header, 38) >> 16;
    takeWideNumbers(entry, fields);
    if (numberAt<std::uint16_t>(header, 34) != 0) throw ZipError(Kind::unsupported, entry.name);
    if (entry.headerOffset > extent.offset ||
        entry.compressedSize > extent.offset - entry.headerOffset)
      throw ZipError(Kind::truncated, entry.name);
    directory.entries.push_back(std::move(entry));
    at += length;
  }
  if (at != extent.end) throw ZipError(Kind::inconsistent);
  return directory;
}

}  // namespace nomely
