#include "Core/Markdown/Text/WordDiff.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

std::string drawn(std::string_view before, std::string_view after) {
  std::string text;
  for (const auto& [kind, part] : wordDiff(before, after))
    text += kind == WordChange::Kind::same      ? std::string(part)
            : kind == WordChange::Kind::removed ? "[-" + std::string(part) + "]"
                                                : "[+" + std::string(part) + "]";
  return text;
}

TEST(WordDiff, ShowsWholeWordsAndWholeSentences) {
  for (const auto& [before, after, expected] :
       rowsOf<3>("¦¦¦same¦same¦same¦¦新¦[+新]¦五公里¦六公里¦[-五][+六]公里¦"
                 "Nomely keeps notes¦Nomely kept notes¦Nomely [-keeps][+kept] notes¦"
                 "👩‍💻写¦👨‍💻写¦[-👩‍💻][+👨‍💻]写¦"
                 "今天的风很大。明天再说¦昨夜的雨不小。明天再说¦[-今天的风很大][+昨夜的雨不小]"
                 "。明天再说"))
    EXPECT_EQ(drawn(before, after), expected) << before;
}

TEST(WordDiff, LeadsFromOneTextToTheOther) {
  std::string before;
  onRandomTexts("我¦的¦ab¦ ¦\n¦，¦👩‍💻¦é¦\x80", 60, 2000,
                [&](const std::string& after) {
                  std::string old;
                  std::string now;
                  for (const auto& [kind, part] : wordDiff(before, after)) {
                    if (kind != WordChange::Kind::added) old += part;
                    if (kind != WordChange::Kind::removed) now += part;
                  }
                  EXPECT_EQ(old, before);
                  EXPECT_EQ(now, after);
                  before = after;
                });
}

}  // namespace
}  // namespace nomely::test
