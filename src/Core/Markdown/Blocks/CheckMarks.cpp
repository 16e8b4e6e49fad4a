#include "Core/Markdown/Blocks/CheckMarks.h"

#include "Core/Markdown/Blocks/LineRules.h"
#include "Core/Markdown/Text/MemoTextSanitizer.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Core/Markdown/Text/TextLines.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// What stripOriginalComment leaves of `body`, as a part of it; absent when it joins two parts.
std::optional<std::string_view> shownPart(std::string_view body) {
  const std::string shown = MemoTextUtilities::stripOriginalComment(body);
  const std::string_view trimmed = trimSpaceAndBreaks(body);
  if (!trimmed.starts_with(shown)) return std::nullopt;
  return trimmed.substr(0, shown.size());
}

// A line that is gone with its break when placeholders are removed.
bool isRemoved(std::string_view line) {
  using enum MemoTextSanitizer::Edges;
  return !line.empty() &&
         MemoTextSanitizer::removingAttachmentPlaceholders(std::string(line) + "\n", keep).empty();
}

}  // namespace

std::optional<std::string> CheckMarks::toggled(std::string_view body, std::size_t line) {
  const auto shown = shownPart(body);
  if (!shown) return std::nullopt;
  for (const std::string_view candidate : linesOf(*shown)) {
    if (isRemoved(candidate)) continue;
    if (line-- > 0) continue;
    const auto item = LineRules::checkLine(trimHorizontal(candidate));
    if (!item) return std::nullopt;
    std::string changed(body);
    changed[static_cast<std::size_t>(item->mark.data() - body.data())] =
        item->isChecked ? ' ' : 'x';
    return changed;
  }
  return std::nullopt;
}

}  // namespace nomely
