#include "Core/Markdown/Inline/CodeAndLinks.h"

#include <algorithm>
#include <array>
#include <optional>

namespace nomely {
namespace {

constexpr auto npos = std::string_view::npos;

bool isPunctuation(char c) {
  return (c >= '!' && c <= '/') || (c >= ':' && c <= '@') || (c >= '[' && c <= '`') ||
         (c >= '{' && c <= '~');
}
bool isSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
bool isSchemeCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' ||
         c == '+' || c == '-';
}
bool isEscape(std::string_view text, std::size_t at) {
  return text[at] == '\\' && at + 1 < text.size() && isPunctuation(text[at + 1]);
}
bool isAt(std::string_view text, std::size_t at, char c) {
  return at < text.size() && text[at] == c;
}
// A line end between the parts of a link's target makes it none.
std::size_t skipBlanks(std::string_view text, std::size_t at) {
  return std::min(text.find_first_not_of(" \t\v\f", at), text.size());
}

// Rows of backticks by their length. A code span ends at the next row that is as long as its first.
class BacktickRows {
 public:
  explicit BacktickRows(std::string_view text) {
    for (std::size_t at = text.find('`'); at != npos; at = text.find('`', at)) {
      const std::size_t end = std::min(text.find_first_not_of('`', at), text.size());
      if (end - at <= longest) rows_.at(end - at).begins.push_back(at);
      at = end;
    }
  }

  // The first of that length at or after `from`, which never goes back.
  std::optional<std::size_t> next(std::size_t length, std::size_t from) {
    if (length > longest) return std::nullopt;
    auto& [begins, passed] = rows_.at(length);
    while (passed < begins.size() && begins[passed] < from) ++passed;
    return passed < begins.size() ? std::optional(begins[passed]) : std::nullopt;
  }

 private:
  static constexpr std::size_t longest = 80;  // the parser takes longer rows for text
  struct Rows {
    std::vector<std::size_t> begins;
    std::size_t passed = 0;
  };
  std::array<Rows, longest + 1> rows_;
};

// <scheme:...>
std::optional<std::size_t> autolinkEnd(std::string_view text, std::size_t at) {
  constexpr std::size_t longestScheme = 32;
  std::size_t end = at + 1;
  while (end < text.size() && isSchemeCharacter(text[end])) ++end;
  const std::size_t length = end - at - 1;
  if (length < 2 || length > longestScheme || !isAt(text, end, ':')) return std::nullopt;
  while (end < text.size() && static_cast<unsigned char>(text[end]) > ' ' && text[end] != '<' &&
         text[end] != '>')
    ++end;
  return isAt(text, end, '>') ? std::optional(end + 1) : std::nullopt;
}

// The end of a link's address, absent when none begins at `at`.
std::optional<std::size_t> addressEnd(std::string_view text, std::size_t at) {
  constexpr std::size_t deepest = 32;
  const bool isBracketed = isAt(text, at, '<');
  std::size_t open = 0;
  for (at += isBracketed ? 1 : 0; at < text.size(); ++at) {
    const char c = text[at];
    if (isEscape(text, at)) {
      ++at;
    } else if (isBracketed) {
      if (c == '>') return at + 1;
      if (c == '<' || c == '\n' || c == '\r') return std::nullopt;
    } else {
      if (isSpace(c) || (c == ')' && open == 0)) break;
      if (c == '(' && ++open > deepest) return std::nullopt;
      if (c == ')') --open;
    }
  }
  return isBracketed || open > 0 || at >= text.size() ? std::nullopt : std::optional(at);
}

// The end of "...", '...' or (...); `at` where none begins, absent where one does not end.
std::optional<std::size_t> titleEnd(std::string_view text, std::size_t at) {
  if (at >= text.size() || std::string_view("\"'(").find(text[at]) == npos) return at;
  const char closing = text[at] == '(' ? ')' : text[at];
  for (++at; at < text.size(); ++at) {
    if (text[at] == closing) return at + 1;
    if (closing == ')' && text[at] == '(') break;
    if (isEscape(text, at)) ++at;
  }
  return std::nullopt;
}

// The end of "(address)" or "(address title)".
std::optional<std::size_t> targetEnd(std::string_view text, std::size_t at) {
  if (!isAt(text, at, '(')) return std::nullopt;
  const auto address = addressEnd(text, skipBlanks(text, at + 1));
  if (!address) return std::nullopt;
  std::size_t end = skipBlanks(text, *address);
  if (end > *address) {
    const auto title = titleEnd(text, end);
    if (!title) return std::nullopt;
    end = skipBlanks(text, *title);
  }
  return isAt(text, end, ')') ? std::optional(end + 1) : std::nullopt;
}

class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text), rows_(text) {}

  std::vector<ByteRange> scan() {
    constexpr std::string_view special = "\\`<[]";
    for (std::size_t at = text_.find_first_of(special); at != npos;
         at = text_.find_first_of(special, at))
      at = pass(at);
    return std::move(found_);
  }

 private:
  struct Opening {
    std::size_t begin;
    bool isImage;
    bool isActive = true;
  };

  // Adds what begins or ends at that place, and tells where to go on.
  std::size_t pass(std::size_t at) {
    switch (text_[at]) {
      case '\\':
        return escapeEnd_ = at + (isEscape(text_, at) ? 2 : 1);
      case '`':
        return passBackticks(at);
      case '<':
        return passAutolink(at);
      case '[': {
        const bool isImage = at > 0 && text_[at - 1] == '!' && escapeEnd_ != at;
        openings_.push_back({at - (isImage ? 1 : 0), isImage});
        return at + 1;
      }
      default:
        return passClosing(at);
    }
  }

  std::size_t passBackticks(std::size_t at) {
    const std::size_t begin = std::min(text_.find_first_not_of('`', at), text_.size());
    const auto closing = rows_.next(begin - at, begin);
    if (!closing) return begin;
    const std::size_t end = *closing + (begin - at);
    add({at, end});
    return end;
  }

  std::size_t passAutolink(std::size_t at) {
    const auto end = autolinkEnd(text_, at);
    if (!end) return at + 1;
    add({at, *end});
    return *end;
  }

  std::size_t passClosing(std::size_t at) {
    if (openings_.empty()) return at + 1;
    const Opening opening = openings_.back();
    openings_.pop_back();
    const auto end = opening.isActive ? targetEnd(text_, at + 1) : std::nullopt;
    if (!end) return at + 1;
    add({opening.begin, *end});
    if (!opening.isImage) deactivateOpenings();
    return *end;
  }

  // Links hold no links.
  void deactivateOpenings() {
    for (auto at = openings_.rbegin(); at != openings_.rend(); ++at) {
      if (at->isImage) continue;
      if (!at->isActive) break;
      at->isActive = false;
    }
  }

  void add(ByteRange range) {
    while (!found_.empty() && found_.back().begin >= range.begin) found_.pop_back();
    found_.push_back(range);
  }

  std::string_view text_;
  BacktickRows rows_;
  std::vector<Opening> openings_;
  std::vector<ByteRange> found_;
  std::size_t escapeEnd_ = npos;  // of the last escape
};

}  // namespace

std::vector<ByteRange> codeAndLinks(std::string_view text) {
  return Scanner(text).scan();
}

}  // namespace nomely
