#include <algorithm>

#include <gmock/gmock.h>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/VersionStore.h"
#include "Core/Storage/WriteError.h"
#include "Support/ErrorKind.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;
using testing::Each;
using testing::ElementsAre;
using testing::MatchesRegex;
using namespace std::chrono_literals;
using namespace std::string_view_literals;

class VersionStoreTest : public StoreTest {
 protected:
  VersionStoreTest() {
    memo.memoId = "m";
    memo.body = "0";
    store.memoStore().write(memo, today);
  }

  [[nodiscard]] std::vector<std::string> snapshotNames() const {
    std::vector<std::string> names;
    if (!fs::exists(snapshots)) return names;
    for (const auto& entry : fs::directory_iterator(snapshots))
      if (entry.path().extension() == ".md") names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
  }
  [[nodiscard]] std::vector<std::string> snapshotBodies() const {
    std::vector<std::string> bodies;
    for (const std::string& name : snapshotNames())
      bodies.push_back(MemoFrontmatterParser::parse(readFile(snapshots / name)).body);
    return bodies;
  }
  void commit(const std::string& body) {
    clock.advance(1s);
    memo.body = body;
    store.commitMemo(memo, today, {});
  }

  VersionStore versions{context};
  Day today = day("2026-03-01");
  Memo memo = Memo::empty(1, clock);
  fs::path snapshots = folder.path() / ".versions" / "by-id" / "6d";
};

TEST_F(VersionStoreTest, KeepsWhatIsReplaced) {
  commit("1");
  commit("1");
  commit("2");
  EXPECT_THAT(snapshotBodies(), ElementsAre("0", "1"));
  EXPECT_THAT(snapshotNames(), Each(MatchesRegex("[0-9]{10}(\\.[0-9]+)?_[0-9A-F-]{36}\\.md")));
}

TEST_F(VersionStoreTest, NewestTwentyRemain) {
  std::vector<std::string> newest;
  for (int i = 1; i <= 25; ++i) {
    commit(std::to_string(i));
    if (i > 5) newest.push_back(std::to_string(i - 1));
  }
  EXPECT_EQ(snapshotBodies(), newest);
}

TEST_F(VersionStoreTest, NoSnapshot) {
  using Identity = std::optional<std::string>;
  const struct {
    Identity onDisk, changed;
    const char* body;
    std::int64_t number;
    std::optional<WriteError::Kind> failure;
  } cases[] = {
      {"m", "m", "0", 1, {}},  // unchanged
      {{}, "m", "1", 1, {}},
      {"", "m", "1", 1, {}},
      {"m", "m", "1", 2, {}},  // no file
      {"m", "n", "1", 1, WriteError::Kind::identityChanged},
      {"m", {}, "1", 1, WriteError::Kind::identityChanged},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    memo.memoId = c.onDisk;
    memo.body = "0";
    memo.seqNumber = 1;
    store.memoStore().write(memo, today);
    memo.memoId = c.changed;
    memo.body = c.body;
    memo.seqNumber = c.number;
    EXPECT_EQ(kindOf<WriteError>([&] { versions.saveIfNeeded(today, c.number, memo); }), c.failure);
    EXPECT_FALSE(fs::exists(context.paths.versionsFolder()));
  }
}

TEST_F(VersionStoreTest, KeepsAttachmentsThatTheMemoLetsGoOf) {
  const fs::path dayFolder = context.paths.dayFolder(today);
  const fs::path kept = snapshots / "attachments";
  memo.attachments = {"a.png", "b.png", "gone.png", "../secret", "c.png"};
  store.memoStore().write(memo, today);
  for (const char* name : {"a.png", "b.png", "c.png"}) writeFile(dayFolder / name, name);
  writeFile(folder.path() / "secret", "secret");
  writeFile(kept / "c.png", "older copy");
  memo.attachments = {"b.png"};
  commit("1");
  EXPECT_EQ(treeOf(kept), "a.png\na.png\nc.png\nolder copy\n");
  EXPECT_EQ(readFile(dayFolder / "a.png"), "a.png");
  EXPECT_FALSE(fs::exists(snapshots / "secret"));
}

TEST_F(VersionStoreTest, SafeFilenames) {
  for (const std::string_view name : {"a.png", "日记 1", "...", ".hidden"})
    EXPECT_TRUE(VersionStore::isSafeFilename(name)) << name;
  for (const std::string_view name :
       {""sv, "."sv, ".."sv, "a/b"sv, "/a"sv, "../x"sv, "a/"sv, "a\\b"sv, "a\0b"sv})
    EXPECT_FALSE(VersionStore::isSafeFilename(name)) << name;
}

}  // namespace
}  // namespace nomely::test
