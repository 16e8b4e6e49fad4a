#pragma once

#include <string>
#include <string_view>

namespace nomely {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

// `text` without the byte order mark at its beginning, if there is one.
[[nodiscard]] std::string_view withoutByteOrderMark(std::string_view text);

// The form in which text from outside is stored: "\uFEFFa\r\nb\rc" → "a\nb\nc". Pure.
[[nodiscard]] std::string withLineFeeds(std::string_view text);

}  // namespace nomely
