#include <gmock/gmock.h>

#include "Core/Models/Memo.h"
#include "Support/ManualClock.h"

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

TEST(MemoTest, Empty) {
  const Memo memo = Memo::empty(7, ManualClock("2026-03-01 09:05:59"));
  Memo expected;
  expected.seqNumber = 7;
  expected.time = "09:05";
  EXPECT_EQ(memo, expected);
  EXPECT_NE(memo.id, Memo::empty(7, ManualClock()).id);
  EXPECT_THAT(Memo::makeMemoId(), testing::MatchesRegex("memo_[0-9a-f]{32}"));
}

TEST(MemoTest, TagsThatExcludeFromTheTimeline) {
  const struct {
    const char* tag;
    bool expected;
  } cases[] = {
      {"_notes_import", true}, {"_notes_import/x", false}, {"备忘录", true},
      {"备忘录/工作", true},   {"备忘录/", true},          {"备忘录工作", false},
      {"个人专栏/a/b", true},  {"得到大脑", true},         {"工作/备忘录", false},
      {" 备忘录", false},      {"_other", false},          {"", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.tag);
    Memo memo;
    memo.tags = {"生活", c.tag};
    EXPECT_EQ(memo.isExcludedFromTimeline(), c.expected);
  }
  EXPECT_FALSE(Memo().isExcludedFromTimeline());
}

TEST(AudioTranscriptTest, Emptiness) {
  const struct {
    const char* name;
    AudioTranscript transcript;
    bool expected;
  } cases[] = {
      {"nothing", {}, true},
      {"words without segments", transcript("话", 0), true},
      {"segments without words", transcript(" \n\u3000\u2028", 2), true},
      {"both", transcript(" 话\n", 1), false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.transcript.isEmpty(), c.expected);
  }
  EXPECT_EQ(transcript("a", 0), transcript("a", 0));
  EXPECT_NE(transcript("a", 1), transcript("a", 1));
}

}  // namespace
}  // namespace nomely::test
