#include "Platform/Text/FoldedText.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <vector>

#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include "Platform/Text/Ascii.h"
#include "Platform/Text/LoweredSearch.h"
#include "Platform/Text/PlainText.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

const icu::Normalizer2& composer() {
  static const icu::Normalizer2& instance = [&]() -> const icu::Normalizer2& {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* const made = icu::Normalizer2::getNFCInstance(status);
    if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
    return *made;
  }();
  return instance;
}

constexpr auto lowerAscii = [](char c) { return loweredAscii(c); };

// A stretch of text that is folded without regard to its neighbours.
struct Piece {
  std::size_t begin;
  std::size_t end;
  bool isPlain;  // folding lowers its ASCII letters and does nothing else
};

// Cuts a text into pieces: long plain ones, and single characters that folding changes or that
// combine, each with the marks on it.
class PieceReader {
 public:
  PieceReader(std::string_view text, CaseRules rules) : text_(text), rules_(rules) {}

  // False at the end of the text.
  bool next(Piece& piece) {
    if (at_ == text_.size()) return false;
    const std::size_t begin = at_;
    at_ = plainEnd(begin);
    piece = {begin, at_, true};
    if (at_ > begin) return true;
    at_ += decodeFirst(text_.substr(at_)).length;
    while (at_ < text_.size() && !isBoundary(at_)) at_ += decodeFirst(text_.substr(at_)).length;
    piece = {begin, at_, false};
    return true;
  }

 private:
  [[nodiscard]] bool isBoundary(std::size_t at) const {
    return composer().hasBoundaryBefore(
               static_cast<UChar32>(decodeFirst(text_.substr(at)).value)) != 0;
  }

  // Where the plain text from `begin` ends: a character that a mark follows is no part of it.
  [[nodiscard]] std::size_t plainEnd(std::size_t begin) const {
    std::size_t at = begin;
    std::size_t last = begin;  // where the character before `at` begins
    while (at < text_.size()) {
      const auto byte = static_cast<unsigned char>(text_[at]);
      std::size_t length = 0;
      if (byte < 0x80) {
        if (byte == 'I' && rules_ == CaseRules::turkic) return at;
        length = 1;
      } else if (byte >= 0xE4 && byte <= 0xE9 && at + 3 <= text_.size()) {  // Han, all of it plain
        length = 3;
      } else {
        const DecodedCharacter character = decodeFirst(text_.substr(at));
        if (!isPlainCharacter(character.value) ||
            (character.value == 0xFFFD && character.length == 1))
          return isBoundary(at) ? at : last;
        length = character.length;
      }
      last = at;
      at += length;
    }
    return at;
  }

  std::string_view text_;
  CaseRules rules_;
  std::size_t at_ = 0;
};

void appendFolded(std::string& out, std::string_view text, const Piece& piece, CaseRules rules) {
  const std::string_view part = text.substr(piece.begin, piece.end - piece.begin);
  if (piece.isPlain) {
    const std::size_t size = out.size();
    out.resize(size + part.size());
    std::ranges::transform(part, out.begin() + static_cast<std::ptrdiff_t>(size), lowerAscii);
    return;
  }
  UErrorCode status = U_ZERO_ERROR;
  icu::UnicodeString folded = composer().normalize(
      icu::UnicodeString::fromUTF8({part.data(), static_cast<int32_t>(part.size())}), status);
  folded.foldCase(rules == CaseRules::turkic ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT);
  composer().normalize(folded, status).toUTF8String(out);
  if (U_FAILURE(status)) throw std::runtime_error(u_errorName(status));
}

// A piece that folding changed, and where it came to lie.
struct MovedPiece {
  Piece original;
  std::size_t foldedBegin;
  std::size_t foldedEnd;
};

// The offset in the original for one in the folded text; inside a changed piece its begin or end.
enum class Side { begin, end };

std::size_t originalOffset(const std::vector<MovedPiece>& moved, std::size_t offset, Side side) {
  const auto after = std::ranges::partition_point(moved, [&](const MovedPiece& piece) {
    return side == Side::begin ? piece.foldedBegin <= offset : piece.foldedBegin < offset;
  });
  if (after == moved.begin()) return offset;
  const MovedPiece& piece = *std::prev(after);
  if (offset < piece.foldedEnd)
    return side == Side::begin ? piece.original.begin : piece.original.end;
  return piece.original.end + (offset - piece.foldedEnd);
}

}  // namespace

CaseRules caseRulesOf(std::string_view locale) {
  const std::string_view language = locale.substr(0, locale.find_first_of("_-.@"));
  return language == "tr" || language == "az" ? CaseRules::turkic : CaseRules::common;
}

CaseRules userCaseRules() {
  static const CaseRules rules = [] {
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"})
      if (const char* value = std::getenv(name); value != nullptr && *value != '\0')
        return caseRulesOf(value);
    return CaseRules::common;
  }();
  return rules;
}

std::string foldedText(std::string_view text, CaseRules rules) {
  std::string folded;
  folded.reserve(text.size());
  PieceReader pieces(text, rules);
  for (Piece piece; pieces.next(piece);) appendFolded(folded, text, piece, rules);
  return folded;
}

bool isSearchableAsItIs(std::string_view text, CaseRules rules) {
  return rules == CaseRules::common && isPlainText(text);
}

std::optional<std::string> foldedBeyondAscii(std::string_view text, CaseRules rules) {
  PieceReader pieces(text, rules);
  std::string folded;
  for (Piece piece; pieces.next(piece);) {
    if (piece.isPlain) continue;
    // A mark that nothing composes with folds to itself, as do the letters before it.
    folded.clear();
    appendFolded(folded, text, piece, rules);
    if (!std::ranges::equal(folded, text.substr(piece.begin, piece.end - piece.begin), {}, {},
                            lowerAscii))
      return foldedText(text, rules);
  }
  return std::nullopt;
}

TextNeedle::TextNeedle(std::string_view text, CaseRules rules)
    : rules_(rules), folded_(foldedText(text, rules)) {
  if (folded_.empty()) return;
  // The last byte of a character tells it from its neighbours in the code; the first doesn't.
  secondProbe_ = folded_.size() - 1;
  firstProbe_ = decodeFirst(folded_).length - 1;
  if (firstProbe_ == secondProbe_ && firstProbe_ > 0) --firstProbe_;
}

std::optional<std::size_t> TextNeedle::findInFolded(std::string_view folded) const {
  if (isEmpty()) return std::nullopt;
  return findLowered(folded, folded_, firstProbe_, secondProbe_);
}

bool TextNeedle::isIn(std::string_view text) const {
  const std::optional<std::string> folded = foldedBeyondAscii(text, rules_);
  return isInFolded(folded ? *folded : text);
}

bool TextNeedle::mayBeInPartOf(std::string_view text) const {
  return isInFolded(text) || (!isSearchableAsItIs(text, rules_) && isIn(text));
}

std::optional<TextNeedle::Range> TextNeedle::firstIn(std::string_view text) const {
  const std::vector<Range> first = occurrences(text, 1);
  return first.empty() ? std::nullopt : std::optional(first.front());
}

std::vector<TextNeedle::Range> TextNeedle::allIn(std::string_view text) const {
  return occurrences(text, SIZE_MAX);
}

std::vector<TextNeedle::Range> TextNeedle::occurrences(std::string_view text,
                                                       std::size_t most) const {
  std::string folded;
  std::vector<MovedPiece> moved;
  PieceReader pieces(text, rules_);
  for (Piece piece; pieces.next(piece);) {
    const std::size_t begin = folded.size();
    appendFolded(folded, text, piece, rules_);
    if (!piece.isPlain) moved.push_back({piece, begin, folded.size()});
  }
  std::vector<Range> found;
  std::string_view rest = folded;
  for (auto at = findInFolded(rest); at && found.size() < most; at = findInFolded(rest)) {
    rest.remove_prefix(*at + folded_.size());
    const std::size_t foldedEnd = folded.size() - rest.size();
    const std::size_t begin = originalOffset(moved, foldedEnd - folded_.size(), Side::begin);
    const std::size_t end = originalOffset(moved, foldedEnd, Side::end);
    const Range wide{graphemesBefore(text, begin, 0), graphemesAfter(text, end, 0)};
    if (!found.empty() && wide.begin < found.back().end)
      found.back().end = std::max(found.back().end, wide.end);
    else
      found.push_back(wide);
  }
  return found;
}

}  // namespace nomely
