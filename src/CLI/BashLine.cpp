#include "CLI/BashLine.h"

#include <algorithm>

namespace nomely {
namespace {

bool isOneOf(char c, std::string_view characters) {
  return characters.find(c) != std::string_view::npos;
}

}  // namespace

BashLine::BashLine(std::string_view line, std::string_view replaced) {
  const char* const replacedAt = line.ends_with(replaced)
                                     ? line.data() + (line.size() - replaced.size())
                                     : line.data() + line.size();
  const auto keep = [&] {
    kept_ = current_.size();
    keptQuote_ = quote_;
  };
  std::string_view rest = line;
  while (!rest.empty()) {
    if (rest.data() == replacedAt) keep();
    if (quote_ != Quote::none)
      passQuoted(rest);
    else
      open(rest);
  }
  if (replaced.empty() || replacedAt == line.data() + line.size()) keep();
}

// Passes a piece outside of quotes.
void BashLine::open(std::string_view& rest) {
  const char c = rest.front();
  if (isOneOf(c, " \t\n<>|&;()")) {
    // The "2" of "2>" is no word.
    if (isOneOf(c, "<>") && current_.find_first_not_of("0123456789") == std::string::npos)
      current_.clear(), isBegun_ = false;
    endWord();
    if (isOneOf(c, "<>")) isRedirection_ = true;
    rest.remove_prefix(1);
    return;
  }
  isBegun_ = true;
  if (rest.starts_with("$'")) {
    quote_ = Quote::ansi;
    rest.remove_prefix(2);
    return;
  }
  rest.remove_prefix(1);
  if (c == '\'') {
    quote_ = Quote::single;
  } else if (c == '"') {
    quote_ = Quote::twofold;
  } else if (c == '\\') {
    if (rest.empty()) return;
    current_ += rest.front();
    rest.remove_prefix(1);
  } else {
    current_ += c;
  }
}

void BashLine::passQuoted(std::string_view& rest) {
  const char c = rest.front();
  rest.remove_prefix(1);
  if (c == (quote_ == Quote::twofold ? '"' : '\'')) {
    quote_ = Quote::none;
    return;
  }
  const std::string_view escaped = quote_ == Quote::twofold ? "\"\\$`" : "'\\";
  const bool isEscape =
      c == '\\' && quote_ != Quote::single && !rest.empty() && isOneOf(rest.front(), escaped);
  current_ += isEscape ? rest.front() : c;
  if (isEscape) rest.remove_prefix(1);
}

void BashLine::endWord() {
  if (!isBegun_) return;
  if (!isRedirection_) words_.push_back(current_);
  current_.clear();
  isBegun_ = false;
  isRedirection_ = false;
}

std::string BashLine::replacement(std::string_view word) const {
  std::string text;
  for (const char c : word.substr(std::min(kept_, word.size()))) {
    if (keptQuote_ == Quote::single && c == '\'') {
      text += "'\\''";
      continue;
    }
    const bool isSpecial = keptQuote_ == Quote::none ? isOneOf(c, " \t\"'\\$`!*?[]{}()<>|&;#")
                           : keptQuote_ == Quote::twofold
                               ? isOneOf(c, "\"\\$`")
                               : keptQuote_ == Quote::ansi && isOneOf(c, "'\\");
    if (isSpecial) text += '\\';
    text += c;
  }
  // Bash would take it for somebody's home folder.
  if (kept_ == 0 && keptQuote_ == Quote::none && text.starts_with('~'))
    text.insert(text.begin(), '\\');
  return text;
}

}  // namespace nomely
