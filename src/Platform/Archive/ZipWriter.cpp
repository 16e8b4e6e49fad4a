#include "Platform/Archive/ZipWriter.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <optional>

#include "Platform/Archive/Deflater.h"
#include "Platform/Archive/Libdeflate.h"
#include "Platform/Archive/ZipError.h"
#include "Platform/Archive/ZipFormat.h"
#include "Platform/Files/FileError.h"
#include "Platform/Text/Unicode.h"
#include "Platform/Time/LocalTime.h"

namespace nomely {
namespace {

constexpr std::size_t bufferSize = std::size_t{1} << 18;
constexpr std::size_t directoryPiece = std::size_t{1} << 18;
constexpr std::uint16_t version = 20;
constexpr std::uint16_t version64 = 45;
constexpr std::uint16_t madeOnUnix = 3U << 8;
constexpr unsigned dosFolder = 0x10;

// Contents of this size may, deflated, be too long for 32 bits.
constexpr std::uint64_t mayBeWide = 0xf0000000;

struct DosTime {
  std::uint16_t date = (1U << 5) | 1;  // 1980-01-01, the first there is
  std::uint16_t time = 0;
};

DosTime dosTime(Moment moment) {
  const LocalTime local = LocalTime::of(moment);
  if (local.year < 1980) return {};
  const int year = std::min(local.year - 1980, 127);
  return {
      static_cast<std::uint16_t>((year << 9) | (local.month << 5) | local.day),
      static_cast<std::uint16_t>((local.hour << 11) | (local.minute << 5) | (local.second / 2))};
}

// Nothing for a moment that the field can't tell.
std::string timeField(Moment moment) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(moment).time_since_epoch().count();
  std::string field;
  using Limits = std::numeric_limits<std::int32_t>;
  if (seconds < Limits::min() || seconds > Limits::max()) return field;
  zip::append<std::uint16_t>(field, zip::fieldTime);
  zip::append<std::uint16_t>(field, 5);
  field += '\x01';
  zip::append(field, static_cast<std::uint32_t>(seconds));
  return field;
}

std::uint16_t flagsFor(const std::string& name) {
  const bool isPlain = std::ranges::all_of(name, [](char byte) { return (byte & 0x80) == 0; });
  return !isPlain && isValidUtf8(name) ? zip::flagUtf8 : std::uint16_t{0};
}

std::uint32_t narrowed(std::uint64_t number) {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(number, zip::full32));
}

}  // namespace

class ZipWriter::Output {
 public:
  explicit Output(File& target) : target_(target) { buffer_.reserve(2 * bufferSize); }

  void put(std::string_view bytes) {
    if (bytes.size() >= bufferSize) {
      flush();
      write(bytes);
    } else {
      buffer_ += bytes;
      if (buffer_.size() >= bufferSize) flush();
    }
  }
  void flush() {
    write(buffer_);
    buffer_.clear();
  }
  // Where the next byte goes.
  [[nodiscard]] std::uint64_t offset() const { return written_ + buffer_.size(); }

  Deflater deflater;
  const Libdeflate& library = Libdeflate::loaded();

 private:
  void write(std::string_view bytes) {
    while (!bytes.empty()) {
      const std::size_t count = target_.write(bytes);
      written_ += count;
      bytes.remove_prefix(count);
    }
  }

  File& target_;
  std::string buffer_;
  std::uint64_t written_ = 0;
};

struct ZipWriter::Entry {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
  std::uint64_t compressedSize = 0;
  std::uint32_t checksum = 0;
  std::uint16_t method = zip::stored;
  std::uint16_t flags = 0;
  bool isWide = false;  // the header has room for wide sizes
};

ZipWriter::ZipWriter(File& target) : output_(std::make_unique<Output>(target)) {}
ZipWriter::~ZipWriter() = default;

// With flagDescriptor set, sizes and checksum are those that follow the contents.
void ZipWriter::begin(const Item& item, Entry& entry) {
  if (item.name.size() > zip::full16) throw FileError("备份", item.name, ENAMETOOLONG);
  entry.flags = static_cast<std::uint16_t>(entry.flags | flagsFor(item.name));
  entry.offset = output_->offset();
  const bool told = (entry.flags & zip::flagDescriptor) == 0;
  const DosTime time = dosTime(item.modified);
  std::string fields;
  if (entry.isWide) {
    zip::append<std::uint16_t>(fields, zip::field64);
    zip::append<std::uint16_t>(fields, 16);
    zip::append<std::uint64_t>(fields, told ? entry.size : 0);
    zip::append<std::uint64_t>(fields, told ? entry.compressedSize : 0);
  }
  fields += timeField(item.modified);

  std::string header;
  zip::append(header, zip::localHeader);
  zip::append(header, entry.isWide ? version64 : version);
  zip::append(header, entry.flags);
  zip::append(header, entry.method);
  zip::append(header, time.time);
  zip::append(header, time.date);
  zip::append(header, entry.checksum);
  zip::append(header, entry.isWide ? zip::full32 : narrowed(entry.compressedSize));
  zip::append(header, entry.isWide ? zip::full32 : narrowed(told ? entry.size : 0));
  zip::append(header, static_cast<std::uint16_t>(item.name.size()));
  zip::append(header, static_cast<std::uint16_t>(fields.size()));
  output_->put(header);
  output_->put(item.name);
  output_->put(fields);
}

void ZipWriter::record(const Item& item, const Entry& entry) {
  std::string wide;
  for (const std::uint64_t number : {entry.size, entry.compressedSize, entry.offset})
    if (number >= zip::full32) zip::append(wide, number);
  std::string fields;
  if (!wide.empty()) {
    zip::append<std::uint16_t>(fields, zip::field64);
    zip::append(fields, static_cast<std::uint16_t>(wide.size()));
    fields += wide;
  }
  const DosTime time = dosTime(item.modified);
  const std::uint16_t needed = entry.isWide || !wide.empty() ? version64 : version;
  fields += timeField(item.modified);

  if (directory_.empty() || directory_.back().size() >= directoryPiece)
    directory_.emplace_back().reserve(directoryPiece + zip::full16);
  std::string& bytes = directory_.back();
  zip::append(bytes, zip::directoryHeader);
  zip::append(bytes, static_cast<std::uint16_t>(madeOnUnix | needed));
  zip::append(bytes, needed);
  zip::append(bytes, entry.flags);
  zip::append(bytes, entry.method);
  zip::append(bytes, time.time);
  zip::append(bytes, time.date);
  zip::append(bytes, entry.checksum);
  zip::append(bytes, narrowed(entry.compressedSize));
  zip::append(bytes, narrowed(entry.size));
  zip::append(bytes, static_cast<std::uint16_t>(item.name.size()));
  zip::append(bytes, static_cast<std::uint16_t>(fields.size()));
  zip::append<std::uint16_t>(bytes, 0);  // no comment
  zip::append<std::uint16_t>(bytes, 0);  // the first disk
  zip::append<std::uint16_t>(bytes, 0);
  zip::append(bytes, static_cast<std::uint32_t>((item.mode << 16) |
                                                (item.name.ends_with('/') ? dosFolder : 0)));
  zip::append(bytes, narrowed(entry.offset));
  bytes += item.name;
  bytes += fields;
  ++count_;
}

void ZipWriter::addFolder(const Item& item) {
  Entry entry;
  begin(item, entry);
  record(item, entry);
}

void ZipWriter::add(const Item& item, std::string_view contents, Compression compression) {
  Entry entry{.size = contents.size(),
              .compressedSize = contents.size(),
              .checksum = output_->library.checksum(0, contents),
              .isWide = contents.size() >= mayBeWide};
  if (compression == Compression::deflate) {
    const std::string_view deflated = output_->deflater.whole(contents);
    if (!deflated.empty()) {
      contents = deflated;
      entry.compressedSize = deflated.size();
      entry.method = zip::deflated;
    }
  }
  begin(item, entry);
  output_->put(contents);
  record(item, entry);
}

void ZipWriter::add(const Item& item, std::uint64_t size, const Producer& produce,
                    Compression compression) {
  Entry entry{.method = compression == Compression::deflate ? zip::deflated : zip::stored,
              .flags = zip::flagDescriptor,
              .isWide = size >= mayBeWide};
  begin(item, entry);
  const std::uint64_t start = output_->offset();
  std::optional<Deflater::Stream> stream;
  if (compression == Compression::deflate)
    stream.emplace([this](std::string_view piece) { output_->put(piece); });
  produce([&](std::string_view piece) {
    entry.checksum = output_->library.checksum(entry.checksum, piece);
    entry.size += piece.size();
    if (stream)
      stream->add(piece);
    else
      output_->put(piece);
  });
  if (stream) stream->finish();
  if (entry.size != size) throw ZipError(ZipError::Kind::damaged, item.name);
  entry.compressedSize = output_->offset() - start;

  std::string descriptor;
  constexpr std::uint32_t signature = 0x08074b50;
  zip::append(descriptor, signature);
  zip::append(descriptor, entry.checksum);
  if (entry.isWide) {
    zip::append(descriptor, entry.compressedSize);
    zip::append(descriptor, entry.size);
  } else {
    zip::append(descriptor, static_cast<std::uint32_t>(entry.compressedSize));
    zip::append(descriptor, static_cast<std::uint32_t>(entry.size));
  }
  output_->put(descriptor);
  record(item, entry);
}

void ZipWriter::finish() {
  const std::uint64_t offset = output_->offset();
  for (const std::string& piece : directory_) output_->put(piece);
  const std::uint64_t size = output_->offset() - offset;
  const bool isWide = offset >= zip::full32 || size >= zip::full32 || count_ >= zip::full16;
  std::string end;
  if (isWide) {
    zip::append(end, zip::end64Record);
    zip::append<std::uint64_t>(end, zip::end64RecordSize - 12);
    zip::append(end, static_cast<std::uint16_t>(madeOnUnix | version64));
    zip::append(end, version64);
    zip::append<std::uint32_t>(end, 0);  // the first disk
    zip::append<std::uint32_t>(end, 0);
    zip::append(end, count_);
    zip::append(end, count_);
    zip::append(end, size);
    zip::append(end, offset);
    zip::append(end, zip::end64Locator);
    zip::append<std::uint32_t>(end, 0);
    zip::append(end, offset + size);
    zip::append<std::uint32_t>(end, 1);  // one disk
  }
  const auto count = static_cast<std::uint16_t>(std::min<std::uint64_t>(count_, zip::full16));
  zip::append(end, zip::endRecord);
  zip::append<std::uint16_t>(end, 0);
  zip::append<std::uint16_t>(end, 0);
  zip::append(end, count);
  zip::append(end, count);
  zip::append(end, narrowed(size));
  zip::append(end, narrowed(offset));
  zip::append<std::uint16_t>(end, 0);  // no comment
  output_->put(end);
  output_->flush();
}

}  // namespace nomely
