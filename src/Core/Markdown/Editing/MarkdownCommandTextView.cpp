#include "Core/Markdown/Editing/MarkdownCommandTextView.h"

#include <optional>

#include "Platform/Text/Ascii.h"

namespace nomely {
namespace {

struct Binding {
  bool option;
  char16_t key;
  MarkdownEditCommand command;
};

const Binding* bindingOf(const KeyPress& key) {
  using namespace MarkdownEdit;
  static const Binding bindings[] = {
      {true, u'1', Heading{1}},    {true, u'2', Heading{2}},      {true, u'3', Heading{3}},
      {true, u'7', OrderedList{}}, {true, u'8', UnorderedList{}}, {false, u'b', Bold{}},
      {false, u'i', Italic{}},     {false, u'k', Link{}},         {false, u'`', InlineCode{}},
  };
  if (!key.primary || key.otherModifier || key.characters.size() != 1) return nullptr;
  const char16_t lowered = loweredAscii(key.characters.front());
  for (const Binding& binding : bindings)
    if (binding.option == key.option && binding.key == lowered) return &binding;
  return nullptr;
}

}  // namespace

bool MarkdownCommandTextView::takes(const KeyPress& key) {
  return bindingOf(key) != nullptr;
}

bool MarkdownCommandTextView::handleKey(const KeyPress& key) {
  const Binding* const binding = bindingOf(key);
  if (binding == nullptr) return false;
  apply(binding->command);
  return true;
}

bool MarkdownCommandTextView::insertNewline() {
  const auto result = MarkdownEditingEngine::applyNewline(view_.text(), view_.selectedRange());
  if (result) apply(*result);
  return result.has_value();
}

void MarkdownCommandTextView::insertTab() {
  indent(MarkdownEditingEngine::Indentation::indent);
}

void MarkdownCommandTextView::insertBacktab() {
  indent(MarkdownEditingEngine::Indentation::outdent);
}

void MarkdownCommandTextView::indent(MarkdownEditingEngine::Indentation indentation) {
  apply(MarkdownEditingEngine::indentSelection(view_.text(), view_.selectedRange(), indentation));
}

void MarkdownCommandTextView::apply(const MarkdownEditCommand& command) {
  apply(MarkdownEditingEngine::apply(command, view_.text(), view_.selectedRange()));
}

void MarkdownCommandTextView::apply(const MarkdownEditResult& result) {
  view_.endUndoGroup();
  const TextRange whole{0, view_.text().size()};
  if (!view_.shouldChangeText(whole, result.text)) return;
  view_.replaceText(whole, result.text);
  view_.setSelectedRange(result.selectedRange);
  view_.didChangeText();
  view_.endUndoGroup();
}

void MarkdownCommandTextView::insertSnippet(std::u16string_view snippet) {
  const std::u16string text = view_.text();
  TextSelection selection = view_.selectedRange();
  const bool isInside =
      selection.location <= text.size() && selection.length <= text.size() - selection.location;
  if (!isInside) selection = {text.size(), 0};
  const TextRange range = normalized(selection, text);
  if (!view_.shouldChangeText(range, snippet)) return;
  view_.replaceText(range, snippet);
  view_.setSelectedRange({range.begin + snippet.size(), 0});
  view_.didChangeText();
}

}  // namespace nomely
