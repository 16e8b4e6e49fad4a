#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// Numbers of 1 to 99 at the start of a line, for the plain input. Pure.
namespace NumberedListContinuation {

struct Result {
  std::int64_t nextNumber = 1;
  bool endsList = false;  // the line just left holds a number but no text

  friend bool operator==(const Result&, const Result&) = default;
};

// What the line before the last line feed asks for; absent when it has no number or `text`
// does not end in a line feed.
[[nodiscard]] std::optional<Result> continuation(std::u16string_view afterNewline);

// The number after that of the text's last line; 1 when it has none.
[[nodiscard]] std::int64_t nextNumber(std::u16string_view fromCurrentLine);

}  // namespace NumberedListContinuation

// Keeps count while a numbered list is typed into an input that has no other help with lines. One
// per input; on the input's thread.
class PlainAutoNumbering {
 public:
  // To be told each change that is not the answer to an earlier call. Gives what the input's text
  // is to be instead; absent when it stays.
  [[nodiscard]] std::optional<std::u16string> handleAutoNumbering(std::u16string_view oldValue,
                                                                  std::u16string_view newValue);

  [[nodiscard]] std::int64_t nextNumber() const { return nextNumber_; }

 private:
  std::int64_t nextNumber_ = 1;
};

}  // namespace nomely
