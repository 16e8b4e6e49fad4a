#include "Platform/Text/Unicode.h"

#include <algorithm>
#include <bit>
#include <bitset>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>

#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace nomely {
namespace {

using Byte = unsigned char;

Byte byteAt(const char* at) {
  return static_cast<Byte>(*at);
}
bool isContinuation(const char* at) {
  return (byteAt(at) & 0xC0U) == 0x80U;
}

struct Decoded {
  UChar32 value = 0;  // negative where no well-formed sequence begins
  int32_t length = 0;
};

// What begins at `at`, before `end`.
Decoded decode(const char* at, const char* end) {
  const auto left = static_cast<int32_t>(std::min<std::ptrdiff_t>(end - at, U8_MAX_LENGTH));
  Decoded next;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"  // inside the macro
  U8_NEXT(at, next.length, left, next.value);
#pragma GCC diagnostic pop
  return next;
}

#ifdef __SSE2__

// Where bytes of each kind are among 64; the first is the lowest bit.
struct ByteKinds {
  std::uint64_t continuation = 0;
  std::uint64_t lead = 0;         // of two bytes or more
  std::uint64_t longer = 0;       // of three or more
  std::uint64_t longest = 0;      // of four
  std::uint64_t exceptional = 0;  // leads that restrict the second byte, and those that never occur

  explicit ByteKinds(const char* at) {
    for (int part = 0; part < 4; ++part) {
      const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at + 16 * part));
      if (_mm_movemask_epi8(bytes) == 0) continue;
      const auto put = [&](std::uint64_t& kind, __m128i found) {
        kind |= std::uint64_t{static_cast<std::uint32_t>(_mm_movemask_epi8(found))} << (16 * part);
      };
      const auto value = [](int byte) { return _mm_set1_epi8(static_cast<char>(byte)); };
      const auto is = [&](int byte) { return _mm_cmpeq_epi8(bytes, value(byte)); };
      const auto isFrom = [&](int byte) {
        return _mm_cmpeq_epi8(_mm_max_epu8(bytes, value(byte)), bytes);
      };
      put(continuation, _mm_cmplt_epi8(bytes, value(0xC0)));
      put(lead, isFrom(0xC0));
      put(longer, isFrom(0xE0));
      put(longest, isFrom(0xF0));
      put(exceptional, _mm_or_si128(_mm_or_si128(is(0xC0), is(0xC1)),
                                    _mm_or_si128(_mm_or_si128(is(0xE0), is(0xED)), isFrom(0xF0))));
    }
  }
};

// Goes through whole blocks of 64 bytes from `at` on, and comes to stand at the first character
// that is not whole within them. Returns false at a malformed one.
bool skipValidBlocks(const char*& at, const char* end) {
  std::uint64_t due = 0;  // continuation bytes that characters of the block before call for
  const char* begun = at;
  for (; end - at >= 64; at += 64) {
    const ByteKinds kinds(at);
    if (kinds.continuation != (due | kinds.lead << 1U | kinds.longer << 2U | kinds.longest << 3U))
      return false;
    due = kinds.lead >> 63U | kinds.longer >> 62U | kinds.longest >> 61U;
    for (std::uint64_t left = kinds.exceptional; left != 0; left &= left - 1)
      if (decode(at + std::countr_zero(left), end).value < 0) return false;
  }
  if (due != 0)
    while (--at != begun && isContinuation(at)) {
    }
  return true;
}

#endif

// The base library's iterator is not shareable between threads and costly to build.
icu::BreakIterator& graphemeIterator() {
  thread_local const std::unique_ptr<icu::BreakIterator> iterator = [] {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> made(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
    return made;
  }();
  return *iterator;
}

// Characters of the first plane that never join with one another, but for a carriage return with
// its line feed: most text of this application is of nothing else.
constexpr std::size_t firstPlane = 0x10000;

const std::bitset<firstPlane>& standingAlone() {
  static const auto table = [] {
    std::bitset<firstPlane> alone;
    for (UChar32 c = 0; c < static_cast<UChar32>(firstPlane); ++c) {
      const int kind = u_getIntPropertyValue(c, UCHAR_GRAPHEME_CLUSTER_BREAK);
      alone[static_cast<std::size_t>(c)] =
          !U_IS_SURROGATE(c) &&
          (kind == U_GCB_OTHER || kind == U_GCB_CONTROL || kind == U_GCB_CR || kind == U_GCB_LF);
    }
    return alone;
  }();
  return table;
}

// Length of the character at the beginning of `text` when it is one of those, 0 for any other.
std::size_t lengthStandingAlone(std::string_view text) {
  if (byteAt(text.data()) < 0x80) return 1;
  const DecodedCharacter first = decodeFirst(text);
  const bool isWellFormed = first.length > 1;
  return isWellFormed && first.value < firstPlane && standingAlone()[first.value] ? first.length
                                                                                  : 0;
}

struct Clusters {
  std::size_t count = 0;
  std::size_t end = 0;  // bytes
};

// Goes over characters that stand alone, `most` at the most, and stops before one that may be part
// of a cluster with what follows.
Clusters clustersStandingAlone(std::string_view text, std::size_t most) {
  Clusters passed;
  std::size_t length = text.empty() ? 0 : lengthStandingAlone(text);
  while (length != 0 && passed.count < most) {
    const std::size_t end = passed.end + length;
    const std::size_t next = end < text.size() ? lengthStandingAlone(text.substr(end)) : 0;
    const bool isPair = text[passed.end] == '\r' && text.substr(end).starts_with('\n');
    if (isPair || (next == 0 && end < text.size())) break;
    passed = {passed.count + 1, end};
    length = next;
  }
  return passed;
}

// Whether characters that stand alone meet at `offset`.
bool isSurelyBoundary(std::string_view text, std::size_t offset) {
  if (offset == 0 || offset == text.size()) return true;
  std::size_t before = offset - 1;
  while (before > 0 && offset - before < 3 && isContinuation(text.data() + before)) --before;
  return lengthStandingAlone(text.substr(before)) == offset - before &&
         lengthStandingAlone(text.substr(offset)) != 0 &&
         !(text[before] == '\r' && text[offset] == '\n');
}

// Calls `use` with an iterator over the clusters of `text`.
template <typename Use>
void withGraphemes(std::string_view text, Use use) {
  UErrorCode status = U_ZERO_ERROR;
  UText source = UTEXT_INITIALIZER;
  utext_openUTF8(&source, text.data(), static_cast<int64_t>(text.size()), &status);
  icu::BreakIterator& iterator = graphemeIterator();
  iterator.setText(&source, status);
  if (U_SUCCESS(status)) use(iterator);
  utext_close(&source);
}

// Calls `visit(end)` with the byte offset where each cluster ends until it returns false.
template <typename Visit>
void forEachGrapheme(std::string_view text, Visit visit) {
  withGraphemes(text, [&](icu::BreakIterator& iterator) {
    for (int32_t end = iterator.next(); end != icu::BreakIterator::DONE; end = iterator.next())
      if (!visit(static_cast<std::size_t>(end))) break;
  });
}

std::size_t columnsOf(std::string_view cluster) {
  const auto first = static_cast<UChar32>(decodeFirst(cluster).value);
  const int type = u_charType(first);
  if (type == U_CONTROL_CHAR || type == U_FORMAT_CHAR) return 0;
  const int eastAsian = u_getIntPropertyValue(first, UCHAR_EAST_ASIAN_WIDTH);
  if (eastAsian == U_EA_WIDE || eastAsian == U_EA_FULLWIDTH) return 2;
  // Flags are made of narrow letters, and a selector turns narrow signs into emoji.
  constexpr std::string_view emojiSelector = "\xEF\xB8\x8F";
  const bool isEmoji = u_hasBinaryProperty(first, UCHAR_REGIONAL_INDICATOR) != 0 ||
                       cluster.find(emojiSelector) != std::string_view::npos;
  return isEmoji ? 2 : 1;
}

std::vector<std::size_t> endsByIterator(std::u16string_view text) {
  std::vector<std::size_t> ends;
  UErrorCode status = U_ZERO_ERROR;
  UText source = UTEXT_INITIALIZER;
  utext_openUChars(&source, text.data(), static_cast<int64_t>(text.size()), &status);
  icu::BreakIterator& iterator = graphemeIterator();
  iterator.setText(&source, status);
  if (U_SUCCESS(status)) {
    for (int32_t end = iterator.next(); end != icu::BreakIterator::DONE; end = iterator.next())
      ends.push_back(static_cast<std::size_t>(end));
  }
  utext_close(&source);
  return ends;
}

// Leads of U+4000 to U+9FFF, where no character is white space.
bool leadsIdeograph(char byte) {
  return static_cast<Byte>(byte) >= 0xE4 && static_cast<Byte>(byte) <= 0xE9;
}

template <typename Belongs>
std::string_view trim(std::string_view text, Belongs belongs) {
  while (!text.empty() && !leadsIdeograph(text.front())) {
    const DecodedCharacter first = decodeFirst(text);
    if (!belongs(first.value)) break;
    text.remove_prefix(first.length);
  }
  while (!text.empty()) {
    std::size_t start = text.size() - 1;
    if (start >= 2 && isContinuation(text.data() + start) &&
        isContinuation(text.data() + start - 1) && leadsIdeograph(text[start - 2]))
      break;
    while (start > 0 && text.size() - start < 4 && isContinuation(text.data() + start)) --start;
    const DecodedCharacter last = decodeFirst(text.substr(start));
    if (start + last.length != text.size() || !belongs(last.value)) break;
    text = text.substr(0, start);
  }
  return text;
}

}  // namespace

bool isValidUtf8(std::string_view bytes) {
  const char* at = bytes.data();
  const char* const end = at + bytes.size();
#ifdef __SSE2__
  if (!skipValidBlocks(at, end)) return false;
#endif
  while (at != end) {
    while (at != end && byteAt(at) < 0x80) ++at;
    while (at != end && byteAt(at) >= 0x80) {
      const Decoded next = decode(at, end);
      if (next.value < 0) return false;
      at += next.length;
    }
  }
  return true;
}

DecodedCharacter decodeFirst(std::string_view text) {
  const Decoded next = decode(text.data(), text.data() + text.size());
  if (next.value < 0) return {0xFFFD, 1};
  return {static_cast<char32_t>(next.value), static_cast<std::size_t>(next.length)};
}

void appendUtf8(std::string& text, char32_t character) {
  char buffer[U8_MAX_LENGTH];
  int32_t length = 0;
  UBool failed = 0;
  U8_APPEND(buffer, length, U8_MAX_LENGTH, static_cast<UChar32>(character), failed);
  if (failed != 0) return appendUtf8(text, 0xFFFD);
  text.append(buffer, static_cast<std::size_t>(length));
}

bool isHorizontalSpace(char32_t character) {
  if (character < 0x80) return character == ' ' || character == '\t';
  if (character >= 0x3001) return false;
  return character == 0xA0 || character == 0x1680 || (character >= 0x2000 && character <= 0x200A) ||
         character == 0x202F || character == 0x205F || character == 0x3000;
}

bool isLineBreak(char32_t character) {
  return (character >= 0x0A && character <= 0x0D) || character == 0x85 || character == 0x2028 ||
         character == 0x2029;
}

bool isSpaceOrBreak(char32_t character) {
  return isHorizontalSpace(character) || isLineBreak(character);
}

bool isDecimalDigit(char32_t character) {
  if (character < 0x80) return character >= '0' && character <= '9';
  return u_charType(static_cast<UChar32>(character)) == U_DECIMAL_DIGIT_NUMBER;
}

bool endsWord(std::string_view rest) {
  return rest.empty() || !continuesWord(decodeFirst(rest).value);
}

char32_t foldedCase(char32_t character) {
  return static_cast<char32_t>(u_foldCase(static_cast<UChar32>(character), U_FOLD_CASE_DEFAULT));
}

bool isLetterOrNumber(char32_t character) {
  constexpr uint32_t mask = U_GC_L_MASK | U_GC_N_MASK;
  return (U_MASK(u_charType(static_cast<UChar32>(character))) & mask) != 0;
}

bool isMark(char32_t character) {
  return (U_MASK(u_charType(static_cast<UChar32>(character))) & U_GC_M_MASK) != 0;
}

bool continuesWord(char32_t character) {
  // Format characters are passed over by ICU's \b, as marks are.
  constexpr uint32_t mask = U_GC_M_MASK | U_GC_ND_MASK | U_GC_PC_MASK | U_GC_CF_MASK;
  const auto point = static_cast<UChar32>(character);
  return (U_MASK(u_charType(point)) & mask) != 0 ||
         u_hasBinaryProperty(point, UCHAR_ALPHABETIC) != 0 ||
         u_hasBinaryProperty(point, UCHAR_GRAPHEME_EXTEND) != 0;
}

std::string_view trimHorizontal(std::string_view text) {
  return trim(text, isHorizontalSpace);
}

std::string_view trimSpaceAndBreaks(std::string_view text) {
  return trim(text, isSpaceOrBreak);
}

std::u16string toUtf16(std::string_view text) {
  const icu::UnicodeString converted = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
  return {converted.getBuffer(), static_cast<std::size_t>(converted.length())};
}

std::string toUtf8(std::u16string_view text) {
  std::string converted;
  icu::UnicodeString(false, text.data(), static_cast<int32_t>(text.size())).toUTF8String(converted);
  return converted;
}

std::size_t graphemeCount(std::string_view text) {
  return graphemeCountUpTo(text, std::numeric_limits<std::size_t>::max());
}

std::size_t graphemeCountUpTo(std::string_view text, std::size_t most) {
  Clusters passed = clustersStandingAlone(text, most);
  if (passed.count == most || passed.end == text.size()) return passed.count;
  forEachGrapheme(text.substr(passed.end), [&](std::size_t) { return ++passed.count < most; });
  return passed.count;
}

std::vector<std::size_t> graphemeEnds(std::u16string_view text) {
  std::vector<std::size_t> ends;
  ends.reserve(text.size());
  const std::bitset<firstPlane>& alone = standingAlone();
  const auto isSurelyEnd = [&](std::size_t at) {
    return at == text.size() || (alone[text[at - 1]] && alone[text[at]] &&
                                 !(text[at - 1] == u'\r' && text[at] == u'\n'));
  };
  for (std::size_t begin = 0; begin < text.size();) {
    std::size_t end = begin + 1;
    while (!isSurelyEnd(end)) ++end;
    if (end == begin + 1)
      ends.push_back(end);
    else
      for (const std::size_t inner : endsByIterator(text.substr(begin, end - begin)))
        ends.push_back(begin + inner);
    begin = end;
  }
  return ends;
}

std::string_view graphemePrefix(std::string_view text, std::size_t count) {
  Clusters passed = clustersStandingAlone(text, count);
  const std::size_t begin = passed.end;
  if (passed.count < count)
    forEachGrapheme(text.substr(begin), [&](std::size_t end) {
      passed = {passed.count + 1, begin + end};
      return passed.count < count;
    });
  return text.substr(0, passed.end);
}

std::size_t graphemesBefore(std::string_view text, std::size_t offset, std::size_t count) {
  if (count == 0 && isSurelyBoundary(text, offset)) return offset;
  std::size_t begin = 0;
  withGraphemes(text, [&](icu::BreakIterator& iterator) {
    auto at = static_cast<int32_t>(offset);
    if (iterator.isBoundary(at) == 0) at = iterator.preceding(at);
    for (; at > 0 && count > 0; --count) at = iterator.preceding(at);
    begin = static_cast<std::size_t>(at);
  });
  return begin;
}

std::size_t graphemesAfter(std::string_view text, std::size_t offset, std::size_t count) {
  if (count == 0 && isSurelyBoundary(text, offset)) return offset;
  std::size_t end = text.size();
  withGraphemes(text, [&](icu::BreakIterator& iterator) {
    auto at = static_cast<int32_t>(offset);
    if (iterator.isBoundary(at) == 0) at = iterator.following(at);
    for (; at != icu::BreakIterator::DONE && count > 0; --count) at = iterator.following(at);
    if (at != icu::BreakIterator::DONE) end = static_cast<std::size_t>(at);
  });
  return end;
}

std::size_t displayWidth(std::string_view text) {
  std::size_t width = 0;
  std::size_t begin = 0;
  forEachGrapheme(text, [&](std::size_t end) {
    width += columnsOf(text.substr(begin, end - begin));
    begin = end;
    return true;
  });
  return width;
}

}  // namespace nomely
