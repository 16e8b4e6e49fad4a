#pragma once

namespace nomely {

// What keeps the chat bot from working, or from being its user's alone, and what to do about it.
namespace BotAdvice {
inline constexpr auto openToAll =
    "机器人还没有绑定：谁给它发消息都会记进日记，也能查到日记。运行 nomely bot pair 绑定你自己。";
inline constexpr auto isOff = "机器人没有启用：nomely config set feishu.enabled true";
inline constexpr auto hasNoCredentials =
    "机器人还没有凭证：nomely config set feishu.appId ID，再 nomely secret set feishu";
}  // namespace BotAdvice

}  // namespace nomely
