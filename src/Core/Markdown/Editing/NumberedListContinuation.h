#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// Continues numbered lists ("1.", up to 99) in the plain input. Pure.
namespace NumberedListContinuation {

struct Result {
  std::int64_t nextNumber = 1;
  bool endsList = false;  // the line just left holds a number but no text

  friend bool operator==(const Result&, const Result&) = default;
};

// What follows the line that the last line feed ends: "7. tea\n" → 8; "7. \n" → 8, endsList. Absent
// when that line has no number or `afterNewline` does not end in a line feed.
[[nodiscard]] std::optional<Result> continuation(std::u16string_view afterNewline);

// One more than the number of the text's last line: "6. a\n7. b" → 8; 1 when it has none.
[[nodiscard]] std::int64_t nextNumber(std::u16string_view fromCurrentLine);

}  // namespace NumberedListContinuation

// Continues a numbered list while it is typed into an input without the editing engine. One object
// per input, used on the input's thread.
class PlainAutoNumbering {
 public:
  // To be called for each change of the input's text, but for those that set what an earlier call
  // returned. Returns the text to set instead of `newValue` ("1. a\n" → "1. a\n2. "); absent when
  // `newValue` stays.
  [[nodiscard]] std::optional<std::u16string> handleAutoNumbering(std::u16string_view oldValue,
                                                                  std::u16string_view newValue);

  [[nodiscard]] std::int64_t nextNumber() const { return nextNumber_; }

 private:
  std::int64_t nextNumber_ = 1;
};

}  // namespace nomely
