#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Core/Extensions/AttachmentNamingKit.h"
#include "Core/Extensions/PathNames.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/AttachmentManager.h"
#include "Platform/Text/Unicode.h"
#include "Support/StoreFixture.h"
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

TEST(CorpusTest, FilesReadBackAsWhatWasMeant) {
  const TemporaryFolder folder;
  const CorpusOptions options{.memos = 200, .mediaBytes = 1'000'000};
  const CorpusSummary summary = writeCorpus(options, folder.path());
  const DiskPaths paths{folder.path()};
  std::uint64_t bytes = 0;
  visitCorpus(options, [&](const CorpusMemo& memo) {
    const std::string content = test::readFile(paths.memoFile(memo.day, memo.number));
    bytes += content.size();
    EXPECT_TRUE(isValidUtf8(content));
    const auto parsed = MemoFrontmatterParser::parse(content);
    EXPECT_EQ(parsed.body, memo.body);
    EXPECT_EQ(parsed.frontmatter.tags, memo.frontmatter.tags);
    EXPECT_EQ(parsed.frontmatter.attachments, memo.frontmatter.attachments);
    for (const std::string& name : memo.frontmatter.attachments) {
      EXPECT_TRUE(AttachmentManager::isSafeName(name));
      const std::string media = test::readFile(paths.dayFolder(memo.day) / name);
      const auto known = FileTypeDetector::magicExtension(media);
      EXPECT_EQ(media.starts_with("%PDF-") ? "pdf" : known, pathExtension(name));
    }
  });
  EXPECT_EQ(summary.memos, 200U);
  EXPECT_EQ(summary.memoBytes, bytes);
  EXPECT_EQ(summary.mediaBytes, 1'000'000U);
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
