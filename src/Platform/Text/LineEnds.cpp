#include "Platform/Text/LineEnds.h"

#include "Platform/Text/Replacing.h"

namespace nomely {

std::string_view withoutByteOrderMark(std::string_view text) {
  if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
  return text;
}

std::string withLineFeeds(std::string_view text) {
  text = withoutByteOrderMark(text);
  if (text.find('\r') == std::string_view::npos) return std::string(text);
  return replacingAll(replacingAll(text, "\r\n", "\n"), "\r", "\n");
}

}  // namespace nomely
