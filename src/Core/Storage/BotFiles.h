#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "Platform/Text/Json.h"
#include "Platform/Time/Moment.h"

// What others than the chat bot have to know of its files in `.meta`.
namespace nomely::BotFiles {

// The messages exchanged with it, one a line.
inline constexpr std::string_view log = "feishu-log.jsonl";
inline constexpr std::size_t mostLogLines = 200;
// When a message of the log was exchanged: a number, seconds since 2001-01-01T00:00:00Z, or ISO
// 8601. Absent for what is no message.
[[nodiscard]] std::optional<Moment> timeOf(const Json& message);
// The number for it.
[[nodiscard]] double secondsOf(Moment moment);

// Messages that are to become memos, a file each, and those that couldn't.
inline constexpr std::string_view inbox = "feishu-inbox";
inline constexpr std::string_view aside = "aside";  // in `inbox`
// The message that is in a file of the inbox. Absent when it has none.
[[nodiscard]] std::optional<std::string_view> messageIdOf(const Json& entry);

}  // namespace nomely::BotFiles
