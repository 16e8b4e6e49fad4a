#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// A command line of bash up to the cursor, cut into words. Variables and the like stay as they are
// written. Pure.
class BashLine {
 public:
  // `replaced`, the end of `line`, is what bash will put a completion in place of: it cuts words at
  // "=" and ":" and after an opening quote too.
  BashLine(std::string_view line, std::string_view replaced);

  // Those that are finished, without their quotes; where a file is written to or read from is none.
  [[nodiscard]] const std::vector<std::string>& words() const { return words_; }
  // The word at the cursor as far as it goes.
  [[nodiscard]] const std::string& current() const { return current_; }
  // Whether it is a file that the shell itself opens: "> out".
  [[nodiscard]] bool isRedirection() const { return isRedirection_; }

  // What has to take the place of `replaced` for the word to become `word`, which begins as
  // current() does.
  [[nodiscard]] std::string replacement(std::string_view word) const;

 private:
  enum class Quote { none, single, twofold, ansi };

  void open(std::string_view& rest);
  void passQuoted(std::string_view& rest);
  void endWord();

  std::vector<std::string> words_;
  std::string current_;
  bool isRedirection_ = false;
  bool isBegun_ = false;  // also by an empty quotation
  Quote quote_ = Quote::none;
  std::size_t kept_ = 0;  // bytes of current_ that stay on the line
  Quote keptQuote_ = Quote::none;
};

}  // namespace nomely
