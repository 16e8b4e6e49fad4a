#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Core/Markdown/Editing/MarkdownCommandTextView.h"
#include "Platform/Text/Unicode.h"

namespace nomely::test {
namespace {

using namespace MarkdownEdit;

// A text view that, as toolkits do, undoes changes together until their group ends.
class MemoryTextView final : public EditableTextView {
 public:
  [[nodiscard]] std::u16string text() const override { return text_; }
  [[nodiscard]] TextSelection selectedRange() const override { return selection_; }
  void setSelectedRange(TextSelection selection) override { selection_ = selection; }
  [[nodiscard]] bool shouldChangeText(TextRange range, std::u16string_view /*with*/) override {
    EXPECT_LE(range.end, text_.size());
    return allowsChanges;
  }
  void replaceText(TextRange range, std::u16string_view replacement) override {
    if (!isGroupOpen_) undoStack_.push_back(text_);
    isGroupOpen_ = true;
    text_.replace(range.begin, range.length(), replacement);
  }
  void didChangeText() override { ++announced; }
  void endUndoGroup() override { isGroupOpen_ = false; }

  void type(std::u16string_view typed) {
    replaceText({selection_.location, selection_.location + selection_.length}, typed);
    selection_ = {selection_.location + typed.size(), 0};
  }
  void undo() {
    text_ = undoStack_.back();
    undoStack_.pop_back();
    isGroupOpen_ = false;
  }

  bool allowsChanges = true;
  int announced = 0;

 private:
  std::u16string text_;
  TextSelection selection_;
  std::vector<std::u16string> undoStack_;
  bool isGroupOpen_ = false;
};

TEST(MarkdownCommandTextViewTest, OneCommandIsOneUndoStep) {
  MemoryTextView view;
  MarkdownCommandTextView commands(view);
  view.type(u"- a");
  EXPECT_TRUE(commands.insertNewline());
  view.type(u"b");
  commands.insertTab();
  commands.apply(Bold{});
  EXPECT_EQ(toUtf8(view.text()), "- a\n**    - b**");
  EXPECT_EQ(view.announced, 3);
  for (const std::u16string_view expected :
       {u"- a\n    - b", u"- a\n- b", u"- a\n- ", u"- a", u""}) {
    view.undo();
    EXPECT_EQ(toUtf8(view.text()), toUtf8(expected));
  }
}

TEST(MarkdownCommandTextViewTest, ChangesThatAreNotAllowed) {
  MemoryTextView view;
  MarkdownCommandTextView commands(view);
  view.type(u"- a");
  view.allowsChanges = false;
  EXPECT_TRUE(commands.insertNewline());
  commands.insertBacktab();
  commands.insertSnippet(u"x");
  EXPECT_EQ(view.text(), u"- a");
  EXPECT_EQ(view.announced, 0);
}

TEST(MarkdownCommandTextViewTest, Keys) {
  const struct {
    const char* name;
    KeyPress key;
    const char* expected;  // of a selected "a"; empty: not handled
  } cases[] = {
      {"heading 1", {.primary = true, .option = true, .characters = u"1"}, "# a"},
      {"heading 3", {.primary = true, .option = true, .characters = u"3"}, "### a"},
      {"numbers", {.primary = true, .option = true, .characters = u"7"}, "1. a"},
      {"bullets", {.primary = true, .option = true, .characters = u"8"}, "- a"},
      {"bold", {.primary = true, .characters = u"B"}, "**a**"},
      {"italic", {.primary = true, .characters = u"i"}, "*a*"},
      {"link", {.primary = true, .characters = u"k"}, "[a](url)"},
      {"code", {.primary = true, .characters = u"`"}, "`a`"},
      {"heading without option", {.primary = true, .characters = u"1"}, ""},
      {"bold with option", {.primary = true, .option = true, .characters = u"b"}, ""},
      {"one more modifier", {.primary = true, .otherModifier = true, .characters = u"b"}, ""},
      {"typed", {.characters = u"b"}, ""},
      {"another level", {.primary = true, .option = true, .characters = u"4"}, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    MemoryTextView view;
    view.type(u"a");
    view.setSelectedRange({0, 1});
    const std::string expected = c.expected;
    EXPECT_EQ(MarkdownCommandTextView(view).handleKey(c.key), !expected.empty());
    EXPECT_EQ(toUtf8(view.text()), expected.empty() ? "a" : expected);
  }
}

TEST(MarkdownCommandTextViewTest, Snippets) {
  const std::tuple<TextSelection, const char*, std::size_t> cases[] = {
      {{1, 2}, "axd", 2},
      {{4, 0}, "abcdx", 5},
      {{3, 2}, "abcdx", 5},
      {{5, 0}, "abcdx", 5},
      {{TextSelection::notFound, 0}, "abcdx", 5},
  };
  for (const auto& [selection, expected, caret] : cases) {
    MemoryTextView view;
    view.type(u"abcd");
    view.setSelectedRange(selection);
    MarkdownCommandTextView(view).insertSnippet(u"x");
    EXPECT_EQ(toUtf8(view.text()), expected);
    EXPECT_EQ(view.selectedRange(), (TextSelection{caret, 0}));
    EXPECT_EQ(view.announced, 1);
  }
}

}  // namespace
}  // namespace nomely::test
