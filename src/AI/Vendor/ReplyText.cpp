#include "AI/Vendor/ReplyText.h"

#include "Platform/Text/Printable.h"
#include "Platform/Text/Replacing.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// Of code points, so that marks piled onto one letter don't get past it.
std::string_view prefix(std::string_view text, std::size_t characters) {
  std::size_t end = 0;
  for (; characters > 0 && end < text.size(); --characters)
    end += decodeFirst(text.substr(end)).length;
  return text.substr(0, end);
}

}  // namespace

std::string quotedReply(std::string_view reply, std::span<const std::string> secrets) {
  constexpr std::size_t most = 500;
  if (!isValidUtf8(reply)) return "未知错误";
  std::string text(reply);
  // Before the cut, which could leave half a secret.
  for (const std::string& secret : secrets)
    if (!secret.empty()) text = replacingAll(text, secret, "***");
  const std::string_view quoted = prefix(text, most);
  return printable(quoted) + (quoted.size() < text.size() ? "…" : "");
}

}  // namespace nomely
