#include "Platform/Text/LoweredSearch.h"

#include <bit>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace nomely {
namespace {

constexpr char caseBit = 0x20;

bool isLowerAscii(char c) {
  return c >= 'a' && c <= 'z';
}

// What is to be set in a byte of text before it is compared with `c`. With a letter that makes the
// capital equal and nothing else.
char maskFor(char c) {
  return isLowerAscii(c) ? caseBit : '\0';
}

bool isAt(const char* text, std::string_view needle) {
  for (const char c : needle) {
    if (static_cast<char>(*text | maskFor(c)) != c) return false;
    ++text;
  }
  return true;
}

std::optional<std::size_t> findFrom(std::size_t start, std::string_view text,
                                    std::string_view needle, std::size_t probe) {
  const char mask = maskFor(needle[probe]);
  for (std::size_t at = start; at + needle.size() <= text.size(); ++at)
    if (static_cast<char>(text[at + probe] | mask) == needle[probe] &&
        isAt(text.data() + at, needle))
      return at;
  return std::nullopt;
}

#ifdef __SSE2__

// Compares sixteen places of a text with one byte of the needle.
class Probe {
 public:
  Probe(std::string_view needle, std::size_t offset)
      : offset_(offset),
        mask_(_mm_set1_epi8(maskFor(needle[offset]))),
        byte_(_mm_set1_epi8(needle[offset])) {}

  [[nodiscard]] __m128i equal(const char* at) const {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at + offset_));
    return _mm_cmpeq_epi8(_mm_or_si128(bytes, mask_), byte_);
  }

 private:
  std::size_t offset_;
  __m128i mask_;
  __m128i byte_;
};

#endif

}  // namespace

std::optional<std::size_t> findLowered(std::string_view text, std::string_view needle,
                                       std::size_t firstProbe, std::size_t secondProbe) {
  std::size_t at = 0;
#ifdef __SSE2__
  constexpr std::size_t width = 16;
  const Probe first(needle, firstProbe);
  const Probe second(needle, secondProbe);
  for (; at + needle.size() - 1 + width <= text.size(); at += width) {
    const char* const here = text.data() + at;
    auto hits = static_cast<std::uint32_t>(
        _mm_movemask_epi8(_mm_and_si128(first.equal(here), second.equal(here))));
    for (; hits != 0; hits &= hits - 1) {
      const auto place = static_cast<std::size_t>(std::countr_zero(hits));
      if (isAt(here + place, needle)) return at + place;
    }
  }
#else
  (void)firstProbe;
#endif
  return findFrom(at, text, needle, secondProbe);
}

}  // namespace nomely
