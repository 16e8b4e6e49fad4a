#include <array>
#include <random>

#include <gtest/gtest.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "Platform/Text/FoldedText.h"
#include "Platform/Text/Unicode.h"

namespace nomely::test {
namespace {

constexpr auto common = CaseRules::common;
constexpr auto turkic = CaseRules::turkic;

// The occurrence as it stands in the text.
std::optional<std::string> found(std::string_view text, std::string_view query, CaseRules rules) {
  const auto range = TextNeedle(query, rules).firstIn(text);
  if (!range) return std::nullopt;
  return std::string(text.substr(range->begin, range->end - range->begin));
}

TEST(FoldedTextTest, FindsTextInText) {
  const struct {
    const char* text;
    const char* query;
    std::optional<std::string> expected;
    CaseRules rules = common;
  } cases[] = {
      {"a@[`{z", "A@[`{Z", "a@[`{z"},
      {"x\x01y", "!", {}},
      {"Caf\u00E9!", "cafe\u0301", "Caf\u00E9"},
      {"a\u0323\u0302b", "\u1EAD", "a\u0323\u0302"},
      {"aß", "s", "ß"},
      {"çİb", "i\u0307B", "İb"},
      {"I\u0307stanbul", "istanbul", "I\u0307stanbul", turkic},
      {"好👨‍👩‍👧吗", "👩", "👨‍👩‍👧"},
      {"\U0001F1E8\U0001F1F3", "\U0001F1E8", "\U0001F1E8\U0001F1F3"},
      {"0123456789abcdefXYZ", "FXyz", "fXYZ"},
      {"0123456789abcdef0123456789ABCDEZ", "EZ", "EZ"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.text) + " / " + c.query);
    EXPECT_EQ(found(c.text, c.query, c.rules), c.expected);
    EXPECT_EQ(TextNeedle(c.query, c.rules).isIn(c.text), c.expected.has_value());
  }
}

TEST(FoldedTextTest, RulesFollowTheLanguage) {
  for (const char* name : {"tr_TR.UTF-8", "az", "tr@euro", "az-Latn"})
    EXPECT_EQ(caseRulesOf(name), turkic) << name;
  for (const char* name : {"", "C.UTF-8", "zh_CN.UTF-8", "tru", "POSIX"})
    EXPECT_EQ(caseRulesOf(name), common) << name;
}

// The same by the library's own whole-text operations.
std::string plainlyFolded(std::string_view text, CaseRules rules) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2& nfc = *icu::Normalizer2::getNFCInstance(status);
  icu::UnicodeString folded = nfc.normalize(
      icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())}), status);
  folded.foldCase(rules == turkic ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT);
  std::string out;
  nfc.normalize(folded, status).toUTF8String(out);
  return out;
}

TEST(FoldedTextTest, FoldsEachCharacterLikeTheLibrary) {
  for (const CaseRules rules : {common, turkic})
    for (char32_t c = 1; c < 0x30000; ++c) {
      if (U_IS_SURROGATE(c)) continue;
      std::string text = "A";
      appendUtf8(text, c);
      text += "好";
      ASSERT_EQ(foldedText(text, rules), plainlyFolded(text, rules)) << std::hex << uint32_t(c);
    }
}

std::string randomText(std::mt19937& random, std::size_t longest) {
  static const std::array<const char*, 26> parts{
      "a", "A", "i",      "I",  "İ",      "ı",      "s",      "ß",      "e",
      "é", "É", "\u0301", "k",  "\u212A", "\u0323", "\u0345", "\u3099", "\u1161",
      "α", "ᾳ", "か",     "天", "\u0307", "👍",      " ",      "\xFF"};
  std::string text;
  for (auto length = random() % (longest + 1); length > 0; --length)
    text += parts[random() % parts.size()];
  return text;
}

TEST(FoldedTextTest, FindsWhatAPlainScanFinds) {
  std::mt19937 random(7);
  int hits = 0;
  for (int i = 0; i < 30'000; ++i) {
    const CaseRules rules = i % 2 == 0 ? common : turkic;
    const std::string text = randomText(random, 40);
    const std::string query = randomText(random, 3);
    SCOPED_TRACE(text + " / " + query);
    const std::string folded = plainlyFolded(text, rules);
    const std::string needle = plainlyFolded(query, rules);
    ASSERT_EQ(foldedText(text, rules), folded);
    const bool expected = !needle.empty() && folded.find(needle) != std::string::npos;
    const auto range = TextNeedle(query, rules).firstIn(text);
    ASSERT_EQ(TextNeedle(query, rules).isIn(text), expected);
    ASSERT_EQ(range.has_value(), expected);
    if (!range) continue;
    ++hits;
    // The range holds the needle, and is whole clusters.
    const std::string_view match =
        std::string_view(text).substr(range->begin, range->end - range->begin);
    ASSERT_NE(plainlyFolded(match, rules).find(needle), std::string::npos);
    ASSERT_EQ(graphemesBefore(text, range->begin, 0), range->begin);
    ASSERT_EQ(graphemesAfter(text, range->end, 0), range->end);
  }
  EXPECT_GT(hits, 2'500);
}

}  // namespace
}  // namespace nomely::test
