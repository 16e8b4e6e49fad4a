#include "Core/Lifecycle/RootInspector.h"
#include "Core/Storage/SyncedFolder.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using Engine = SyncedFolder::Engine;

class SyncedFolderTest : public testing::Test {
 protected:
  TemporaryFolder folder{quickParent()};
  ManualClock clock;
  fs::path root = folder.path() / "all" / "日 [记]";
  StoreContext context{{root}, FileManager(posixFileSystem()), clock};
};

TEST_F(SyncedFolderTest, EnginesAreKnownByWhatTheyLeaveThereOrAbove) {
  EXPECT_FALSE(SyncedFolder(context).isSynced());
  const std::vector<std::pair<fs::path, Engine>> marks{
      {root / ".git/HEAD", Engine::git},
      {root.parent_path() / ".stfolder/a", Engine::syncthing},
      {folder.path() / ".dropbox.cache/a", Engine::cloud}};
  for (const auto& [mark, engine] : marks) {
    writeFile(mark, "");
    const SyncedFolder synced(context);
    EXPECT_TRUE(synced.isBy(engine));
    EXPECT_EQ(synced.places().back().folder, mark.parent_path().parent_path());
  }
  writeFile(root / ".stfolder/a", "");
  EXPECT_EQ(SyncedFolder(context).places().front().folder, root) << "the nearest";
}

// What the user wrote stays, once filled nothing is missing, and where one line goes one comes.
TEST_F(SyncedFolderTest, EnginesAreToldWhatNotToMove) {
  const auto below = [&](const std::string& file) { return readFile(folder.path() / file); };
  writeFile(folder.path() / "all/.stfolder/a", "");
  writeFile(folder.path() / "all/.stignore", "!/日 [记]/.drafts\r\n.DS_Store\r\nmine");
  (void)SyncedFolder(context).fill(Engine::syncthing);
  EXPECT_THAT(below("all/.stignore"),
              MatchesRegex("// Nomely(.|\n)*\n/日 \\\\\\[记\\\\\\]/.backups\n(.|\n)*\n\n"
                           "!/日 \\[记\\]/.drafts\r\n.DS_Store\r\nmine"))
      << "of its lines the first that fits holds";
  EXPECT_FALSE(fs::exists(root / ".meta")) << "what comes may be older than this format";

  writeFile(root / ".git/config", "[core]\n\tbare = false");
  writeFile(root / ".gitignore", "mine");
  fs::permissions(root / ".gitignore", fs::perms::owner_all);
  const SyncedFolder synced(context);
  EXPECT_THAT(synced.fill(Engine::git), SizeIs(3));
  EXPECT_THAT(readFile(root / ".gitignore"), StartsWith("mine\n\n# Nomely"));
  EXPECT_EQ(fs::status(root / ".gitignore").permissions(), fs::perms::owner_all);
  EXPECT_THAT(readFile(root / ".git/config"), StartsWith("[core]\n\tbare = false\n\n# Nomely"));
  const std::string before = treeOf(folder.path());
  for (const Engine engine : {Engine::git, Engine::syncthing, Engine::cloud})
    EXPECT_THAT(synced.fill(engine), IsEmpty());
  EXPECT_EQ(treeOf(folder.path()), before);

  std::string ignored = readFile(root / ".gitignore");
  ignored.erase(ignored.find("/.drafts\n"), 9);
  writeFile(root / ".gitignore", ignored);
  const auto gaps = synced.gaps();
  ASSERT_THAT(gaps, SizeIs(1));
  EXPECT_EQ(gaps[0].file, root / ".gitignore");
  EXPECT_THAT(gaps[0].missing, ElementsAre("/.drafts"));
}

TEST_F(SyncedFolderTest, WhatEnginesKeepIsNoneOfTheDiary) {
  for (const char* name :
       {".git/.nomely-0123456789abcdef0123456789abcdef.tmp", ".stversions/2026-03-01/003.md",
        "2026-03-01/.syncthing.003.md.tmp", "2026-03-01/~syncthing~003.md.tmp", ".stignore"})
    writeFile(root / name, "");
  fs::create_symlink("nowhere", root / ".git/link");
  const auto report = RootInspector(MemoService(context)).inspect([](double) {}, {});
  EXPECT_TRUE(report.isClean());
  EXPECT_EQ(report.memos, 0);
}

}  // namespace
}  // namespace nomely::test
