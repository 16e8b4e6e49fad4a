#include "Platform/Text/BigramFilter.h"

#include <algorithm>
#include <limits>

#include "Platform/Text/Ascii.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// Bits for a character and the pair that it ends. Alphabets have few of either.
constexpr std::size_t bitsForWide = 8;
constexpr std::size_t bitsForAscii = 2;
constexpr std::size_t fewestBits = 256;
constexpr std::size_t mostBits = std::numeric_limits<std::uint32_t>::max() / 64 * 64;
// A query's first marks say enough.
constexpr std::size_t mostMarks = 16;

// Two halves good enough to serve as two hashes.
std::uint64_t mark(char32_t first, char32_t second) {
  std::uint64_t hash = (std::uint64_t{first} << 32U | second) * 0x9E3779B97F4A7C15U;
  hash = (hash ^ hash >> 29U) * 0xBF58476D1CE4E5B9U;
  return hash ^ hash >> 32U;
}

// Calls `visit` with the marks of the characters (paired with nothing) and of the pairs.
template <typename Visit>
void forEachCharacter(std::string_view text, Visit visit) {
  char32_t previous = 0;
  while (!text.empty()) {
    const DecodedCharacter decoded = decodeFirst(text);
    const char32_t character = loweredAscii(decoded.value);
    visit(previous, character);
    previous = character;
    text.remove_prefix(decoded.length);
  }
}

std::size_t bitsFor(const std::vector<std::string_view>& texts) {
  std::size_t bits = 0;
  for (const std::string_view text : texts)
    for (const char byte : text) {
      const auto value = static_cast<unsigned char>(byte);
      if (value < 0x80)
        bits += bitsForAscii;
      else if (value >= 0xC0)
        bits += bitsForWide;
    }
  return std::clamp((bits + 63) / 64 * 64, fewestBits, mostBits);
}

}  // namespace

BigramFilter::Query::Query(std::string_view text) {
  bool isFirst = true;
  forEachCharacter(text, [&](char32_t previous, char32_t character) {
    if (!isFirst && marks_.size() < mostMarks) marks_.push_back(mark(previous, character));
    isFirst = false;
  });
  // A single character has no pair; in longer texts the pairs say more than their characters.
  if (marks_.empty() && !text.empty()) marks_.push_back(mark(0, decodeFirst(text).value));
}

BigramFilter::BigramFilter(const std::vector<std::string_view>& texts)
    : bitCount_(static_cast<std::uint32_t>(bitsFor(texts))), words_(bitCount_ / 64) {
  const auto add = [&](std::uint64_t hash) {
    set(place(static_cast<std::uint32_t>(hash)));
    set(place(static_cast<std::uint32_t>(hash >> 32U)));
  };
  for (const std::string_view text : texts)
    forEachCharacter(text, [&](char32_t previous, char32_t character) {
      add(mark(0, character));
      add(mark(previous, character));
    });
}

bool BigramFilter::mayContain(const Query& query) const {
  return std::ranges::all_of(query.marks_, [&](std::uint64_t hash) {
    return isSet(place(static_cast<std::uint32_t>(hash))) &&
           isSet(place(static_cast<std::uint32_t>(hash >> 32U)));
  });
}

}  // namespace nomely
