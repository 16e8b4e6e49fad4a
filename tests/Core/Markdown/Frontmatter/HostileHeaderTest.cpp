#include <ctime>
#include <filesystem>
#include <functional>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "Core/Storage/MemoStore.h"
#include "Support/ManualClock.h"
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

TEST_P(DamagedMemoTest, AnyByteChanged) {
  for (std::size_t at = 0; at < content.size(); ++at) {
    std::string damaged = content;
    for (int value = 0; value < 256; ++value) {
      if (static_cast<char>(value) == content[at]) continue;
      damaged[at] = static_cast<char>(value);
      ASSERT_TRUE(isHandled(damaged)) << "byte " << at << " is " << value;
    }
  }
  report();
}

INSTANTIATE_TEST_SUITE_P(Fixtures, DamagedMemoTest, testing::ValuesIn(fixtureNames),
                         [](const auto& name) { return std::string(name.param); });

constexpr std::size_t megabyte = 1U << 20U;

// `piece` over and over; "{0}" in it is a number that counts up.
std::string repeated(std::string_view piece, std::size_t size = megabyte) {
  std::string text;
  for (std::size_t count = 0; text.size() < size; ++count)
    text += piece.find("{0}") == std::string_view::npos ? std::string(piece)
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

struct Hostile {
  const char* name;
  Outcome outcome;
  std::string header;
};

std::vector<Hostile> hostileHeaders() {
  using enum Outcome;
  const auto in = [](std::string_view before, std::string_view piece, std::string_view behind) {
    return std::string(before) + repeated(piece) + std::string(behind);
  };
  return {
      {"nothing", refused, ""},
      {"a comment alone", refused, "# a\n"},
      {"a second document", refused, "time: a\n--- {mood: 1}\n"},
      {"laughs in an unknown key", refused, laughs("[", "]", ",")},
      {"laughs in tags", refused, laughs("[", "]", ",") + "tags: *l11\n"},
      {"laughs of maps", refused, laughs("[{", "}]", "}, {a: ")},
      {"laughs of merges", refused, mergedLaughs()},
      {"an alias into itself", refused, "a: &a [*a]\n"},
      {"a merge into itself", refused, "a: &a {<<: *a}\n"},
      {"a root in itself", refused, "&r\ntags: *r\n"},
      {"big text, many aliases", refused,
       "a: &a " + repeated("x", 2000) + "\n" + in("tags: [", "*a,", "]")},
      {"big map, many merges", refused,
       "a: &a {" + repeated("k{0}: 1,", 50000) + "}\n" + in("b: {<<: [", "*a,", "]}")},
      {"[", refused, repeated("[")},
      {"[ in a key", refused, in("tags: ", "[", "")},
      {"{", refused, repeated("{")},
      {"{a: ", refused, repeated("{a: ")},
      {"- ", refused, repeated("- ")},
      {"- - and [", refused, repeated("- [")},
      {"? ", refused, repeated("? ")},
      {": ", refused, repeated(": ")},
      {"a: &a", refused, repeated("a: &a ")},
      {"]", refused, repeated("]")},
      {"quotes", refused, repeated("\"")},
      {"an open quote", refused, in("time: \"", "a\n ", "")},
      {"documents", refused, repeated("--- a\n")},
      {"tag directives", refused, in("", "%TAG !t{0}! tag:x,2000:\n", "--- {a: b}")},
      {"tag directives at the end", refused, in("a: b\n...\n", "%TAG !t{0}! tag:x,2000:\n", "")},
      {"tag directives behind other breaks", refused,
       in("", "%TAG !t{0}! tag:x,2000:\r", "--- {a: b}")},
      {"NUL bytes", refused, "a: " + std::string(megabyte, '\0')},
      {"tabs", refused, repeated("\t")},
      {"anchors on nothing", refused, repeated("&a ")},
      {"tags on nothing", refused, repeated("!a ")},
      {"a long key", refused, in("", "k", ": v")},
      {"a long alias", refused, in("a: *", "k", "")},
      {"a long number", refused, in("mood: ", "1", "")},
      {"groups of sixty", refused, in("mood: 1", ":1", "")},
      {"a number of zeros", read, in("mood: 0", "0", "")},
      {"underscores", read, in("mood: 1", "_", "")},
      {"escapes", read, in("time: \"", "\\u0000", "\"")},
      {"escaped breaks", read, in("time: \"", "\\\n", "\"")},
      {"blank lines in quotes", read, in("time: \"", "\n", "\"")},
      {"blanks in quotes", read, in("time: \"", " ", "\"")},
      {"quoted quotes", read, in("time: '", "''", "'")},
      {"words", read, in("time: ", "a ", "")},
      {"lines", read, in("time: ", "a\n ", "")},
      {"literal lines", read, in("time: |\n", "  a\n", "")},
      {"folded lines", read, in("time: >\n", "  a\n", "")},
      {"blank literal lines", read, in("time: |\n", "\n", "")},
      {"comments", read, in("", "#\n", "time: a")},
      {"keys", read, repeated("k{0}: v\n")},
      {"unknown keys of one name", read, repeated("a: &a\n")},
      {"anchors", read, repeated("k{0}: &a{0} v\n")},
      {"aliases", read, in("a: &a v\n", "k{0}: *a\n", "")},
      {"merges", read, in("a: &a {x: 1}\n", "<<: *a\n", "")},
      {"flow items", read, in("tags: [", "a,", "]")},
      {"flow pairs", read, in("a: [", "a: b,", "]")},
      {"flow maps", read, in("a: {", "a,", "}")},
      {"empty lists", read, in("a: [", "[],", "]")},
      {"block items", read, in("tags:\n", "- a\n", "")},
      {"empty items", read, in("tags:\n", "-\n", "")},
      {"names", read, in("original_names:\n", "  k{0}: v\n", "")},
      {"segments", read,
       in("audio_transcripts: {a: {text: t, segments: [", "{text: a, start: 0, duration: 1},",
          "]}}")},
      {"a tag's escapes", read, in("time: !<", "%41", "> b")},
  };
}

long peakMegabytes() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

// Headers, most of a megabyte, that would take a careless reader hours or all memory.
TEST(HostileHeaderTest, TakesTimeAndMemoryInProportion) {
  // Ten times what the slowest takes under the sanitizers; what is quadratic takes minutes.
  constexpr double mostSeconds = 10;
  constexpr long mostMegabytes = 1500;
  const long before = peakMegabytes();
  for (const Hostile& hostile : hostileHeaders()) {
    SCOPED_TRACE(hostile.name);
    const std::clock_t start = std::clock();
    const std::string content = "---\n" + hostile.header + "\n---\nbody\n";
    if (hostile.outcome == Outcome::read) {
      EXPECT_EQ(readingOf(content), Reading::kept);
    } else {
      try {
        (void)MemoFrontmatterParser::parse(content);
        ADD_FAILURE() << "was read";
      } catch (const ParseError& error) {
        EXPECT_EQ(error.kind(), ParseError::Kind::yamlDecode);
      }
    }
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    EXPECT_LT(seconds, mostSeconds);
    EXPECT_LT(peakMegabytes() - before, mostMegabytes);
  }
}

}  // namespace
}  // namespace nomely::test
