#include <random>

#include <gtest/gtest.h>

#include "Support/RandomFrontmatter.h"
#include "Support/RoundTrip.h"

namespace nomely::test {
namespace {

// Numbers that are the same on every run and machine.
class Numbers {
 public:
  std::uint32_t below(std::uint32_t bound) {
    return static_cast<std::uint32_t>(engine_() % std::uint64_t{bound});
  }

 private:
  std::mt19937_64 engine_;
};

TEST(HeaderRoundTripTest, RandomValuesSurviveWriting) {
  Numbers numbers;
  for (int round = 0; round < 10'000; ++round) {
    const MemoFrontmatter memo = drawFrontmatter(numbers);
    const std::string body = drawText(numbers);
    ASSERT_TRUE(survivesWriting(memo, body))
        << "round " << round << "\n"
        << testing::PrintToString(MemoFrontmatterParser::serialize(memo, body));
  }
}

// One string in each of the places where one can stand, so that a failure names the string.
TEST(HeaderRoundTripTest, HardStringsSurviveInEveryPlace) {
  std::vector<std::string> texts{"", std::string(1, '\0'), std::string(300, 'w')};
  const auto manyTimes = [&](std::string_view piece) {
    std::string& text = texts.emplace_back();
    for (int i = 0; i < 100; ++i) text += piece;
  };
  manyTimes("\n%TAG");
  manyTimes("慨%TAG");  // ends in a byte of a line break
  for (const std::string_view first : hardPieces) {
    texts.emplace_back(first);
    manyTimes(first);
    for (const std::string_view second : {"\n", " ", "a", "---", "\n---", "'", "\xC2\x85"}) {
      texts.push_back(std::string(first) + second.data());
      texts.push_back(second.data() + std::string(first));
      texts.push_back("a" + std::string(first) + second.data() + "b");
    }
  }
  for (const std::string& text : texts) {
    MemoFrontmatter memo;
    memo.time = text;
    memo.memoId = text;
    memo.tags = {text, text};
    memo.originalNames = {{text, text}};
    memo.audioTranscripts[text].text = text;
    memo.audioTranscripts[text].segments.emplace_back().text = text;
    EXPECT_TRUE(survivesWriting(memo, text)) << testing::PrintToString(text);
  }
}

}  // namespace
}  // namespace nomely::test
