#include <gtest/gtest.h>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Markdown/Frontmatter/YamlError.h"
#include "Core/Storage/MemoFile.h"
#include "Core/Storage/MemoStore.h"
#include "Core/Storage/WriteError.h"
#include "Support/ErrorKind.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

class MemoStoreTest : public StoreTest {
 protected:
  MemoStore memos{context};
  Day today = day("2026-03-01");
  fs::path file = folder.path() / "2026-03-01" / "007.md";
};

TEST_F(MemoStoreTest, WritesAndReadsByNumberAndCreatesNoneTwice) {
  EXPECT_FALSE(memos.read(today, 7));
  Memo memo = Memo::empty(7, clock);
  memo.body = "一";
  memos.write(memo, today);
  EXPECT_EQ(readFile(file), "---\ntime: 09:30\n---\n\n一");
  EXPECT_EQ(memos.read(today, 7), memo);
  EXPECT_NE(memos.read(today, 7)->id, memos.read(today, 7)->id);
  memo.body = "二";
  EXPECT_FALSE(memos.create(memo, today));
  EXPECT_EQ(memos.read(today, 7)->body, "一");
}

TEST_F(MemoStoreTest, WhatCouldNotBeReadAgainIsNotWritten) {
  Memo memo = Memo::empty(7, clock);
  memo.body = "good";
  memos.write(memo, today);
  const std::string before = treeOf(folder.path());
  for (std::string Memo::*field : {&Memo::body, static_cast<std::string Memo::*>(&Memo::time)}) {
    Memo broken = memo;
    broken.*field = "a\xE6\x97";
    EXPECT_THROW(memos.write(broken, today), YamlError);
    EXPECT_THROW((void)memos.create(broken, today), YamlError);
  }
  EXPECT_EQ(treeOf(folder.path()), before);
}

TEST_F(MemoStoreTest, DamagedTextShowsAsAnEmptyRow) {
  for (const char* content : {"", "no header", "---\nmood: x\n---\n", "---\ntime: t\n---\n\xFF"})
    EXPECT_EQ(MemoStore::parseMemoFile(content, 7, clock), Memo::empty(7, clock)) << content;
  EXPECT_EQ(MemoStore::parseMemoFile("---\ntime: t\n---\n\nbody", 7, clock).body, "body");
}

TEST(DiskPathsTest, DefaultRootIsForItsOwnerAlone) {
  const TemporaryFolder home;
  const Environment environment({{"HOME", home.path().string()}});
  const DiskPaths paths = DiskPaths::defaultPaths(environment, FileManager(posixFileSystem()));
  EXPECT_EQ(paths.rootURL, home.path() / "NomelyData");
  EXPECT_EQ(fs::status(paths.rootURL).permissions(), fs::perms::owner_all);
  EXPECT_EQ(paths.memoFile(day("2026-03-01"), 7), paths.rootURL / "2026-03-01" / "007.md");

  fs::remove_all(paths.rootURL);
  writeFile(paths.rootURL, "in the way");
  testing::internal::CaptureStderr();
  EXPECT_EQ(DiskPaths::defaultPaths(environment, FileManager(posixFileSystem())).rootURL,
            paths.rootURL);
  EXPECT_NE(testing::internal::GetCapturedStderr(), "");
}

TEST(WriteErrorTest, Texts) {
  using enum WriteError::Kind;
  for (const auto& [kind, code, text] :
       {std::tuple(maintenance, "write.maintenance", "数据恢复维护中，请重启"),
        {missingMemo, "write.missingMemo", "这条笔记已被删除或移动，未覆盖磁盘。"},
        {identityChanged, "write.identityChanged", "此位置已属于另一条笔记，已阻止覆盖。"},
        {conflict, "write.conflict", "笔记已在其他位置修改，已保留磁盘内容和当前草稿。"}}) {
    const WriteError error(kind);
    EXPECT_EQ(error.code(), code);
    EXPECT_TRUE(std::string_view(error.what()).starts_with(text));
  }
}

}  // namespace
}  // namespace nomely::test
