#pragma once

#include <span>
#include <string>
#include <string_view>

namespace nomely {

// What an error text quotes of a vendor's reply: its first 500 characters, with "***" for each of
// `secrets` that it repeats and without control characters. "未知错误" when it is no UTF-8. Pure.
[[nodiscard]] std::string quotedReply(std::string_view reply, std::span<const std::string> secrets);

}  // namespace nomely
