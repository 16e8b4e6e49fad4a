#pragma once

#include <string>
#include <string_view>

namespace nomely {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

// `text` without a byte order mark that leads it.
[[nodiscard]] std::string_view withoutByteOrderMark(std::string_view text);

// How text that comes from outside is kept: no leading byte order mark, and a line feed for every
// CRLF and every lone carriage return. Pure.
[[nodiscard]] std::string withLineFeeds(std::string_view text);

}  // namespace nomely
