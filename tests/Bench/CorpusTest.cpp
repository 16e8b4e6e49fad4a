#include <gtest/gtest.h>

#include "Support/TemporaryFolder.h"
#include "bench/Corpus.h"

namespace nomely::bench {
namespace {

using test::TemporaryFolder;
using test::treeOf;

std::uint64_t fingerprint(const CorpusOptions& options) {
  std::uint64_t value = 0xCBF29CE484222325U;  // FNV-1a
  visitCorpus(options, [&](const CorpusMemo& memo) {
    for (const char c : memo.day.string() + memo.frontmatter.time + memo.body)
      value = (value ^ static_cast<unsigned char>(c)) * std::uint64_t{0x100000001B3U};
  });
  return value;
}

TEST(CorpusTest, TheSameOptionsGiveTheSameTreeEverywhere) {
  const TemporaryFolder first;
  const TemporaryFolder again;
  const TemporaryFolder other;
  (void)writeCorpus({.memos = 60, .mediaBytes = 100'000}, first.path());
  (void)writeCorpus({.memos = 60, .mediaBytes = 100'000}, again.path() / "new" / "folder");
  (void)writeCorpus({.memos = 60, .seed = 2, .mediaBytes = 100'000}, other.path());
  EXPECT_EQ(treeOf(first.path()), treeOf(again.path() / "new" / "folder"));
  EXPECT_NE(treeOf(first.path()), treeOf(other.path()));
  // Taken on one machine, to be met on all others; changes when the generator does.
  EXPECT_EQ(fingerprint({.memos = 300}), 6954297828608356871U);
}

TEST(CorpusTest, OnlyAnEmptyFolderIsWrittenTo) {
  const TemporaryFolder folder;
  test::writeFile(folder.path() / ".hidden", "mine");
  EXPECT_THROW((void)writeCorpus({.memos = 3}, folder.path()), CorpusError);
  EXPECT_ANY_THROW((void)writeCorpus({.memos = 3}, folder.path() / ".hidden"));
  EXPECT_EQ(treeOf(folder.path()).find(".md"), std::string::npos);
}

}  // namespace
}  // namespace nomely::bench
