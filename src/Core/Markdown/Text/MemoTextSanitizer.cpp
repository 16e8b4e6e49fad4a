#include "Core/Markdown/Text/MemoTextSanitizer.h"

#include <algorithm>
#include <array>

#include "Platform/Text/RegularExpression.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::string_view objectReplacement = "\uFFFC";
constexpr std::array<std::string_view, 6> markOpenings{"[Image", "[Attachment", "[File",
                                                       "[图片",  "[图像",       "[附件"};

bool mayHoldMark(std::string_view text) {
  for (std::size_t at = text.find('['); at != std::string_view::npos; at = text.find('[', at + 1)) {
    const std::string_view rest = text.substr(at);
    if (std::ranges::any_of(markOpenings, [&](auto opening) { return rest.starts_with(opening); }))
      return true;
  }
  return false;
}

void removeObjectReplacements(std::string& text) {
  for (std::size_t at = text.find(objectReplacement); at != std::string::npos;
       at = text.find(objectReplacement, at))
    text.erase(at, objectReplacement.size());
}

std::string withoutMarks(std::string_view text) {
  static const RegularExpression onLine(
      R"((?m)^[ \t]*\[(?:Image|Attachment|File|图片|图像|附件)\s*#\d+\][ \t]*(?:\r?\n)?)");
  static const RegularExpression inside(
      R"([ \t]*\[(?:Image|Attachment|File|图片|图像|附件)\s*#\d+\][ \t]*)");
  return toUtf8(inside.replacingMatches(onLine.replacingMatches(toUtf16(text), u""), u""));
}

}  // namespace

std::string MemoTextSanitizer::removingAttachmentPlaceholders(std::string_view text, Edges edges) {
  std::string cleaned(text);
  removeObjectReplacements(cleaned);
  if (mayHoldMark(cleaned)) cleaned = withoutMarks(cleaned);
  return edges == Edges::trim ? std::string(trimSpaceAndBreaks(cleaned)) : cleaned;
}

}  // namespace nomely
