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
using testing::ElementsAre;
using testing::IsEmpty;
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

TEST_F(VersionStoreTest, FolderOfAnIdentity) {
  EXPECT_EQ(versions.identityDirectory("m"), snapshots);
  EXPECT_EQ(versions.identityDirectory("../日"), folder.path() / ".versions/by-id/2e2e2fe697a5");
}

TEST_F(VersionStoreTest, KeepsWhatIsReplaced) {
  commit("1");
  commit("1");
  commit("2");
  EXPECT_THAT(snapshotBodies(), ElementsAre("0", "1"));
  EXPECT_THAT(snapshotNames(),
              testing::Each(MatchesRegex("[0-9]{10}(\\.[0-9]+)?_[0-9A-F-]{36}\\.md")));
  const auto seconds = std::chrono::floor<std::chrono::seconds>(clock.now());
  EXPECT_TRUE(snapshotNames()[1].starts_with(std::to_string(seconds.time_since_epoch().count())));
}

TEST_F(VersionStoreTest, NewestTwentyRemain) {
  writeFile(snapshots / "note.txt", "not ours");
  std::vector<std::string> newest;
  for (int i = 1; i <= 25; ++i) {
    commit(std::to_string(i));
    if (i > 5) newest.push_back(std::to_string(i - 1));
  }
  fs::remove(snapshots / "note.txt");
  EXPECT_EQ(snapshotBodies(), newest);
}

TEST_F(VersionStoreTest, NoSnapshot) {
  const struct {
    const char* name;
    void (*change)(Memo& onDisk, Memo& changed);
    std::optional<WriteError::Kind> failure;
  } cases[] = {
      {"unchanged", [](Memo&, Memo& changed) { changed.body = "0"; }, {}},
      {"no identity",
       [](Memo& onDisk, Memo& changed) {
         onDisk.memoId.reset();
         changed.memoId = "m";
       },
       {}},
      {"empty identity", [](Memo& onDisk, Memo&) { onDisk.memoId = ""; }, {}},
      {"no file", [](Memo&, Memo& changed) { changed.seqNumber = 2; }, {}},
      {"another memo", [](Memo&, Memo& changed) { changed.memoId = "n"; },
       WriteError::Kind::identityChanged},
      {"identity lost", [](Memo&, Memo& changed) { changed.memoId.reset(); },
       WriteError::Kind::identityChanged},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Memo onDisk = memo;
    Memo changed = memo;
    changed.body = "1";
    c.change(onDisk, changed);
    store.memoStore().write(onDisk, today);
    EXPECT_EQ(kindOf<WriteError>([&] { versions.saveIfNeeded(today, changed.seqNumber, changed); }),
              c.failure);
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
  const struct {
    std::string_view name;
    bool expected;
  } cases[] = {
      {"a.png", true}, {"日记 1", true}, {"...", true},     {".hidden", true}, {"", false},
      {".", false},    {"..", false},    {"a/b", false},    {"/a", false},     {"../x", false},
      {"a/", false},   {"a\\b", false},  {"a\0b"sv, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(VersionStore::isSafeFilename(c.name), c.expected);
  }
}

}  // namespace
}  // namespace nomely::test
