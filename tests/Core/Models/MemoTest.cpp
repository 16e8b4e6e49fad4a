#include "Core/Models/Memo.h"
#include "Support/ManualClock.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

AudioTranscript transcript(std::string text, std::size_t segments) {
  return {.text = std::move(text), .segments = std::vector<AudioTranscriptSegment>(segments)};
}

TEST(MemoTest, TwoReadingsOfSegmentsDifferButAreStoredAlike) {
  Memo memo = Memo::empty(1, ManualClock());
  memo.audioTranscripts["2.m4a"] = transcript("", 1);
  Memo other = memo;
  other.id = Uuid::random();
  EXPECT_EQ(memo, other);
  EXPECT_EQ(std::hash<Memo>()(memo), std::hash<Memo>()(other));
  other.audioTranscripts["2.m4a"] = transcript("", 1);
  EXPECT_NE(memo, other);
  EXPECT_TRUE(isStoredAs(memo, other));
  other.audioTranscripts["2.m4a"].segments[0].start = 1;
  EXPECT_FALSE(isStoredAs(memo, other));
}

TEST(MemoTest, TagsThatExcludeFromTheTimeline) {
  for (const auto& [tag, excludes] :
       rowsOf<2>("_notes_import¦yes¦_notes_import/x¦no¦备忘录¦yes¦备忘录/工作¦yes¦备忘录工作¦no¦"
                 "个人专栏/a/b¦yes¦得到大脑¦yes¦工作/备忘录¦no¦ 备忘录¦no¦¦no")) {
    Memo memo;
    memo.tags = {"生活", tag};
    EXPECT_EQ(memo.isExcludedFromTimeline(), excludes == "yes") << tag;
  }
}

TEST(AudioTranscriptTest, EmptyWithoutWordsOrSegments) {
  EXPECT_TRUE(transcript("话", 0).isEmpty() && transcript(" \n\u3000\u2028", 2).isEmpty());
  EXPECT_FALSE(transcript(" 话\n", 1).isEmpty());
}

}  // namespace
}  // namespace nomely::test
