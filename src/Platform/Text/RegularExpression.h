#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// A range of UTF-16 units.
struct TextRange {
  std::size_t begin = 0;
  std::size_t end = 0;

  [[nodiscard]] std::size_t length() const { return end - begin; }
  friend bool operator==(const TextRange&, const TextRange&) = default;
};

// A compiled expression in ICU's syntax with ICU's default flags. Immutable and safe on any thread;
// meant to be compiled once per process.
//
// Matching is bounded in time and in backtracking stack; where a text hits a bound, that text has
// no further match, so a hostile text costs a moment and is left as it is.
class RegularExpression {
 public:
  // `groups[0]` is the whole match; a group that took no part is absent.
  struct Match {
    std::vector<std::optional<TextRange>> groups;

    [[nodiscard]] TextRange whole() const { return *groups[0]; }
  };

  // Throws std::invalid_argument when the pattern is not well-formed.
  explicit RegularExpression(std::string_view pattern);
  ~RegularExpression();
  RegularExpression(RegularExpression&&) noexcept;
  RegularExpression& operator=(RegularExpression&&) noexcept;

  [[nodiscard]] bool matchesIn(std::u16string_view text) const;
  [[nodiscard]] std::optional<Match> firstMatch(std::u16string_view text) const;
  [[nodiscard]] std::vector<Match> matches(std::u16string_view text) const;
  // The text with every match replaced. In `replacement` "$1" stands for the first group and "$0"
  // for the match; nothing else is special. Returns `text` unchanged when a bound was hit.
  [[nodiscard]] std::u16string replacingMatches(std::u16string_view text,
                                                std::u16string_view replacement) const;

 private:
  struct Compiled;

  // Stops when `visit` answers false; false when a bound was hit.
  bool forEachMatch(std::u16string_view text, const std::function<bool(Match)>& visit) const;

  std::unique_ptr<Compiled> compiled_;
};

}  // namespace nomely
