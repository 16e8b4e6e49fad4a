#include <gmock/gmock.h>

#include "Core/Storage/VersionStore.h"
#include "Core/Storage/WriteError.h"
#include "Support/ErrorKind.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;
using namespace std::string_view_literals;

class VersionStoreTest : public StoreTest {
 protected:
  VersionStoreTest() {
    memo.memoId = "m";
    memo.body = "0";
    store.memoStore().write(memo, today);
  }

  VersionStore versions{context};
  Day today = day("2026-03-01");
  Memo memo = Memo::empty(1, clock);
  fs::path snapshots = folder.path() / ".versions" / "by-id" / "6d";
};

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
  memo.body = "1";
  store.commitMemo(memo, today, {});
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
