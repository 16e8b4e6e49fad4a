#include <random>

#include <gtest/gtest.h>

#include "Platform/Text/LineDiff.h"

namespace nomely::test {
namespace {

using Lines = std::vector<std::string_view>;

Lines lettersOf(std::string_view text) {
  Lines lines;
  for (std::size_t i = 0; i < text.size(); ++i) lines.push_back(text.substr(i, 1));
  return lines;
}

// A letter a line: "@0,0 a -b +x c".
std::string diffOf(std::string_view before, std::string_view after) {
  std::string text;
  for (const DiffHunk& hunk : lineDiff(lettersOf(before), lettersOf(after))) {
    text += "@" + std::to_string(hunk.firstBefore) + "," + std::to_string(hunk.firstAfter) + " ";
    for (const DiffLine& line : hunk.lines)
      text += std::string(line.kind == DiffLine::Kind::same      ? ""
                          : line.kind == DiffLine::Kind::removed ? "-"
                                                                 : "+") +
              std::string(line.text) + " ";
  }
  return text;
}

TEST(LineDiff, Hunks) {
  const struct {
    const char* before;
    const char* after;
    const char* diff;
  } cases[] = {{"", "", ""},
               {"abc", "abc", ""},
               {"", "ab", "@0,0 +a +b "},
               {"ab", "", "@0,0 -a -b "},
               {"abcabba", "cbabac", "@0,0 -a -b c +b a b -b a +c "},
               {"12345a6789", "12345b6789", "@2,2 3 4 5 -a +b 6 7 8 "},
               {"a123456b", "x123456y", "@0,0 -a +x 1 2 3 4 5 6 -b +y "},
               {"a1234567b", "1234567", "@0,0 -a 1 2 3 @5,4 5 6 7 -b "}};
  for (const auto& test : cases)
    EXPECT_EQ(diffOf(test.before, test.after), test.diff) << test.before;
}

TEST(LineDiff, NeitherTextIsLost) {
  std::mt19937 random(1);
  const auto draw = [&](int length, int letters) {
    std::string text;
    while (length-- > 0) text += static_cast<char>('a' + random() % letters);
    return text;
  };
  for (int i = 0; i < 300; ++i) {
    // The longest pair has nothing in common and is not worth looking for more.
    const std::string before = i == 0 ? std::string(3000, 'a') : draw(i % 40, 3);
    const std::string after = i == 0 ? std::string(3000, 'b') : draw(i % 37, 3);
    const Lines old = lettersOf(before);
    const Lines now = lettersOf(after);
    std::string oldAgain;
    std::string nowAgain;
    for (const DiffHunk& hunk : lineDiff(old, now, before.size() + after.size()))
      for (const DiffLine& line : hunk.lines) {
        if (line.kind != DiffLine::Kind::added) oldAgain += line.text;
        if (line.kind != DiffLine::Kind::removed) nowAgain += line.text;
      }
    if (before == after) continue;
    EXPECT_EQ(oldAgain, before);
    EXPECT_EQ(nowAgain, after);
  }
}

}  // namespace
}  // namespace nomely::test
