// Any text is cut into blocks that hold nothing but what stands in it, and a long line loses
// nothing but white space.

#include <algorithm>
#include <string>

#include "Core/Markdown/Blocks/BlockParser.h"
#include "Core/Markdown/Blocks/SmartSplit.h"
#include "Core/Markdown/Inline/MemoBodyKit.h"
#include "Platform/Text/Unicode.h"
#include "fuzz/Fuzzing.h"

namespace {

using namespace nomely;

std::string withoutSpace(std::string_view text) {
  std::string kept;
  while (!text.empty()) {
    const DecodedCharacter next = decodeFirst(text);
    if (!isSpaceOrBreak(next.value)) kept += text.substr(0, next.length);
    text.remove_prefix(next.length);
  }
  return kept;
}

void checkSplit(std::string_view text) {
  // Colours gain a blank, and their mark goes.
  if (text.find("color:") != std::string_view::npos) return;
  std::string joined;
  for (const SplitSegment& segment : SmartSplit::smartSplit(text)) joined += segment.text;
  fuzz::require(withoutSpace(joined) == withoutSpace(text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::textOf(data, size);
  // What is no text is refused when it is read.
  if (!isValidUtf8(text)) return 0;
  std::size_t shown = 0;
  for (const MarkdownBlock& block : MarkdownTextView::parseBlocks(text))
    if (const auto* paragraph = std::get_if<markdown::Paragraph>(&block)) {
      fuzz::require(!paragraph->text.empty());
      shown += paragraph->text.size();
    }
  fuzz::require(shown <= 2 * text.size());
  checkSplit(text);
  const std::string preview = MemoBodyKit::collapsedPreview(text);
  fuzz::require(isValidUtf8(preview));
  fuzz::require(MemoBodyKit::shouldCollapse(text) || preview == trimSpaceAndBreaks(text));
  return 0;
}
