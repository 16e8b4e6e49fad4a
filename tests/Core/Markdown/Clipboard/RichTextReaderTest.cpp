#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Core/Markdown/Clipboard/RichTextReader.h"

namespace nomely::test {
namespace {

TEST(RichTextReaderTest, PlainTexts) {
  const std::string fonts =
      R"({\fonttbl{\f0\fswiss Sans;}{\f1\fnil\fcharset134 Song;}{\f2\fcharset204 Sans;}})";
  const struct {
    std::string rtf;
    std::string expected;
  } cases[] = {
      {"{\\rtf1\\ansi" + fonts + "\\f0 a\\par\r\nb\\line c\\tab d}\0\0", "a\nb\nc\td"},
      {R"({\rtf1 \{\\\}\~x\_y\-z\emdash\ldblquote q\rdblquote})", "{\\}\u00A0x\u2011yz—“q”"},
      {R"({\rtf1\ansi\ansicpg936 \'c4\'e3\'ba\'c3 a\'b0\'a1})", "你好 a啊"},
      {R"({\rtf1\ansicpg936 \'81A\'81@})", "丄丂"},
      {"{\\rtf1\\ansi" + fonts + R"(\'e9{\f1\'c4\'e3}\f2\'e9\plain\'e9})", "é你йé"},
      {R"({\rtf1 \u20320?\uc2\u22909\'ba\'c3{\uc0\u-10179\u-8704}x})", "你好😀x"},
      {R"({\rtf1\uc3 \u20320?{a}\u20320{b}c})", "你a你bc"},
      {R"({\rtf1 \u8212\emdash\u8212 -.})", "——."},
      {R"({\rtf1 a\u-10179?b})", "a\uFFFDb"},
      {"{\\rtf1{\\colortbl;\\red0;}{\\stylesheet{\\s0 Normal;}}{\\info{\\title t}}"
       "{\\*\\generator g;}{\\pict\\pngblip 89504e}a{\\field{\\*\\fldinst HYPERLINK \"u\"}"
       "{\\fldrslt b}}}",
       "ab"},
      {"{\\rtf1 a{\\pict\\bin3 }}}}b}", "ab"},
      {R"({\rtf1\ansicpg99999999999999999999\u99999999 a\uc-5 b})", "ab"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.rtf);
    EXPECT_EQ(RichTextReader::plainText(c.rtf), c.expected);
  }
}

TEST(RichTextReaderTest, DamagedTexts) {
  const std::string whole = R"({\rtf1\ansi{\fonttbl{\f0 A;}}\f0 a\'e9\u20320?{\b b}\par})";
  ASSERT_TRUE(RichTextReader::plainText(whole));
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_FALSE(RichTextReader::plainText(whole.substr(0, length))) << length;
  for (const char* rtf : {"", "plain", "<p>", " {\\rtf1 a}", "{\\rtf1 \\'g0}", "{\\rtf1 \\bin9 a}",
                          "{\\rtf1 \\bin-1 a}"})
    EXPECT_FALSE(RichTextReader::plainText(rtf)) << rtf;
  EXPECT_FALSE(RichTextReader::plainText("{\\rtf1" + std::string(100'000, '{') +
                                         std::string(100'000, '}') + "}"));
}

}  // namespace
}  // namespace nomely::test
