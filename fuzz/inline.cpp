// Any text has a look: runs that cover it, whole characters in each, no link that would run what it
// says, and nothing lost of a text without marks.

#include <string>

#include "Core/Markdown/Inline/InlineMarkdown.h"
#include "Core/Markdown/Inline/InlineText.h"
#include "Core/Markdown/Text/LinkScheme.h"
#include "Platform/Text/Unicode.h"
#include "fuzz/Fuzzing.h"

namespace {

using namespace nomely;

void check(const StyledText& styled) {
  std::size_t begin = 0;
  const StyledText::Run* before = nullptr;
  for (const StyledText::Run& run : styled.runs) {
    fuzz::require(run.length > 0 && begin + run.length <= styled.text.size());
    fuzz::require(isValidUtf8(std::string_view(styled.text).substr(begin, run.length)));
    fuzz::require(before == nullptr || !(before->style == run.style));
    fuzz::require(run.style.link == nullptr || mayBeLinked(*run.style.link));
    begin += run.length;
    before = &run;
  }
  fuzz::require(begin == styled.text.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  if (!isValidUtf8(text)) return 0;
  check(MarkdownTextView::inlineAttributed(MarkdownTextView::preparedParagraph(text)));
  check(MarkdownTextView::inlineAttributed(
      text, {.defaultColor = TextColor{}, .highlightKeyword = text.substr(0, 1)}));
  const StyledText parsed = parsedInline(text);
  check(parsed);
  const bool isPlain = text.find_first_of("*_`[<&\\~") == std::string_view::npos &&
                       text.find("  \n") == std::string_view::npos;
  fuzz::require(!isPlain || parsed.text == text);
  // The same where something makes the parser run.
  if (isPlain && text.find('\0') == std::string_view::npos) {
    const std::string coded = std::string(text).append("`c`").append(text);
    const std::string shown = parsedInline(coded).text;
    // A text with nearly every kind of blank is not parsed at all.
    fuzz::require(shown == std::string(text).append("c").append(text) || shown == coded);
  }
  return 0;
}
