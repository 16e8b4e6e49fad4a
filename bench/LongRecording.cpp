#include "bench/LongRecording.h"

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace nomely::bench {
namespace {

constexpr double samplesOfHour = 3600.0 * 44100 / 1024;

std::uint32_t number(std::string_view bytes, std::size_t at) {
  std::uint32_t value = 0;
  for (const char byte : bytes.substr(at, 4))
    value = value << 8U | static_cast<unsigned char>(byte);
  return value;
}

std::string bytesOf(std::uint64_t value) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
  return bytes;
}

std::string box(std::string_view type, std::string_view content) {
  return bytesOf(content.size() + 8).append(type).append(content);
}

std::string_view find(std::string_view boxes, std::string_view type) {
  for (std::size_t at = 0; at + 8 <= boxes.size(); at += number(boxes, at))
    if (boxes.substr(at + 4, 4) == type) return boxes.substr(at + 8, number(boxes, at) - 8);
  throw std::runtime_error("no plain recording");
}

// Of each sample, where a table of silence says that all have the same, too.
std::string sizesIn(std::string_view table) {
  if (number(table, 4) == 0) return std::string(table.substr(12));
  std::string sizes;
  for (std::uint32_t i = 0; i < number(table, 8); ++i) sizes += table.substr(4, 4);
  return sizes;
}

// The tables of `count` samples, which are those of `sizes` over and over, all at `offset`.
std::string table(std::string_view type, std::string_view sizes, std::uint64_t count,
                  std::size_t offset) {
  const std::uint64_t once = sizes.size() / 4;
  const std::string none = bytesOf(0);
  std::string content;
  if (type == "stts") content = none + bytesOf(1) + bytesOf(count) + bytesOf(1024);
  if (type == "stsc") content = none + bytesOf(1) + bytesOf(1) + bytesOf(once) + bytesOf(1);
  if (type == "stsz") {
    content = none + none + bytesOf(count);
    for (std::uint64_t i = 0; i < count / once; ++i) content += sizes;
  }
  if (type == "stco") {
    content = none + bytesOf(count / once);
    for (std::uint64_t i = 0; i < count / once; ++i) content += bytesOf(offset);
  }
  return box(type, content);
}

std::string rebuilt(std::string_view boxes, std::string_view sizes, std::uint64_t count,
                    std::size_t offset) {
  std::string result;
  for (std::size_t at = 0; at + 8 <= boxes.size(); at += number(boxes, at)) {
    const std::string_view type = boxes.substr(at + 4, 4);
    const std::string_view content = boxes.substr(at + 8, number(boxes, at) - 8);
    if (type == "trak" || type == "mdia" || type == "minf" || type == "stbl")
      result += box(type, rebuilt(content, sizes, count, offset));
    else if (type == "stts" || type == "stsc" || type == "stsz" || type == "stco")
      result += table(type, sizes, count, offset);
    else if (type != "edts" && type != "udta" && type != "sgpd" && type != "sbgp")
      result += box(type, content);
  }
  return result;
}

}  // namespace

void writeLongRecording(const std::filesystem::path& source, double hours,
                        const std::filesystem::path& target) {
  std::ifstream stream(source, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(stream)), {});
  const std::string_view movie = find(bytes, "moov");
  std::string_view tables = movie;
  for (const char* inner : {"trak", "mdia", "minf", "stbl"}) tables = find(tables, inner);
  const std::string sizes = sizesIn(find(tables, "stsz"));
  const std::uint64_t once = sizes.size() / 4;
  const auto wanted = static_cast<std::uint64_t>(hours * samplesOfHour);
  const std::uint64_t count = (wanted + once - 1) / once * once;

  std::string file = box("ftyp", find(bytes, "ftyp"));
  const std::size_t offset = file.size() + 8;
  file += box("mdat", find(bytes, "mdat"));
  file += box("moov", rebuilt(movie, sizes, count, offset));
  std::ofstream(target, std::ios::binary) << file;
}

}  // namespace nomely::bench
