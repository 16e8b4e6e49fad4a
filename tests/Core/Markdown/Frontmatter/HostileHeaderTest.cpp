#include <random>

#include <fmt/format.h>
#include <sys/resource.h>

#include "Core/Storage/MemoStore.h"
#include "Support/ErrorKind.h"
#include "Support/ManualClock.h"
#include "Support/Proportion.h"
#include "Support/RandomFrontmatter.h"
#include "Support/RandomText.h"
#include "Support/RoundTrip.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestPaths.h"

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

constexpr const char* fixtureNames[] = {"usual", "flow",        "scalars", "comments", "anchors",
                                        "merge", "transcripts", "crlf",    "legacy",   "nulls"};

// Each fixture, cut off or with a byte changed. A test each, so that they run side by side.
class DamagedMemoTest : public testing::TestWithParam<const char*> {
 protected:
  std::string content =
      readFile(fs::path(TestPaths::fixtures) / "memos" / (std::string(GetParam()) + ".md"));
  std::map<Reading, int> counts;

  // Returns whether `damaged` is read as it must be.
  bool isHandled(const std::string& damaged) {
    const Reading reading = readingOf(damaged);
    ++counts[reading];
    // A list shows a row for it, whatever it is.
    if (reading == Reading::badText) {
      static const ManualClock clock;
      return MemoStore::parseMemoFile(damaged, 7, clock).seqNumber == 7;
    }
    return reading != Reading::changed;
  }

  void report() {
    fmt::print("{}: {} kept, {} refused, {} no text\n", GetParam(), counts[Reading::kept],
               counts[Reading::refused], counts[Reading::badText]);
    EXPECT_GT(counts[Reading::kept], 0);
    EXPECT_GT(counts[Reading::refused], 0);
  }
};

TEST_P(DamagedMemoTest, CutAnywhere) {
  ASSERT_EQ(readingOf(content), Reading::kept);
  for (std::size_t length = 0; length < content.size(); ++length)
    ASSERT_TRUE(isHandled(content.substr(0, length))) << "cut at " << length;
  report();
}

// What means something to YAML in every place, the other bytes in some.
TEST_P(DamagedMemoTest, AByteChanged) {
  using namespace std::string_view_literals;
  constexpr auto telling = "\0\t\n\r !\"#%&'*,-.0:<>?@[\\]`anx{|}~\x7F\x85\xC2\xEF\xFF"sv;
  for (std::size_t at = 0; at < content.size(); ++at) {
    std::string damaged = content;
    for (std::size_t value = 0; value < 256; ++value) {
      const char byte = static_cast<char>(value);
      if (byte == content[at] || (telling.find(byte) == telling.npos && (value + at) % 8 != 0))
        continue;
      damaged[at] = byte;
      ASSERT_TRUE(isHandled(damaged)) << "byte " << at << " is " << value;
    }
  }
  report();
}

INSTANTIATE_TEST_SUITE_P(Fixtures, DamagedMemoTest, testing::ValuesIn(fixtureNames),
                         [](const auto& name) { return std::string(name.param); });

// `piece` over and over; "{0}" in it is a number that counts up.
std::string numbered(std::string_view piece, std::size_t size) {
  std::string text;
  for (std::size_t count = 0; text.size() < size; ++count)
    text += piece.find("{0}") == piece.npos && piece.find("{{") == piece.npos
                ? std::string(piece)
                : fmt::format(fmt::runtime(piece), count);
  return text;
}

// Each level holds the one before nine times.
std::string laughs(std::string_view open, std::string_view close, std::string_view join) {
  std::string text = fmt::format("l0: &l0 {}x: 1{}\n", open, close);
  for (int level = 1; level < 12; ++level) {
    text += fmt::format("l{}: &l{} {}", level, level, open);
    for (int i = 0; i < 9; ++i) text += fmt::format("{}*l{}", i == 0 ? "" : join, level - 1);
    text += fmt::format("{}\n", close);
  }
  return text;
}

std::string mergedLaughs() {
  std::string text = "l0: &l0 {x: 1}\n";
  for (int level = 1; level < 40; ++level)
    text += fmt::format("l{0}: &l{0} {{<<: [*l{1}, *l{1}]}}\n", level, level - 1);
  return text + "<<: *l39\n";
}

// What stands between the marks comes over and over.
constexpr std::string_view refusedHeaders =
    "«[»¦tags: «[»¦«{{»¦«{{a: »¦«- »¦«- [»¦«? »¦«: »¦«a: &a »¦«]»¦«\"»¦time: \"«a\n »¦"
    "«--- a\n»¦«%TAG !t{0}! tag:x,2000:\n»--- {a: b}¦a: b\n...\n«%TAG !t{0}! tag:x,2000:\n»¦"
    "«%TAG !t{0}! tag:x,2000:\r»--- {a: b}¦«\t»¦«&a »¦«!a »¦«k»: v¦a: *«k»¦mood: «1»¦"
    "mood: 1«:1»";
constexpr std::string_view readHeaders =
    "mood: 0«0»¦mood: 1«_»¦time: \"«\\u0000»\"¦time: \"«\\\n»\"¦time: \"«\n»\"¦time: \"« »\"¦"
    "time: '«''»'¦time: «a »¦time: «a\n »¦time: |\n«  a\n»¦time: >\n«  a\n»¦time: |\n«\n»¦"
    "«#\n»time: a¦«k{0}: v\n»¦«a: &a\n»¦«k{0}: &a{0} v\n»¦a: &a v\n«k{0}: *a\n»¦"
    "a: &a {x: 1}\n«<<: *a\n»¦tags: [«a,»]¦a: [«a: b,»]¦a: {«a,»}¦a: [«[],»]¦tags:\n«- a\n»¦"
    "tags:\n«-\n»¦original_names:\n«  k{0}: v\n»¦"
    "audio_transcripts: {a: {text: t, segments: [«{{text: a, start: 0, duration: 1}},»]}}¦"
    "time: !<«%41»> b";

void expectRefused(const std::string& header) {
  const auto read = [&] { (void)MemoFrontmatterParser::parse("---\n" + header + "\n---\nbody\n"); };
  EXPECT_EQ(kindOf<ParseError>(read), ParseError::Kind::yamlDecode);
}

long peakMegabytes() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

TEST(HostileHeaderTest, TakesTimeAndMemoryInProportion) {
  constexpr std::size_t size = 1U << 15U;
  constexpr long mostMegabytes = 500;
  constexpr std::string_view open = "«";
  constexpr std::string_view close = "»";
  const long before = peakMegabytes();
  const auto expectHandled = [&](const std::string& header, bool isRead) {
    SCOPED_TRACE(header.substr(header.size() - std::min<std::size_t>(header.size(), 100)));
    const std::size_t begin = header.find(open);
    const std::size_t end = header.find(close);
    const std::string piece = header.substr(begin + open.size(), end - begin - open.size());
    expectProportional(size, [&](std::size_t amount) {
      const std::string whole =
          header.substr(0, begin) + numbered(piece, amount) + header.substr(end + close.size());
      if (!isRead) return expectRefused(whole);
      EXPECT_EQ(readingOf("---\n" + whole + "\n---\nbody\n"), Reading::kept);
    });
    EXPECT_LT(peakMegabytes() - before, mostMegabytes);
  };
  for (const std::string& header : piecesOf(refusedHeaders)) expectHandled(header, false);
  for (const std::string& header : piecesOf(readHeaders)) expectHandled(header, true);
  expectHandled("a: «" + std::string(1, '\0') + "»", false);
  expectHandled("a: &a " + std::string(2000, 'x') + "\ntags: [«*a,»]", false);
  expectHandled("a: &a {" + numbered("k{0}: 1,", 50000) + "}\nb: {<<: [«*a,»]}", false);
}

// What would take hours, or all memory.
TEST(HostileHeaderTest, WhatWouldGrowWithoutBoundsIsRefused) {
  for (const std::string& header :
       {laughs("[", "]", ","), laughs("[", "]", ",") + "tags: *l11\n",
        laughs("[{", "}]", "}, {a: "), mergedLaughs(), std::string("a: &a [*a]\n"),
        std::string("a: &a {<<: *a}\n"), std::string("&r\ntags: *r\n"),
        "a: " + std::string(1000, '[') + std::string(1000, ']')}) {
    SCOPED_TRACE(header.substr(header.rfind('\n', header.size() - 2) + 1));
    expectRefused(header);
  }
}

}  // namespace
}  // namespace nomely::test
