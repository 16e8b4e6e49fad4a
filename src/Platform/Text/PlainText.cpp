#include "Platform/Text/PlainText.h"

#include <bit>
#include <bitset>
#include <cstdint>
#include <stdexcept>

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>

#include "Platform/Text/Unicode.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace nomely {
namespace {

// Characters above the table count as not plain.
constexpr std::size_t tableSize = 0x20000;
using Table = std::bitset<tableSize>;

bool isPlainFor(const icu::Normalizer2& nfc, UChar32 c) {
  if (U_IS_SURROGATE(c)) return false;
  // The cheap questions first: this runs for the whole table when a program starts to search.
  const bool joinsNothing =
      nfc.isInert(c) != 0 || (nfc.hasBoundaryBefore(c) != 0 &&
                              u_getIntPropertyValue(c, UCHAR_NFC_QUICK_CHECK) == UNORM_YES);
  return joinsNothing && (u_hasBinaryProperty(c, UCHAR_CASE_SENSITIVE) == 0 ||
                          u_hasBinaryProperty(c, UCHAR_CHANGES_WHEN_CASEFOLDED) == 0);
}

const Table& plainTable() {
  static const auto table = [] {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* const nfc = icu::Normalizer2::getNFCInstance(status);
    if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
    Table plain;
    for (UChar32 c = 0x80; c < static_cast<UChar32>(tableSize); ++c)
      plain[static_cast<std::size_t>(c)] = isPlainFor(*nfc, c);
    return plain;
  }();
  return table;
}

// Of the character that begins `rest`, which is well-formed, with a byte of C0 or above.
bool isPlainIn(const Table& table, std::string_view rest) {
  const auto lead = static_cast<unsigned char>(rest[0]);
  const auto bits = [&](std::size_t at) { return static_cast<unsigned char>(rest[at]) & 0x3FU; };
  std::size_t value = tableSize;
  if (lead < 0xE0 && rest.size() > 1)
    value = (lead & 0x1FU) << 6U | bits(1);
  else if (lead < 0xF0 && rest.size() > 2)
    value = (lead & 0xFU) << 12U | bits(1) << 6U | bits(2);
  else if (rest.size() > 3)
    value = (lead & 7U) << 18U | bits(1) << 12U | bits(2) << 6U | bits(3);
  return value < tableSize && table[value];
}

// Whether characters that begin with this byte have to be looked at. Those that begin with the
// others, Han and syllables of Hangul, are all plain.
constexpr bool isTelling(unsigned char byte) {
  return byte >= 0xC0 && !(byte >= 0xE4 && byte <= 0xE9) && byte != 0xEB && byte != 0xEC;
}

#ifdef __SSE2__

// A bit for each of sixteen bytes that isTelling.
std::uint32_t tellingOf(const char* at) {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
  const auto from = [&](int first) {
    return _mm_sub_epi8(bytes, _mm_set1_epi8(static_cast<char>(first)));
  };
  const auto isBelow = [](__m128i offset, char width) {
    return _mm_cmpeq_epi8(_mm_min_epu8(offset, _mm_set1_epi8(static_cast<char>(width - 1))),
                          offset);
  };
  const __m128i quiet = _mm_or_si128(isBelow(from(0xE4), 6), isBelow(from(0xEB), 2));
  return static_cast<std::uint32_t>(
      _mm_movemask_epi8(_mm_andnot_si128(quiet, isBelow(from(0xC0), 0x40))));
}

#endif

}  // namespace

bool isPlainCharacter(char32_t character) {
  return character < tableSize && plainTable()[character];
}

bool isPlainText(std::string_view text) {
  const Table& table = plainTable();
  std::size_t at = 0;
#ifdef __SSE2__
  constexpr std::size_t width = 16;
  for (; at + width <= text.size(); at += width)
    for (std::uint32_t telling = tellingOf(text.data() + at); telling != 0; telling &= telling - 1)
      if (!isPlainIn(table, text.substr(at + static_cast<std::size_t>(std::countr_zero(telling)))))
        return false;
#endif
  for (; at < text.size(); ++at)
    if (isTelling(static_cast<unsigned char>(text[at])) && !isPlainIn(table, text.substr(at)))
      return false;
  return true;
}

}  // namespace nomely
