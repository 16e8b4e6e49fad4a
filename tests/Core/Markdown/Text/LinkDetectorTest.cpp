#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Core/Markdown/Text/LinkDetector.h"
#include "Support/Proportion.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

using testing::ElementsAreArray;

// With blanks between.
std::string urlsIn(std::string_view text) {
  std::string urls;
  for (const DetectedLink& link : LinkDetector::computeLinks(text))
    urls += (urls.empty() ? "" : " ") + link.url;
  return urls;
}

TEST(LinkDetectorTest, LinksWithScheme) {
  const struct {
    std::string text;
    std::string expected;
  } cases[] = {
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
  for (const auto& c : cases) EXPECT_EQ(urlsIn(c.text), c.expected) << c.text;
}

TEST(LinkDetectorTest, BareHostNames) {
  const struct {
    std::string text;
    std::string expected;
  } cases[] = {
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
  for (const auto& c : cases) EXPECT_EQ(urlsIn(c.text), c.expected) << c.text;
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

}  // namespace
}  // namespace nomely::test
