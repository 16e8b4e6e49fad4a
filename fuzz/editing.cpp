// Commands at random on a text: selections stay inside of it, pairs of surrogates that were whole
// stay whole, and no command adds more than its marks.

#include "Core/Markdown/Editing/MarkdownCommandTextView.h"
#include "Core/Markdown/Editing/MarkdownInlinePreviewRanges.h"
#include "Core/Markdown/Editing/NumberedListContinuation.h"
#include "Platform/Text/Unicode.h"
#include "fuzz/Fuzzing.h"

namespace {

using namespace nomely;
using fuzz::require;

// Every text in it is well-formed, so a lone surrogate is a pair that was split.
bool isWellFormed(std::u16string_view text) {
  const auto isIn = [](char16_t unit, char16_t first) {
    return unit >= first && unit < first + 0x400;
  };
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (isIn(text[at], 0xDC00)) return false;
    if (!isIn(text[at], 0xD800)) continue;
    if (++at == text.size() || !isIn(text[at], 0xDC00)) return false;
  }
  return true;
}

class TextView final : public EditableTextView {
 public:
  explicit TextView(std::u16string text) : text_(std::move(text)) {}

  [[nodiscard]] std::u16string text() const override { return text_; }
  [[nodiscard]] TextSelection selectedRange() const override { return selection_; }
  void setSelectedRange(TextSelection selection) override {
    require(selection.location <= text_.size());
    require(selection.length <= text_.size() - selection.location);
    selection_ = selection;
  }
  [[nodiscard]] bool shouldChangeText(TextRange range, std::u16string_view with) override {
    require(range.begin <= range.end && range.end <= text_.size());
    return with.size() < 100'000;
  }
  void replaceText(TextRange range, std::u16string_view replacement) override {
    text_.replace(range.begin, range.length(), replacement);
    require(isWellFormed(text_));
  }
  void didChangeText() override {}
  void endUndoGroup() override {}

  void selectAnything(TextSelection selection) { selection_ = selection; }

 private:
  std::u16string text_;
  TextSelection selection_;
};

std::size_t position(fuzz::Bytes& bytes, std::size_t length) {
  const std::uint32_t kind = bytes.below(16);
  if (kind == 0) return TextSelection::notFound;
  if (kind == 1) return TextSelection::notFound - bytes.below(16);
  return bytes.below(static_cast<std::uint32_t>(length) + 3);
}

MarkdownEditCommand command(fuzz::Bytes& bytes) {
  using namespace MarkdownEdit;
  switch (bytes.below(12)) {
    case 0:
      return Heading{static_cast<std::int64_t>(bytes.below(12)) - 2};
    case 1:
      return InsertBlock{u"😀\n"};
    case 2:
      return FontSize{bytes.below(1000) / 7.0};
    case 3:
      return Bold{};
    case 4:
      return Italic{};
    case 5:
      return InlineCode{};
    case 6:
      return Link{};
    case 7:
      return Quote{};
    case 8:
      return Checklist{};
    case 9:
      return UnorderedList{};
    case 10:
      return OrderedList{};
    default:
      return CodeBlock{};
  }
}

void step(fuzz::Bytes& bytes, MarkdownCommandTextView& commands) {
  switch (bytes.below(8)) {
    case 0:
      (void)commands.insertNewline();
      break;
    case 1:
      commands.insertTab();
      break;
    case 2:
      commands.insertBacktab();
      break;
    case 3:
      commands.insertSnippet(u"𝟗. ");
      break;
    default:
      commands.apply(command(bytes));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t commandBytes = 32;
  const std::size_t split = std::min(size, commandBytes);
  fuzz::Bytes bytes(data, split);
  // Conversion makes whole pairs of what is well-formed and drops the rest.
  const std::u16string start = toUtf16(fuzz::textOf(data + split, size - split));
  TextView view(start);
  MarkdownCommandTextView commands(view);
  for (int steps = 0; steps < 6; ++steps) {
    const std::size_t length = view.text().size();
    view.selectAnything({position(bytes, length), position(bytes, length)});
    step(bytes, commands);
  }
  const std::u16string text = view.text();
  for (const auto& range : MarkdownInlinePreviewRanges::ranges(text))
    require(range.range.begin < range.range.end && range.range.end <= text.size());
  const auto numbered = PlainAutoNumbering().handleAutoNumbering(start, text);
  if (numbered) require(isWellFormed(*numbered));
  return 0;
}
