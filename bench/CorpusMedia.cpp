#include "bench/CorpusMedia.h"

#include <array>

namespace nomely::bench {
namespace {

using namespace std::string_view_literals;

struct Frame {
  std::string_view extension;
  std::string_view head;
  std::string_view tail;
};

// The image is a whole one of one pixel; readers leave what stands behind its end alone.
constexpr Frame png{"png",
                    "\x89PNG\r\n\x1A\n"
                    "\0\0\0\x0DIHDR\0\0\0\x01\0\0\0\x01\x08\x06\0\0\0\x1F\x15\xC4\x89"
                    "\0\0\0\x0DIDAT\x78\x9C\x63\x60\x60\x60\xF8\x0F\0\x01\x04\x01\0\x5F\xE5\xC3\x4B"
                    "\0\0\0\0IEND\xAE\x42\x60\x82"sv,
                    ""sv};
constexpr Frame jpg{"jpg",
                    "\xFF\xD8\xFF\xE0\0\x10JFIF\0\x01\x01\0\0\x01\0\x01\0\0"
                    "\xFF\xDA\0\x08\x01\x01\0\0\x3F\0"sv,
                    "\xFF\xD9"sv};
// An "mdat" box of length 0 reaches to the end of the file.
constexpr Frame m4a{"m4a",
                    "\0\0\0\x18"
                    "ftypM4A \0\0\0\0M4A mp42\0\0\0\0mdat"sv,
                    ""sv};
constexpr Frame pdf{"pdf",
                    "%PDF-1.4\n"
                    "1 0 obj\n<</Type/Catalog/Pages 2 0 R>>\nendobj\n"
                    "2 0 obj\n<</Type/Pages/Kids[]/Count 0>>\nendobj\n% "sv,
                    "\ntrailer\n<</Root 1 0 R>>\n%%EOF\n"sv};

const Frame& frameOf(MediaKind kind) {
  switch (kind) {
    case MediaKind::png:
      return png;
    case MediaKind::jpg:
      return jpg;
    case MediaKind::m4a:
      return m4a;
    case MediaKind::pdf:
      return pdf;
  }
  return png;
}

}  // namespace

std::string_view extensionOf(MediaKind kind) {
  return frameOf(kind).extension;
}

std::string drawMedia(MediaKind kind, std::uint64_t size, Random& random) {
  const Frame& frame = frameOf(kind);
  std::string bytes(frame.head);
  bytes.reserve(size + frame.tail.size());
  while (bytes.size() + frame.tail.size() < size) {
    const std::uint64_t value = random.next();
    const std::uint64_t left = size - frame.tail.size() - bytes.size();
    // Byte by byte: the same on a machine of either byte order.
    for (std::uint64_t i = 0; i < std::min<std::uint64_t>(left, 8); ++i)
      bytes += static_cast<char>(value >> (8 * i) & 0xFFU);
  }
  bytes += frame.tail;
  return bytes;
}

}  // namespace nomely::bench
