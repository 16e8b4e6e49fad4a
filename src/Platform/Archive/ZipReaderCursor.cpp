#include <algorithm>

#include "Platform/Archive/FileWindow.h"
#include "Platform/Archive/Inflater.h"
#include "Platform/Archive/Libdeflate.h"
#include "Platform/Archive/ZipFormat.h"
#include "Platform/Archive/ZipReader.h"

namespace nomely {
namespace {

using Kind = ZipError::Kind;

constexpr std::size_t windowWidth = std::size_t{1} << 18;
// What is held whole, before and after inflating.
constexpr std::uint64_t smallSize = std::uint64_t{1} << 18;

}  // namespace

struct ZipReader::Cursor::Buffers {
  explicit Buffers(const ZipReader& archive) : window(*archive.file_, archive.size_, windowWidth) {}

  FileWindow window;
  Inflater inflater;
  const Libdeflate& library = Libdeflate::loaded();
};

ZipReader::Cursor::Cursor(const ZipReader& archive)
    : archive_(archive), buffers_(std::make_unique<Buffers>(archive)) {}
ZipReader::Cursor::~Cursor() = default;

void ZipReader::Cursor::read(const ZipEntry& entry, const Sink& sink) {
  if ((entry.flags & (zip::flagEncrypted | zip::flagStronglyEncrypted | zip::flagMasked)) != 0 ||
      (entry.method != zip::stored && entry.method != zip::deflated))
    throw ZipError(Kind::unsupported, entry.name);
  if (entry.method == zip::stored && entry.size != entry.compressedSize)
    throw ZipError(Kind::damaged, entry.name);

  const std::string_view header = buffers_->window.at(entry.headerOffset, zip::localHeaderSize);
  if (zip::numberAt<std::uint32_t>(header, 0) != zip::localHeader)
    throw ZipError(Kind::inconsistent, entry.name);
  const std::uint64_t offset = entry.headerOffset + zip::localHeaderSize +
                               zip::numberAt<std::uint16_t>(header, 26) +
                               zip::numberAt<std::uint16_t>(header, 28);
  if (offset > archive_.directoryOffset_ ||
      entry.compressedSize > archive_.directoryOffset_ - offset)
    throw ZipError(Kind::inconsistent, entry.name);
  if (entry.size <= smallSize && entry.compressedSize <= smallSize)
    readWhole(entry, offset, sink);
  else
    readInPieces(entry, offset, sink);
}

void ZipReader::Cursor::readWhole(const ZipEntry& entry, std::uint64_t offset, const Sink& sink) {
  std::string_view bytes =
      buffers_->window.at(offset, static_cast<std::size_t>(entry.compressedSize));
  if (entry.method == zip::deflated) {
    const auto inflated = buffers_->inflater.whole(bytes, static_cast<std::size_t>(entry.size));
    if (!inflated) throw ZipError(Kind::damaged, entry.name);
    bytes = *inflated;
  }
  if (buffers_->library.checksum(0, bytes) != entry.checksum)
    throw ZipError(Kind::damaged, entry.name);
  if (!bytes.empty()) sink(bytes);
}

void ZipReader::Cursor::readInPieces(const ZipEntry& entry, std::uint64_t offset,
                                     const Sink& sink) {
  std::uint64_t left = entry.compressedSize;
  const auto next = [&] {
    if (left == 0) return std::string_view();
    const std::string_view piece = buffers_->window.some(offset, left);
    offset += piece.size();
    left -= piece.size();
    return piece;
  };
  std::uint32_t checksum = 0;
  const auto take = [&](std::string_view piece) {
    checksum = buffers_->library.checksum(checksum, piece);
    sink(piece);
  };
  bool complete = true;
  if (entry.method == zip::stored)
    for (std::string_view piece = next(); !piece.empty(); piece = next()) take(piece);
  else
    complete = buffers_->inflater.stream(next, entry.size, take);
  if (!complete || checksum != entry.checksum) throw ZipError(Kind::damaged, entry.name);
}

}  // namespace nomely
