#include <filesystem>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "Core/Storage/MemoStore.h"
#include "Support/ManualClock.h"
#include "Support/Proportion.h"
#include "Support/RoundTrip.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestPaths.h"

namespace nomely::test {
namespace {

constexpr const char* fixtureNames[] = {"usual", "flow",        "scalars", "comments", "anchors",
                                        "merge", "transcripts", "crlf",    "legacy",   "nulls"};

// Each fixture, cut off or with a byte changed. A test each, so that they run side by side.
class DamagedMemoTest : public testing::TestWithParam<const char*> {
 protected:
  std::string content = readFile(std::filesystem::path(TestPaths::fixtures) / "memos" /
                                 (std::string(GetParam()) + ".md"));
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
std::string repeated(std::string_view piece, std::size_t size) {
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

enum class Outcome { refused, read };

// `piece` over and over between two others.
struct Hostile {
  Outcome outcome;
  std::string before;
  std::string_view piece;
  std::string_view after;
};

std::vector<Hostile> hostileHeaders() {
  using enum Outcome;
  return {
      {refused, "a: &a " + repeated("x", 2000) + "\ntags: [", "*a,", "]"},
      {refused, "a: &a {" + repeated("k{0}: 1,", 50000) + "}\nb: {<<: [", "*a,", "]}"},
      {refused, "", "[", ""},
      {refused, "tags: ", "[", ""},
      {refused, "", "{{", ""},
      {refused, "", "{{a: ", ""},
      {refused, "", "- ", ""},
      {refused, "", "- [", ""},
      {refused, "", "? ", ""},
      {refused, "", ": ", ""},
      {refused, "", "a: &a ", ""},
      {refused, "", "]", ""},
      {refused, "", "\"", ""},
      {refused, "time: \"", "a\n ", ""},
      {refused, "", "--- a\n", ""},
      {refused, "", "%TAG !t{0}! tag:x,2000:\n", "--- {a: b}"},
      {refused, "a: b\n...\n", "%TAG !t{0}! tag:x,2000:\n", ""},
      {refused, "", "%TAG !t{0}! tag:x,2000:\r", "--- {a: b}"},
      {refused, "a: ", std::string_view("\0", 1), ""},
      {refused, "", "\t", ""},
      {refused, "", "&a ", ""},
      {refused, "", "!a ", ""},
      {refused, "", "k", ": v"},
      {refused, "a: *", "k", ""},
      {refused, "mood: ", "1", ""},
      {refused, "mood: 1", ":1", ""},
      {read, "mood: 0", "0", ""},
      {read, "mood: 1", "_", ""},
      {read, "time: \"", "\\u0000", "\""},
      {read, "time: \"", "\\\n", "\""},
      {read, "time: \"", "\n", "\""},
      {read, "time: \"", " ", "\""},
      {read, "time: '", "''", "'"},
      {read, "time: ", "a ", ""},
      {read, "time: ", "a\n ", ""},
      {read, "time: |\n", "  a\n", ""},
      {read, "time: >\n", "  a\n", ""},
      {read, "time: |\n", "\n", ""},
      {read, "", "#\n", "time: a"},
      {read, "", "k{0}: v\n", ""},
      {read, "", "a: &a\n", ""},
      {read, "", "k{0}: &a{0} v\n", ""},
      {read, "a: &a v\n", "k{0}: *a\n", ""},
      {read, "a: &a {x: 1}\n", "<<: *a\n", ""},
      {read, "tags: [", "a,", "]"},
      {read, "a: [", "a: b,", "]"},
      {read, "a: {", "a,", "}"},
      {read, "a: [", "[],", "]"},
      {read, "tags:\n", "- a\n", ""},
      {read, "tags:\n", "-\n", ""},
      {read, "original_names:\n", "  k{0}: v\n", ""},
      {read, "audio_transcripts: {a: {text: t, segments: [", "{{text: a, start: 0, duration: 1}},",
       "]}}"},
      {read, "time: !<", "%41", "> b"},
  };
}

void expectRefused(const std::string& header) {
  try {
    (void)MemoFrontmatterParser::parse("---\n" + header + "\n---\nbody\n");
    ADD_FAILURE() << "was read";
  } catch (const ParseError& error) {
    EXPECT_EQ(error.kind(), ParseError::Kind::yamlDecode);
  }
}

long peakMegabytes() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

TEST(HostileHeaderTest, TakesTimeAndMemoryInProportion) {
  constexpr std::size_t size = 1U << 16U;
  constexpr long mostMegabytes = 700;
  const long before = peakMegabytes();
  for (const Hostile& hostile : hostileHeaders()) {
    SCOPED_TRACE(hostile.before.substr(0, 50) + std::string(hostile.piece));
    expectProportional(size, [&](std::size_t amount) {
      const std::string header =
          hostile.before + repeated(hostile.piece, amount) + std::string(hostile.after);
      if (hostile.outcome == Outcome::refused) return expectRefused(header);
      EXPECT_EQ(readingOf("---\n" + header + "\n---\nbody\n"), Reading::kept);
    });
    EXPECT_LT(peakMegabytes() - before, mostMegabytes);
  }
}

// What would take hours, or all memory.
TEST(HostileHeaderTest, WhatWouldGrowWithoutBoundsIsRefused) {
  for (const std::string& header :
       {laughs("[", "]", ","), laughs("[", "]", ",") + "tags: *l11\n",
        laughs("[{", "}]", "}, {a: "), mergedLaughs(), std::string("a: &a [*a]\n"),
        std::string("a: &a {<<: *a}\n"), std::string("&r\ntags: *r\n")}) {
    SCOPED_TRACE(header.substr(header.rfind('\n', header.size() - 2) + 1));
    expectRefused(header);
  }
}

}  // namespace
}  // namespace nomely::test
