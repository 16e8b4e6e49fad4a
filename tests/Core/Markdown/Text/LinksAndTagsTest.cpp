#include "Core/Markdown/Text/LinkDetector.h"
#include "Core/Markdown/Text/TagParser.h"
#include "Support/Proportion.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

// With blanks between.
std::string urlsIn(std::string_view text) {
  std::string urls;
  for (const DetectedLink& link : LinkDetector::computeLinks(text))
    urls += (urls.empty() ? "" : " ") + link.url;
  return urls;
}

TEST(LinkDetectorTest, LinksWithScheme) {
  const std::pair<std::string, std::string> cases[] = {
      {"https://example.com", "https://example.com"},
      {"HTTP://Example.COM/A", "HTTP://Example.COM/A"},
      {"ftp://a.com file:///a.com mailto:a@b.com xhttp://a.com tel:1", ""},
      {"http:// http://. https:///a http://?q http://[] http://-a.com/", ""},
      {"http://u:p@a.com:8080/b/?c=d&e=%20#f", "http://u:p@a.com:8080/b/?c=d&e=%20#f"},
      {"http://localhost:80/ http://1.2.3.4 http://my_pc/a http://[::1]:8/a",
       "http://localhost:80/ http://1.2.3.4 http://my_pc/a http://[::1]:8/a"},
      {"http://a.com:x http://b.com:123456 http://c.com: d",
       "http://a.com http://b.com http://c.com"},
      {"看https://a.com/b看看，https://c.com。http://d.cn吧",
       "https://a.com/b https://c.com http://d.cn"},
      {"（https://a.com/）《http://b.com/c》“http://d.com?e”",
       "https://a.com/ http://b.com/c http://d.com?e"},
      {"https://zh.a.org/wiki/北京?q=天气#2024-年", "https://zh.a.org/wiki/北京?q=天气#2024-年"},
      {"https://例子.中国/路径 http://münchen.de看 http://xn--fsqu00a.com",
       "https://例子.中国/路径 http://münchen.de http://xn--fsqu00a.com"},
      {"http://a.com. http://b.com/c?! http://d.com/e... **http://f.com**, 'http://g.com'",
       "http://a.com http://b.com/c http://d.com/e http://f.com http://g.com"},
      {"[a](http://a.com/b) <http://c.com> `http://d.com` |http://e.com| \"http://f.com\"",
       "http://a.com/b http://c.com http://d.com http://e.com http://f.com"},
      {"(http://a.org/b_(c)_d) [http://e.org/f[1]] http://g.org/(h",
       "http://a.org/b_(c)_d http://e.org/f[1] http://g.org/(h"},
      {"http://a.org/(b]c", "http://a.org/(b"},
      {"http://a.org/http://b.org/ http://c.org?u=http://d.org",
       "http://a.org/http://b.org/ http://c.org?u=http://d.org"},
      {"http://readme.md https://a.zip", "http://readme.md https://a.zip"},
      {"http://a.com http://b.com http://a.com", "http://a.com http://b.com"},
      {"http://a.com\nhttp://b.com😀http://c.com\u2028d", "http://a.com http://b.com http://c.com"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(urlsIn(text), expected) << text;
}

TEST(LinkDetectorTest, BareHostNames) {
  const std::pair<std::string, std::string> cases[] = {
      {"example.com a.co.uk/b?c#d WWW.E.COM",
       "http://example.com http://a.co.uk/b?c#d http://WWW.E.COM"},
      {"上baidu.com查，www.a.cn/b。网址:c.com:80/d好",
       "http://baidu.com http://www.a.cn/b http://c.com:80/d"},
      {"Ämünchen.de é.com", "http://Ämünchen.de http://é.com"},
      {"(a.com) a.org. ...b.com... _c.com d.com-",
       "http://a.com http://a.org http://b.com http://d.com"},
      {"a.b 3.14 1.2.3.4 e.g. localhost com a.invalidname U.S.", ""},
      {"a..com -.com a-.com " + std::string(64, 'a') + ".com", ""},
      {"me@a.com me.too@b.com a.com@b.com x+y.com@z.com mailto:c@d.com", ""},
      {"/a.com dir/b.com \\c.com #d.com e_f.com http//g.com ftp://h.com/i.com", ""},
      {"readme.md a.py b.rs c.SH d.zip e.mov f.pl g.ps md.md:12 x.y.md", ""},
      {"www.a.md readme.md/b c.sh:80/d", "http://www.a.md http://readme.md/b http://c.sh:80/d"},
      {"a.com http://a.com", "http://a.com"},
  };
  for (const auto& [text, expected] : cases) EXPECT_EQ(urlsIn(text), expected) << text;
}

TEST(LinkDetectorTest, PositionsAndTitles) {
  const auto links = LinkDetector::computeLinks("😀看 a.com/b/%E6%97%A5.html é。http://例.中国");
  EXPECT_THAT(
      links,
      ElementsAreArray(
          {DetectedLink{"http://a.com/b/%E6%97%A5.html", "日", "a.com/b/%E6%97%A5.html", 4, 22},
           DetectedLink{"http://例.中国", "例.中国", "http://例.中国", 29, 11}}));
  for (const auto& [url, title] :
       rowsOf<2>("https://a.com¦a.com¦https://a.com/¦a.com¦https://u:p@a.com:80?q=/x.y¦a.com¦"
                 "http://[::1]/¦[::1]¦https://a.com/b/c.tar.gz#d/e¦c.tar¦https://a.com/b/¦b¦"
                 "https://a.com/v1.2/?c¦v1.2¦https://a.com/b%20c%2Fd¦b c/d¦https://a.com/%¦%¦"
                 "https://a.com/%zz%20¦%zz%20¦https://a.com/%FF¦%FF¦http://¦http://"))
    EXPECT_EQ(LinkDetector::title(url), title);
}

TEST(LinkDetectorTest, HostileTextsTakeNoLongerThanOthers) {
  for (const std::string& piece : piecesOf(
           "a.¦.¦http://¦http:¦http://a.¦http://a/(¦http://a/!¦a.com/[¦http://[a:¦http://a:b@¦é.¦"
           "x@a.com.¦a.com¦a.com:¦-.¦http://日¦a.md:")) {
    SCOPED_TRACE(piece);
    expectProportional(100'000, [&](std::size_t size) {
      (void)LinkDetector::computeLinks(filledWith(piece, size));
    });
  }
}

TEST(LinkResultCacheTest, KeepsTheLinksOfABody) {
  const std::string text = "上 only-in-this-test.com";
  const auto links = LinkDetector::links(text);
  EXPECT_EQ(*links, LinkDetector::computeLinks(text));
  EXPECT_EQ(LinkDetector::links(text), links) << "the same object";
  EXPECT_EQ(LinkResultCache::shared().get(text), links);
}

using Tags = std::vector<std::string>;

// Rules of which the expressions below know nothing, and what people write.
TEST(TagParserTest, TagsOfTexts) {
  for (const auto& [text, expected] :
       {std::pair("#a b #c\n#d\u3000#e 天#气", Tags{"a", "c", "d", "e"}),
        {"#b #a #b", {"b", "a"}},
        {"`#a` <b #b> ```\n#c\n``` color: #ff0000 ` #d", {"d"}},
        {"#😀好 #\uFE0F\u20E3", {"😀好", "\uFE0F\u20E3"}},
        {"#这是一个很长的标题行文字\n#八个字的标题行吧", {"八个字的标题行吧"}},
        {"#👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽",
         {"👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽👍🏽"}}})
    EXPECT_THAT(TagParser::tags(text), ElementsAreArray(expected)) << text;
}

TEST(TagParserTest, PositionsAndRanges) {
  using Matches = std::vector<TagParser::Match>;
  const std::string text = "😀 #a\n#好b";
  // The code is five characters of six units.
  EXPECT_EQ(TagParser::matches("`a😀b` #c"), (Matches{{"c", {5, 8}, {7, 8}}}));
  for (const auto& [range, expected] :
       {std::pair(TextRange{6, 100}, Matches{{"好b", {6, 9}, {7, 9}}}),
        {{5, 9}, {{"好b", {5, 9}, {7, 9}}}},
        {{0, 8}, {{"a", {2, 5}, {4, 5}}, {"好", {5, 8}, {7, 8}}}},
        {{50, 100}, {}},
        {{6, 2}, {}}})
    EXPECT_EQ(TagParser::matches(text, range), expected);
}

TEST(TagParserTest, TextsWithoutTheirTags) {
  for (const auto& [text, expected] :
       rowsOf<2>("\u3000a b\n¦a b¦#a #b\n#c¦¦早 #a 晚\n#b。¦早 晚。¦x\n#这是一个很长的标题行文字¦x¦"
                 "x #a=1 `#b` # c¦x #a=1 `#b` # c¦<b>#a</b> x¦<b</b> x¦`😀` #tag x¦`😀g x¦"
                 "`a😀`#a¦`a😀`#a"))
    EXPECT_EQ(TagParser::removingInlineTags(text), expected);
}

// The expressions with nothing before them and one character at a time.
std::u16string plainlyMasked(const std::u16string& text) {
  std::vector<bool> blanked(text.size());
  const std::vector<std::size_t> ends = graphemeEnds(text);
  const auto isBoundary = [&](std::size_t at) {
    return at == 0 || std::ranges::find(ends, at) != ends.end();
  };
  static const RegularExpression masks[] = {
      RegularExpression("<[^>]*>"), RegularExpression(R"(color:\s*#[0-9A-Fa-f]{6})"),
      RegularExpression("(?s)```.*?```"), RegularExpression(R"(`[^`\n]*`)")};
  for (const RegularExpression& mask : masks)
    for (const auto& match : mask.matches(text))
      for (std::size_t at = match.whole().begin; at < match.whole().end; ++at)
        if (isBoundary(match.whole().begin) && isBoundary(match.whole().end)) blanked[at] = true;
  std::u16string masked;
  for (std::size_t i = 0, begin = 0; i < ends.size(); begin = ends[i++]) {
    const std::u16string character = text.substr(begin, ends[i] - begin);
    masked += !blanked[begin] || character == u"\n" || character == u"\r" ? character : u" ";
  }
  return masked;
}

std::vector<TagParser::Match> plainMatches(const std::string& text) {
  std::vector<TagParser::Match> found;
  const std::u16string masked = plainlyMasked(toUtf16(text));
  static const RegularExpression tag(R"((?:^|\s)#([^\s#@!?.，。！？、<>]+))");
  static const RegularExpression refused(R"(^/|/$|//|["'=])");
  static const RegularExpression blankStart(R"((?:^|[\n-\r\x85\u2028\u2029])[\t\p{Zs}]*$)");
  static const RegularExpression blankEnd(R"(^[\t\p{Zs}]*(?:[\n-\r\x85\u2028\u2029]|$))");
  for (const auto& hit : tag.matches(masked)) {
    const TextRange range = *hit.groups[1];
    const std::u16string name = masked.substr(range.begin, range.length());
    const bool isHeading = graphemeCount(toUtf8(name)) >= 9 && name.find(u'/') == name.npos &&
                           blankStart.matchesIn(masked.substr(0, range.begin - 1)) &&
                           blankEnd.matchesIn(masked.substr(range.end));
    if (!refused.matchesIn(name) && !isHeading) found.push_back({toUtf8(name), hit.whole(), range});
  }
  return found;
}

TEST(TagParserTest, EveryShortcutGivesWhatTheExpressionsGive) {
  std::size_t found = 0;
  onRandomTexts(
      "#¦#¦#¦#¦ ¦ ¦\n¦\r\n¦\r¦\t¦\u3000¦`¦`¦```¦```¦<¦>¦<b>¦color:¦#ff0000¦color: #0aF09c¦a¦日¦"
      "/¦=¦'¦。¦，¦.¦!¦-¦1¦😀¦e\u0301¦\u0301¦\u200D¦\u2028¦\u0085¦\v¦一二三四五六七八九¦"
      "abcdefgh",
      16, 10'000, [&](const std::string& text) {
        const auto expected = plainMatches(text);
        ASSERT_EQ(TagParser::matches(text), expected);
        ASSERT_EQ(TagParser::maskedForTagParsing(text), toUtf8(plainlyMasked(toUtf16(text))));
        found += expected.size();
      });
  EXPECT_GT(found, 1000);
}

}  // namespace
}  // namespace nomely::test
