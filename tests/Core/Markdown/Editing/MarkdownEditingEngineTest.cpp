#include "Core/Markdown/Editing/ListMarkers.h"
#include "Core/Markdown/Editing/MarkdownEditingEngine.h"
#include "Core/Markdown/Editing/MarkdownInlinePreviewRanges.h"
#include "Core/Markdown/Editing/NumberedListContinuation.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

using namespace MarkdownEdit;
namespace Engine = MarkdownEditingEngine;

// A text with its selection between "‹" and "›".
struct Marked {
  std::u16string text;
  TextSelection selection;
};
Marked unmarked(const std::string& utf8) {
  std::u16string text = toUtf16(utf8);
  const std::size_t begin = text.find(u'‹');
  text.erase(begin, 1);
  const std::size_t end = text.find(u'›');
  text.erase(end, 1);
  return {text, {begin, end - begin}};
}
std::string marked(const MarkdownEditResult& result) {
  std::u16string text = result.text;
  const auto [location, length] = result.selectedRange;
  text.insert(location + length, 1, u'›');
  text.insert(location, 1, u'‹');
  return toUtf8(text);
}

TEST(MarkdownEditingEngineTest, Commands) {
  const std::tuple<const char*, MarkdownEditCommand, std::string, std::string> cases[] = {
      {"bold of nothing", Bold{}, "‹›", "**‹加粗文字›**"},
      {"bold", Bold{}, "a‹字›b", "a**‹字›**b"},
      {"marks in the selection", Bold{}, "‹**字**›", "‹字›"},
      {"marks around the selection", Bold{}, "a**‹字›**", "a‹字›"},
      {"marks around the caret", Bold{}, "x **a‹›字** y", "x ‹a字› y"},
      {"caret at the content's ends", Bold{}, "**字‹›**", "‹字›"},
      {"caret nearer to the line than a mark", Bold{}, "*‹›*字**", "***‹加粗文字›***字**"},
      {"marks of another line", Bold{}, "**a\nb‹›\nc**", "**a\nb**‹加粗文字›**\nc**"},
      {"marks with nothing between", Bold{}, "**‹›**", "****‹加粗文字›****"},
      {"nothing but marks", Bold{}, "‹****›", "‹›"},
      {"too short for two marks", Bold{}, "‹***›", "**‹***›**"},
      {"italic nests", Italic{}, "‹*a*›", "*‹*a*›*"},
      {"code", InlineCode{}, "‹›", "`‹代码›`"},
      {"link", Link{}, "‹abc›d", "[abc](‹url›)d"},
      {"link of nothing", Link{}, "‹›", "[链接文字](‹url›)"},
      {"code block", CodeBlock{}, "a‹b›", "a\n```\n‹b›\n```\n"},
      {"font size", FontSize{17.5}, "‹›", "<span style=\"font-size:18px\">‹大字›</span>"},
      {"heading", Heading{2}, "a\n  ###b‹›\nc", "a\n‹## b\n›c"},
      {"too deep and too flat", Heading{9}, "‹a›", "‹###### a›"},
      {"the other end", Heading{-3}, "‹####### a›", "‹# # a›"},
      {"four blanks are no heading's", Heading{1}, "‹›    # a", "‹#     # a›"},
      {"quotes once", Quote{}, "‹a\n> b\n\n>c›", "‹> a\n> b\n> \n> >c›"},
      {"checklist", Checklist{}, "‹- a\n- [x] b\n- [X] c\n- [ ] d›",
       "‹- [ ] - a\n- [x] b\n- [X] c\n- [ ] d›"},
      {"bullets", UnorderedList{}, "‹a\n- b\n* c›", "‹- a\n- b\n- * c›"},
      {"numbers", OrderedList{}, "x\n‹3. a\nb\n12.c\n›y", "x\n‹1. a\n2. b\n3. c\n›y"},
      {"numbers of other scripts", OrderedList{}, "‹٣. a\n𝟗.b›", "‹1. a\n2. b›"},
      {"an empty last line", UnorderedList{}, "a\n‹›", "a\n‹- ›"},
      {"up to a line feed", Quote{}, "‹a\n›b", "‹> a\n›b"},
      {"from inside the lines", Quote{}, "a‹b\nc›d\n", "‹> ab\n> cd\n›"},
      {"block at the start", InsertBlock{u"b"}, "‹x›a", "b‹›a"},
      {"block on a new line", InsertBlock{u"b"}, "a‹›", "a\nb‹›"},
      {"block after a line feed", InsertBlock{u"b"}, "a\n‹›c", "a\nb‹›c"},
  };
  for (const auto& [name, command, before, after] : cases) {
    SCOPED_TRACE(name);
    const auto [text, selection] = unmarked(before);
    EXPECT_EQ(marked(Engine::apply(command, text, selection)), after);
  }
  for (const double size : {1e19, -1e19, std::nan("")})
    EXPECT_THROW((void)Engine::apply(FontSize{size}, u"", {}), std::invalid_argument);
}

TEST(MarkdownEditingEngineTest, SelectionsOutsideAndInsideOfCharacters) {
  constexpr std::size_t huge = std::numeric_limits<std::size_t>::max();
  const std::tuple<const char*, TextSelection, std::string> cases[] = {
      {"nowhere", {TextSelection::notFound, 3}, "a😀b*‹斜体文字›*"},
      {"past the end", {9, huge}, "a😀b*‹斜体文字›*"},
      {"beyond the end", {3, huge}, "a😀*‹b›*"},
      {"caret in a pair", {2, 0}, "a*‹斜体文字›*😀b"},
      {"from a pair's middle", {2, 2}, "a*‹😀b›*"},
      {"to a pair's middle", {0, 2}, "*‹a😀›*b"},
  };
  for (const auto& [name, selection, after] : cases)
    EXPECT_EQ(marked(Engine::apply(Italic{}, u"a😀b", selection)), after) << name;
}

TEST(MarkdownEditingEngineTest, Newlines) {
  const struct {
    const char* name;
    std::string before;
    std::string after;  // empty: the text view's own
  } cases[] = {
      {"task", "- [x] done‹›", "- [x] done\n- [ ] ‹›"},
      {"bullet with indent", "a\n\t* b‹›c\nd", "a\n\t* b\n\t* ‹›c\nd"},
      {"number", " 9. x‹›", " 9. x\n 10. ‹›"},
      {"the last number", "99. x‹›", "99. x\n100. ‹›"},
      {"a year", "2026. x‹›", ""},
      {"zero", "0. x‹›", ""},
      {"beyond 64 bits", "99999999999999999999. x‹›", ""},
      {"empty bullet", "a\n  - ‹›\nb", "a\n‹›\nb"},
      {"empty task, caret before it", "‹›- [X]", "‹›"},
      {"empty number", "12. ‹›", "‹›"},
      {"text after the caret alone", "- ‹›a", ""},
      {"no item", "a‹›", ""},
      {"a selection", "- a‹b›", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const auto [text, selection] = unmarked(c.before);
    const auto result = Engine::applyNewline(text, selection);
    EXPECT_EQ(result ? marked(*result) : "", c.after);
  }
}

TEST(MarkdownEditingEngineTest, Indentation) {
  const auto [text, selection] = unmarked("‹      a\n\tb\n   c\n d›");
  EXPECT_EQ(marked(Engine::indentSelection(text, selection, Engine::Indentation::outdent)),
            "‹  a\nb\n c\n d›");
  EXPECT_EQ(marked(Engine::indentSelection(u"a\n\nb", {0, 3}, Engine::Indentation::indent)),
            "‹    a\n    \n›b");
}

// ListMarkers reads by hand what these expressions say.
TEST(MarkdownEditingEngineTest, MarkersAreThoseOfTheExpressions) {
  const RegularExpression heading(R"(^\s{0,3}#{1,6}\s*)");
  const RegularExpression number(R"(^\d+\.)");
  const RegularExpression empty[] = {RegularExpression(R"(^\s*[-*]\s*$)"),
                                     RegularExpression(R"(^\s*- \[( |x|X)\]\s*$)"),
                                     RegularExpression(R"(^\s*\d+\.\s*$)")};
  const RegularExpression task(R"(^(\s*)- \[( |x|X)\]\s+(.+)$)");
  const RegularExpression bullet(R"(^(\s*)([-*])\s+(.+)$)");
  const RegularExpression numbered(R"(^(\s*)(\d+)\.\s+(.+)$)");
  int met[3] = {};
  constexpr std::string_view pieces = " ¦ ¦-¦*¦- [ ]¦- [x]¦#¦1¦42¦.¦a¦\u3000¦٣¦𝟗¦\u2028¦\r¦\t";
  onRandomTexts(pieces, 9, 30'000, [&](const std::string& text) {
    const std::u16string line = toUtf16(text);
    const auto lengthOf = [&](const RegularExpression& expression) {
      const auto match = expression.firstMatch(line);
      return match ? match->whole().end : 0;
    };
    ASSERT_EQ(ListMarkers::headingLength(line), lengthOf(heading));
    const auto read = ListMarkers::number(line);
    ASSERT_EQ(read ? read->length : 0, lengthOf(number));
    const bool isEmpty = std::ranges::any_of(
        empty, [&](const RegularExpression& each) { return each.matchesIn(line); });
    ASSERT_EQ(ListMarkers::isEmptyItem(line), isEmpty);

    std::optional<std::u16string> expected;
    const auto group = [&](const RegularExpression::Match& match, std::size_t index) {
      return line.substr(match.groups[index]->begin, match.groups[index]->length());
    };
    if (const auto match = task.firstMatch(line)) {
      expected = group(*match, 1) + u"- [ ] ";
    } else if (const auto point = bullet.firstMatch(line)) {
      expected = group(*point, 1) + group(*point, 2) + u" ";
    } else if (const auto item = numbered.firstMatch(line)) {
      const std::string digits = toUtf8(group(*item, 2));
      if (digits.find_first_not_of("0123456789") == std::string::npos && std::stoll(digits) > 0 &&
          std::stoll(digits) < 100)
        expected = group(*item, 1) + toUtf16(std::to_string(std::stoll(digits) + 1)) + u". ";
    }
    ASSERT_EQ(ListMarkers::continuation(line), expected);
    met[0] += expected ? 1 : 0;
    met[1] += isEmpty ? 1 : 0;
    met[2] += read ? 1 : 0;
  });
  for (const int count : met) EXPECT_GT(count, 250);
}

TEST(NumberedListContinuationTest, WhileAListIsTyped) {
  const struct {
    const char* name;
    std::u16string before;
    std::u16string after;
    std::u16string expected;  // what the input then holds
    int next;
  } cases[] = {
      {"next number", u"1. a", u"1. a\n", u"1. a\n2. ", 2},
      {"later line", u"x\n9.a", u"x\n9.a\n", u"x\n9.a\n10. ", 10},
      {"end of the list", u"1. a\n2. ", u"1. a\n2. \n", u"1. a\n2. ", 1},
      {"blanks are no text", u"2. \u3000", u"2. \u3000\n", u"2. \u3000", 1},
      {"100 is no item", u"100. a", u"100. a\n", u"100. a\n", 1},
      {"no list", u"a", u"a\n", u"a\n", 1},
      {"typing in an item", u"4. ", u"4. a", u"4. a", 5},
      {"taking away", u"4. a\n\n", u"4. a\n", u"4. a\n", 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    PlainAutoNumbering numbering;
    const auto changed = numbering.handleAutoNumbering(c.before, c.after);
    EXPECT_EQ(toUtf8(changed.value_or(c.after)), toUtf8(c.expected));
    EXPECT_EQ(numbering.nextNumber(), c.next);
  }
  EXPECT_FALSE(NumberedListContinuation::continuation(u"1. a"));
}

TEST(MarkdownInlinePreviewRangesTest, AreThoseOfTheExpression) {
  const RegularExpression bold(R"(\*\*([\s\S]+?)\*\*)");
  onRandomTexts("*¦*¦*¦a¦\n¦😀", 14, 10'000, [&](const std::string& utf8) {
    const std::u16string text = toUtf16(utf8);
    std::vector<MarkdownInlinePreviewRange> expected;
    using enum MarkdownInlinePreviewRange::Kind;
    for (const auto& match : bold.matches(text)) {
      const TextRange content = *match.groups[1];
      expected.push_back({hiddenMarker, {match.whole().begin, content.begin}});
      expected.push_back({boldContent, content});
      expected.push_back({hiddenMarker, {content.end, match.whole().end}});
    }
    ASSERT_EQ(MarkdownInlinePreviewRanges::ranges(text), expected);
  });
  const auto isInside = [](std::size_t at) {
    return MarkdownInlinePreviewRanges::isInsideBold(u"a**bc**", at);
  };
  EXPECT_TRUE(isInside(3) && isInside(5));
  EXPECT_FALSE(isInside(2) || isInside(6) || isInside(8) || isInside(TextSelection::notFound));
}

}  // namespace
}  // namespace nomely::test
