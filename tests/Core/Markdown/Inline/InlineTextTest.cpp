#include <fmt/format.h>

#include "Core/Markdown/Inline/ColorSpans.h"
#include "Core/Markdown/Inline/InlineMarkdown.h"
#include "Core/Markdown/Inline/InlineText.h"
#include "Core/Markdown/Text/LinkScheme.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

std::string shownColor(const TextColor& color) {
  return fmt::format("{:02X}{:02X}{:02X}", static_cast<int>(color.red * 255),
                     static_cast<int>(color.green * 255), static_cast<int>(color.blue * 255));
}

// Each run that is not plain in braces, with what makes it different first: "a {b:bold}".
std::string shown(const StyledText& styled) {
  std::string all;
  std::size_t begin = 0;
  for (const auto& [length, style] : styled.runs) {
    std::string marks;
    if (style.weight == FontWeight::bold) marks += 'b';
    if (style.slant == FontSlant::italic) marks += 'i';
    if (style.isCode) marks += 'm';
    if (style.isStruck) marks += 's';
    if (style.isHit) marks += '=';
    if (style.pointSize) marks += fmt::format("{}", *style.pointSize);
    if (style.foreground) marks += "#" + shownColor(*style.foreground);
    if (style.link != nullptr) marks += "(" + *style.link + ")";
    const std::string text = styled.text.substr(begin, length);
    all += marks.empty() ? text : "{" + marks + ":" + text + "}";
    begin += length;
  }
  EXPECT_EQ(begin, styled.text.size());
  return all;
}

TEST(EmphasizedRangesTest, WhereALineIsItalic) {
  for (const auto& [line, emphasized] :
       std::vector<std::pair<const char*, const char*>>{{"一 *二* _三_", "*二*|_三_"},
                                                        {"**粗** 2*3*4 a_b_c * 空 *", "*3*"},
                                                        {"`*码*` [*链*](a*b*)", "*链*"},
                                                        {"*外 **里** _里_* 完", "*外 **里** _里_*"},
                                                        {"\\*逃* &amp;*实*", "*实*"},
                                                        {"*无", ""}}) {
    std::string found;
    for (const ByteRange& range : emphasizedRanges(line))
      (found += found.empty() ? "" : "|") += range.of(line);
    EXPECT_EQ(found, emphasized) << line;
  }
}

struct Case {
  const char* name;
  std::string text;
  std::string expected;
};

TEST(InlineTextTest, Marks) {
  const Case cases[] = {
      {"nothing", "", ""},
      {"bold and italic", "a **b** *c* ***d*** __e__ _f_", "a {b:b} {i:c} {bi:d} {b:e} {i:f}"},
      {"at the edges of lines", "_a_\n__b__\n*c*", "{i:a}\n{b:b}\n{i:c}"},
      {"over lines", "**a\nb**", "{b:a\nb}"},
      {"code", "`a *b*` ``c`d``", "{m:a *b*} {m:c`d}"},
      {"code over lines", "`a\nb \n c\r\nd`", "{m:a\nb \n c\r\nd}"},
      {"struck", "~~a~~ 3~5 6~7", "{s:a} 3~5 6~7"},
      {"escapes and references", "\\*a\\* &lt;b&gt; &amp; &x;", "*a* <b> & &x;"},
      {"links", "[a *b*](https://x.org/c \"t\")", "{(https://x.org/c):a }{i(https://x.org/c):b}"},
      {"an image is its description", "![图](a.png)", "图"},
      {"HTML is text", "<b>a</b> <!-- c -->", "<b>a</b> <!-- c -->"},
      {"hard breaks", "a  \nb\\\nc   \n  d", "a\nb\nc\n  d"},
      {"white space stays", "  a   b \n\n\t c \r\n d\re **f** ",
       "  a   b \n\n\t c \r\n d\re {b:f} "},
      {"zero is kept", std::string("*a\0b*", 5), std::string("*a\0b*", 5)},
      {"bare links", "看https://x.org/a_b_c。 y.com/z",
       "看{(https://x.org/a_b_c):https://x.org/a_b_c}。 {(y.com/z):y.com/z}"},
      {"a written link stays one", "[a](https://x.org)", "{(https://x.org):a}"},
      {"with an address for a label", "[https://x.org](https://y.org) [x.org](<https://y.org> 't')",
       "{(https://y.org):https://x.org} {(https://y.org):x.org}"},
      {"in angle brackets", "<https://x.org/a> a", "{(https://x.org/a):https://x.org/a} a"},
      {"beside one that is not", "[x.org] x.org/[a](b)",
       "[{(x.org):x.org}] {(x.org/):x.org/}{(b):a}"},
      {"code holds no links", "`curl https://x.org/a` x.org ``a`x.org``",
       "{m:curl https://x.org/a} {(x.org):x.org} {m:a`x.org}"},
      {"bold against a Chinese mark", "**加粗，**后文 *a*", "{b:加粗，}后文 *a*"},
      {"fallback with nothing between", "a****", "a"},
      {"unclosed bold", "a **b", "a b"},
      {"fallback shows links as they are", "**“a”**b x.com/y", "{b:“a”}b x.com/y"},
      {"empty link before a line feed", "[](x)\n[](x)\n*a*", "\n\n{i:a}"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(shown(MarkdownTextView::markdownAttributed(c.text, {})), c.expected) << c.name;
}

// What would begin a block at the start of a line comes back as it is, and what follows is inline.
TEST(InlineTextTest, NoBlocks) {
  const std::string openings[] = {
      "# ",     "###### ",        "- ",       "+ ",       "* ",   "1. ",      "1) ",
      "> ",     "    ",           "\t",       "---",      "***",  "===",      "~~~",
      "```\n",  "| a |\n|---|\n", "<div>",    "<!-- ",    "<?x ", "[a]: b\n", "[a]:\nb",
      "[^1]: ", "- [ ] ",         "a\n===\n", "a\n---\n", "\n\n", "\r# ",     "\r\r- "};
  for (const std::string& opening : openings)
    for (const std::string before : {"", "x\n", "x\n\n", "x\r"}) {
      SCOPED_TRACE(testing::PrintToString(before + opening));
      EXPECT_EQ(parsedInline(before + opening + "y").text, before + opening + "y");
      const StyledText styled = parsedInline(before + opening + "*y*");
      EXPECT_EQ(styled.text, before + opening + "y");
    }
}

TEST(InlineTextTest, PlainCharactersComeBack) {
  constexpr std::string_view pieces =
      " ¦  ¦\n¦\n¦\r¦\r\n¦\t¦#¦# ¦- ¦+¦1. ¦12)¦> ¦|¦---¦===¦~ ¦!¦]¦(¦)¦:¦\"¦'¦=¦>¦日记¦a¦b。¦"
      "\u3000¦\u2000¦\u2009¦\u00A0¦\u2028¦\u200B¦\uFEFF¦\x01¦\x7F¦😀";
  onRandomTexts(pieces, 14, 10'000, [&](const std::string& text) {
    // A code span makes the parser run and is seen as one.
    const std::string marked = text + "`c`" + text;
    std::string expected = text + "c" + text;
    for (std::size_t at = expected.find("  \n"); at != std::string::npos;
         at = expected.find("  \n"))
      expected.erase(expected.find_last_not_of(' ', at) + 1,
                     at + 2 - (expected.find_last_not_of(' ', at) + 1));
    ASSERT_EQ(parsedInline(marked).text, expected);
  });
}

// Making links of addresses changes no character that is shown, whatever marks surround them.
TEST(InlineTextTest, WrappedAddressesShowAsTheyStood) {
  constexpr std::string_view pieces =
      "`¦`¦``¦\\`¦\\[¦\\]¦[¦[¦![¦]¦](¦](a)¦(<¦>)¦)¦<¦>¦ ¦https://b.org¦\n¦日¦\"¦a.com¦a.com";
  std::size_t wrapped = 0;
  onRandomTexts(pieces, 14, 25'000, [&](const std::string& text) {
    const std::string linked = MarkdownTextView::wrapBareURLsAsMarkdownLinks(text);
    ASSERT_EQ(parsedInline(linked).text, parsedInline(text).text) << linked;
    wrapped += linked == text ? 0 : 1;
  });
  EXPECT_GT(wrapped, 4'000U);
}

TEST(InlineTextTest, Spans) {
  const std::string red = "<span style=\"color: #FF0000\">";
  const std::string big = "<span  style=\"font-size:18px\">";
  const std::string end = "</span>";
  const Case cases[] = {
      {"colour and size", "a" + red + "b **c**" + end + big + "*d*" + end + "e",
       "{#0000FF:a}{#FF0000:b }{b#FF0000:c}{i18#0000FF:d}{#0000FF:e}"},
      {"inside bold", "**a " + red + "b" + end + "**", "{b#0000FF:a }{b#FF0000:b}"},
      {"inside italic", "*a" + red + "b" + end + "c*", "{i#0000FF:a}{i#FF0000:b}{i#0000FF:c}"},
      {"left open", red + "a", "{#0000FF:" + red + "a}"},
      {"a size that is no number", "<span style=\"font-size:９px\">a" + end,
       "{#0000FF:<span style=\"font-size:９px\">a</span>}"},
      {"one inside another", red + "a" + big + "b" + end,
       "{#FF0000:a<span  style=\"font-size:18px\">b}{18#0000FF:b}"},
      {"links keep their own colour", "a.com/b", "{(a.com/b):a.com/b}"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const MarkdownTextView::InlineOptions blue{.defaultColor = TextColor{0, 0, 1, 1}};
    (void)MarkdownTextView::inlineAttributed(c.text, {.defaultColor = TextColor{0, 1, 0, 1}});
    EXPECT_EQ(shown(MarkdownTextView::inlineAttributed(c.text, blue)), c.expected);
    EXPECT_EQ(shown(MarkdownTextView::inlineAttributed(c.text, blue)), c.expected) << "again";
  }
}

TEST(InlineTextTest, HighlightOfEveryOccurrence) {
  const auto marked = [](std::string_view text, std::string_view keyword) {
    return shown(MarkdownTextView::inlineAttributed(text, {.highlightKeyword = keyword}));
  };
  EXPECT_EQ(marked("aBab **xAb** b", " ab\u3000"), "{=:aBab} {b:x}{b=:Ab} b");
  EXPECT_EQ(marked("日记ÀÉ", "àé"), "日记{=:ÀÉ}");
  EXPECT_EQ(marked("日记ÀÉ", " "), "日记ÀÉ");
  EXPECT_EQ(marked("Cafe\u0301 STRASSE 👨‍👩‍👧", "caf\u00E9"),
            "{=:Cafe\u0301} STRASSE 👨‍👩‍👧");
  EXPECT_EQ(marked("STRASSE Straße", "straße"), "{=:STRASSE} {=:Straße}");
  EXPECT_EQ(marked("e 👨‍👩‍👧 e\u0301", "👩"), "e {=:👨‍👩‍👧} e\u0301");
  EXPECT_EQ(marked("e e\u0301", "e"), "{=:e} e\u0301");
}

TEST(InlineTextTest, Preparation) {
  EXPECT_EQ(
      MarkdownTextView::prepared("a @[[memo_1|小 王]]。@[[x]] @[[|y]] @[[z|]] @[[v|w] @[[m|n]]\nb"),
      "a **@小 王**。@[[x]] @[[|y]] @[[z|]] @[[v|w] **@n**\nb");
  EXPECT_EQ(MarkdownTextView::preparedParagraph("@[[a|b]]\nc\n"), "**@b**  \nc  \n");
}

TEST(InlineTextTest, SchemesThatAreNoLinks) {
  const char* const refused[] = {"javascript:alert(1)",   "JaVaScRiPt:x",
                                 " \tjava\nscript\x01:x", "java&#115;cript:x",
                                 "javascript&colon;x",    "java&Tab;script:x",
                                 "&#x6A;avascript&#58x",  "vbscript:x",
                                 "data:text/html,x",      "java\u200Bscript:x",
                                 "\uFEFFjavascript:x",    "javascript\x7F:x",
                                 "javascript\u00A0:x",    "&#106;avascript:x",
                                 "&#X6a;avascript:x",     "java&Tab;script&colon;x",
                                 "feed:javascript:x",     "view-source:data:x",
                                 "javaſcript:x",          "&amp;#106;avascript:x"};
  for (const char* url : refused) {
    SCOPED_TRACE(url);
    EXPECT_FALSE(mayBeLinked(url));
    for (const auto& run : parsedInline(std::string("[a](<") + url + ">)").runs)
      EXPECT_EQ(run.style.link, nullptr);
  }
  for (const char* url :
       {"https://x.org", "mailto:a@b.c", "a/b:c", "obsidian://x", "#javascript:x", "x?javascript:y",
        "javascripts:x", "中文data:x", "javascript", "database:x", "x&amp;y:z", "&#99999999999;:x"})
    EXPECT_TRUE(mayBeLinked(url)) << url;
  EXPECT_FALSE(mayBeLinked(std::string(100'000, ' ') + "javascript:x"));
  EXPECT_EQ(shown(parsedInline("[a](javascript:x) <javascript:y>")), "a javascript:y");
}

using Expression = RegularExpression;

// The matches: where each begins, the whole, its value, its content.
std::vector<Groups> plainSpans(const std::string& text, const Expression& expression) {
  return groupsOf(expression, text, {0, 1, 2});
}

// The same of what the scanner found.
template <typename ValueOf>
std::vector<Groups> shownSpans(const std::string& text, const std::vector<SpanMatch>& spans,
                               ValueOf valueOf) {
  std::vector<Groups> shown;
  for (const SpanMatch& span : spans)
    shown.push_back({std::to_string(toUtf16(text.substr(0, span.range.begin)).size()),
                     std::string(span.range.of(text)), valueOf(span.kind),
                     std::string(span.contentRange.of(text))});
  return shown;
}

const Expression& colorExpression() {
  static const Expression color(
      R"(<span\s+style=\"color:\s*(#[0-9A-Fa-f]{6})\">([\s\S]*?)</span>)");
  return color;
}

std::string plainlyNormalized(const std::string& text, const std::string& marker) {
  static const Expression bold(R"(\*\*([\s\S]+?)\*\*)");
  static const Expression italic(R"((?<!\*)\*([\s\S]+?)\*(?!\*))");
  const std::u16string units = toUtf16(text);
  std::string normalized;
  std::size_t copied = 0;
  for (const auto& match : (marker == "*" ? italic : bold).matches(units)) {
    const std::string content = partOf(units, match.groups[1]);
    if (plainSpans(content, colorExpression()).empty()) continue;
    normalized += toUtf8(units.substr(copied, match.whole().begin - copied));
    normalized += ColorSpans::normalizeColorSpans(content, marker);
    copied = match.whole().end;
  }
  return normalized + toUtf8(units.substr(copied));
}

TEST(ColorSpansTest, FindsWhatTheExpressionsFind) {
  static const Expression size(R"(<span\s+style=\"font-size:\s*([0-9]+)px\">([\s\S]*?)</span>)");
  static const Expression opening(R"(<span\s+style=\"color:\s*#[0-9A-Fa-f]{6}\">)");
  static const Expression mention(R"(@\[\[[^\]|]+\|([^\]]+)\]\])");
  constexpr std::string_view pieces =
      "<span style=\"color: #FF0000\">¦<span style=\"color:#00ff00\">¦</span>¦</span>¦"
      "<span\u3000\nstyle=\"color:\u2003#123456\">¦<span style=\"font-size:18px\">¦"
      "<span style=\"font-size: 7px\">¦<span style=\"color: #12345\">¦<span¦ ¦style=\"¦"
      "font-size:¦12¦px¦\">¦*¦*¦**¦**¦***¦日¦a¦\n¦@[[¦@[[a|¦|¦]¦]]¦b¦😀";
  std::size_t found = 0;
  onRandomTexts(pieces, 12, 20'000, [&](const std::string& text) {
    const auto colors = plainSpans(text, colorExpression());
    ASSERT_EQ(shownSpans(text, ColorSpans::colors(text),
                         [](auto& kind) { return std::get<SpanMatch::Color>(kind).hex; }),
              colors);
    const auto sizes = plainSpans(text, size);
    ASSERT_EQ(shownSpans(text, ColorSpans::sizes(text),
                         [](auto& kind) {
                           return std::to_string(std::get<SpanMatch::FontSize>(kind).px);
                         }),
              sizes);
    ASSERT_EQ(ColorSpans::openingCount(text), opening.matches(toUtf16(text)).size());
    for (const std::string marker : {"**", "*"})
      ASSERT_EQ(ColorSpans::normalizeColorSpansInsideMarkdown(text, marker),
                plainlyNormalized(text, marker));
    ASSERT_EQ(MarkdownTextView::prepared(text),
              toUtf8(mention.replacingMatches(toUtf16(text), u"**@$1**")));
    found += colors.size() + sizes.size();
  });
  EXPECT_GT(found, 2000U);
}

TEST(ColorSpansTest, Normalized) {
  const std::string span = "<span style=\"color:#FF0000\">";
  EXPECT_EQ(ColorSpans::normalizeColorSpans("a " + span + "b</span>" + span + "</span>c", "**"),
            "**a **<span style=\"color: #FF0000\">**b**</span>"
            "<span style=\"color: #FF0000\"></span>**c**");
  EXPECT_EQ(ColorSpans::normalizeColorSpans("a", "*"), "*a*");
  EXPECT_EQ(ColorSpans::normalizeColorSpans("", "*"), "");
}

}  // namespace
}  // namespace nomely::test
