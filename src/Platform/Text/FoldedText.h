#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// Finding text in text the way a reader takes it: case makes no difference, nor does the way in
// which an accented character is composed. A text contains another when its folded form contains
// the other's folded form; folded is full case folding between two compositions (NFC). So "ss" is
// in "ß", and "é" in any of its spellings is found by any other; "e" is not in "é", and full-width
// letters stay apart from narrow ones. Pure; safe on any thread.

// Turkic languages have two letters i, with a dot and without, and fold each to its own.
enum class CaseRules { common, turkic };

// The rules of a locale's language: "tr_TR.UTF-8" and "az" are turkic.
[[nodiscard]] CaseRules caseRulesOf(std::string_view locale);
// The rules of the first that is set of LC_ALL, LC_CTYPE and LANG; read once, at the first call.
[[nodiscard]] CaseRules userCaseRules();

// Malformed bytes become U+FFFD.
[[nodiscard]] std::string foldedText(std::string_view text, CaseRules rules = userCaseRules());
// The same, absent when folding does no more to `text` than to lower its ASCII letters: a needle is
// found in such a text as it stands.
[[nodiscard]] std::optional<std::string> foldedBeyondAscii(std::string_view text,
                                                           CaseRules rules = userCaseRules());

// A fast answer to whether it is absent, for a well-formed text: true only if so.
[[nodiscard]] bool isSearchableAsItIs(std::string_view text, CaseRules rules = userCaseRules());

// A text to look for, prepared once for many haystacks.
class TextNeedle {
 public:
  struct Range {
    std::size_t begin = 0;  // bytes
    std::size_t end = 0;

    friend bool operator==(const Range&, const Range&) = default;
  };

  explicit TextNeedle(std::string_view text, CaseRules rules = userCaseRules());

  // An empty needle is in no text.
  [[nodiscard]] bool isEmpty() const { return folded_.empty(); }
  [[nodiscard]] const std::string& folded() const { return folded_; }

  // Where it first begins in `folded`, which is a folded text or one for which foldedBeyondAscii is
  // absent.
  [[nodiscard]] std::optional<std::size_t> findInFolded(std::string_view folded) const;
  [[nodiscard]] bool isInFolded(std::string_view folded) const {
    return findInFolded(folded).has_value();
  }

  [[nodiscard]] bool isIn(std::string_view text) const;
  // False: it is in no part of a well-formed `text` that blanks, line ends, quotes, brackets or
  // commas separate from the rest. Runs at about the speed of memory for most text.
  [[nodiscard]] bool mayBeInPartOf(std::string_view text) const;
  // The first occurrence in any text, widened to whole grapheme clusters of that text.
  [[nodiscard]] std::optional<Range> firstIn(std::string_view text) const;
  // Every occurrence, each search starting where the last hit ended, widened in the same way; hits
  // that overlap once widened are merged. Linear in the text.
  [[nodiscard]] std::vector<Range> allIn(std::string_view text) const;

 private:
  [[nodiscard]] std::vector<Range> occurrences(std::string_view text, std::size_t most) const;

  CaseRules rules_;
  std::string folded_;
  // Offsets in `folded_` of the two bytes that findLowered looks for first: the last byte of its
  // first character and of its last one.
  std::size_t firstProbe_ = 0;
  std::size_t secondProbe_ = 0;
};

}  // namespace nomely
