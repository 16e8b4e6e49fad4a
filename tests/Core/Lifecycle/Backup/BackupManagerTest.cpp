#include <fstream>

#include <sys/stat.h>

#include "Core/Lifecycle/Backup/BackupManager.h"
#include "Core/Lifecycle/Backup/BackupPruning.h"
#include "Core/Safety/Diary.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/FaultyFileSystem.h"
#include "Support/Matchers.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

class BackupManagerTest : public testing::Test {
 protected:
  BackupManagerTest() { writeTree(folder.path(), diary().tree); }

  [[nodiscard]] Tree contentsOf(const fs::path& zip) const {
    Tree tree;
    const BackupArchive archive(posixFileSystem(), zip);
    for (const ZipEntry& entry : archive.zip().entries())
      tree[entry.name] = archive.zip().contents(entry, 1 << 30);
    return tree;
  }
  // Nothing but the root and what was there is beside it, and only archives are in `.backups`.
  void expectNothingLeft() const {
    for (const auto& entry : fs::directory_iterator(folder.path()))
      EXPECT_FALSE(entry.path().filename().string().starts_with(".nomely")) << entry.path();
    if (!fs::exists(backups.backupsFolder())) return;
    for (const auto& entry : fs::directory_iterator(backups.backupsFolder()))
      EXPECT_EQ(entry.path().extension(), ".zip") << entry.path();
  }

  TemporaryFolder folder{quickParent()};
  fs::path root = folder.path() / "root";
  ManualClock clock{"2026-03-05 09:30:00"};
  StoreContext context{{root}, FileManager(posixFileSystem()), clock};
  BackupManager backups{context, 3, {"1.2", "3"}};
};

TEST_F(BackupManagerTest, AnArchiveHoldsTheRootAsItWas) {
  writeFile(root / "2026-03-01/broken.md", "no header");
  writeFile(root / "2026-03-01/long.m4a", std::string(3'000'000, 'x'));
  writeFile(root / "2026-03-01/long.md", std::string(300'000, 'x'));
  writeFile(root / "2026-03-01/NomelyBackupManifest.json", "{}");
  fs::create_directories(root / "empty");
  fs::permissions(root / "2026-03-01/001.md", fs::perms::owner_all);
  const auto longAgo = fs::file_time_type::clock::now() - std::chrono::hours(50);
  fs::last_write_time(root / "2026-03-01/001.md", longAgo);
  Tree expected = treeOn(root);
  std::erase_if(expected, [](const auto& item) { return item.first.ends_with(".tmp"); });
  for (const char* name :
       {"2026-03-01/.DS_Store", "2026-03-01/.nomely-archive-1.partial", "NomelyBackupManifest.json",
        ".backups/old.zip", ".updates/a", ".git/HEAD", ".stversions/2026-03-01/001.md", ".stignore",
        "2026-03-01/.syncthing.001.md.tmp", "2026-03-01/~syncthing~a.tmp"})
    writeFile(root / name, "left out");
  const auto isVersion = [](const auto& item) { return item.first.starts_with(".versions"); };

  std::vector<double> shares;
  // What is written after the snapshot is not in the archive, though a link may hold the file.
  backups.beforeCompression = [&] {
    std::ofstream(root / "2026-03-01/long.m4a", std::ios::app) << "more";
    writeFile(root / "2026-03-01/001.md", "changed");
  };
  fs::create_symlink("root", folder.path() / "link");
  BackupManager linked({{folder.path() / "link"}, context.files, clock}, 3);
  linked.beforeCompression = backups.beforeCompression;
  const fs::path zip = linked.backup({.progress = [&](double share) { shares.push_back(share); }});
  expectNothingLeft();
  EXPECT_THAT(zip.filename(), MatchesRegex("nomely-auto-2026-03-05_093000-[-0-9A-F]{36}\\.zip"));
  EXPECT_EQ(fs::status(zip).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_TRUE(std::ranges::is_sorted(shares));
  EXPECT_EQ(shares.back(), 1);

  Tree found = contentsOf(zip);
  EXPECT_EQ(found.erase(BackupManifest::fileName), 1);
  std::erase_if(expected, isVersion);
  EXPECT_EQ(found, expected);
  const BackupArchive archive(posixFileSystem(), zip);
  const ZipEntry& note = *archive.zip().find("2026-03-01/001.md");
  EXPECT_EQ(note.mode, S_IFREG | 0700U);
  EXPECT_EQ(note.modified,
            std::chrono::floor<std::chrono::seconds>(fs::file_time_type::clock::to_sys(longAgo)));
  EXPECT_EQ(archive.zip().find("2026-03-01/long.m4a")->method, 0);

  fs::path outside = folder.path() / "elsewhere" / backups.fileName(ArchiveKind::manual);
  backups.beforeCompression = {};
  backups.createArchive(outside, ArchiveKind::manual, true, {});
  EXPECT_EQ(outside.filename(), "nomely-manual-2026-03-05_093000.zip");
  found = contentsOf(outside);
  EXPECT_TRUE(std::ranges::any_of(found, isVersion));
  const BackupManifest manifest = backups.readManifest(outside);
  EXPECT_EQ(manifest,
            (BackupManifest{.archiveKind = ArchiveKind::manual,
                            .createdAt = clock.now(),
                            .sourcePath = root.string(),
                            .includesVersions = true,
                            .appVersion = "1.2",
                            .buildNumber = "3",
                            .unreadableFiles = {"2026-03-01/001.md", "2026-03-01/broken.md",
                                                "2026-03-01/long.md"}}));
  EXPECT_FAILURE(FileError, alreadyExists,
                 (backups.createArchive(outside, ArchiveKind::manual, true, {}), 0));
}

TEST_F(BackupManagerTest, RootsThatCouldNotBeRestoredAreRefused) {
  const std::string links = "数据目录含符号链接，未生成可能无法恢复的归档";
  const struct {
    std::string name;
    std::function<void(const fs::path&)> make;
    std::string reason;
  } cases[] = {
      {"2026-03-01/link", [](const fs::path& at) { fs::create_symlink("001.md", at); }, links},
      {"_config/link", [](const fs::path& at) { fs::create_directory_symlink("..", at); }, links},
      {"pipe", [](const fs::path& at) { ::mkfifo(at.c_str(), 0600); },
       "数据目录含管道、套接字或设备"},
      {"a\\b", [](const fs::path& at) { writeFile(at, ""); }, "名称含反斜杠或盘符"},
      {"c:x", [](const fs::path& at) { writeFile(at, ""); }, "名称含反斜杠或盘符"},
      {"a/.backups", [](const fs::path& at) { fs::create_directory(at); }, "子目录不能叫 .backups"},
  };
  for (const auto& [name, make, reason] : cases) {
    fs::create_directories((root / name).parent_path());
    make(root / name);
    const std::string message = messageOf<BackupError>([&] { (void)backups.backup(); });
    EXPECT_THAT(message, StartsWith("备份副本创建失败：" + reason));
    EXPECT_THAT(message, EndsWith("：" + (root / name).string()));
    const auto obstacles = backups.obstacles({});
    ASSERT_THAT(obstacles, SizeIs(1)) << name;
    EXPECT_EQ(obstacles[0].path, root / name);
    EXPECT_THAT(backups.listBackups(), IsEmpty());
    expectNothingLeft();
    fs::remove(root / name);
  }
}

TEST_F(BackupManagerTest, StoppedWorkLeavesNothing) {
  for (int steps = 0;; ++steps) {
    std::stop_source stop;
    int left = steps;
    try {
      (void)backups.backup({.stop = stop.get_token(), .progress = [&](double) {
                              if (left-- == 0) stop.request_stop();
                            }});
      EXPECT_GT(steps, 10);
      return;
    } catch (const CancellationError&) {
      EXPECT_THAT(backups.listBackups(), IsEmpty()) << steps;
      expectNothingLeft();
    }
  }
}

TEST_F(BackupManagerTest, WithoutRoomBesideTheRootTheWorkIsDoneInItsBackups) {
  context.write([] {});  // does what a process does once: the two runs make the same calls
  std::uint64_t making = 0;
  for (const bool isRefused : {false, true}) {
    std::uint64_t call = 0;
    std::vector<fs::path> made;
    FaultyFileSystem faulty(
        posixFileSystem(), {.atCall = isRefused ? making : 0, .errorNumber = EACCES},
        [&](const FaultyFileSystem::Call& seen) {
          ++call;
          if (seen.name != "makeDirectory" || !seen.path.filename().string().starts_with(".nomely"))
            return;
          if (making == 0) making = call;
          made.push_back(seen.path.parent_path());
        });
    (void)BackupManager({{root}, FileManager(faulty), clock}, 3).backup();
    EXPECT_EQ(made.back(), isRefused ? backups.backupsFolder() : folder.path());
    expectNothingLeft();
    fs::remove_all(backups.backupsFolder());
  }
}

TEST_F(BackupManagerTest, TheAgeIsThatOfTheGreatestAutomaticName) {
  const auto touch = [&](const std::string& name, std::chrono::hours ago) {
    writeFile(backups.backupsFolder() / name, "");
    fs::last_write_time(backups.backupsFolder() / name,
                        fs::file_time_type::clock::from_sys(clock.now()) - ago);
  };
  touch("nomely-auto-2026-03-04_000000-A.zip", std::chrono::hours(1));
  touch("nomely-auto-2026-03-05_000000-A.zip", std::chrono::hours(11));
  touch("nomely-manual-2026-03-05_000000.zip", std::chrono::hours(0));
  EXPECT_EQ(backups.lastBackupDate(), clock.now() - std::chrono::hours(11));
  EXPECT_FALSE(backups.backupIfNeeded(std::chrono::hours(12)));
  touch("nomely-auto-2026-03-05_000000-A.zip", std::chrono::hours(-1));
  EXPECT_EQ(backups.lastBackupDate(), std::nullopt);
  EXPECT_TRUE(backups.backupIfNeeded(std::chrono::hours(12)));
  EXPECT_THAT(backups.listBackups(), SizeIs(4));
}

TEST(BackupPruningTest, TheLastAndThoseOfTheLastDaysStay) {
  const auto name = [](const std::string& stamp) { return "nomely-auto-2026-" + stamp + "-A.zip"; };
  std::vector<std::string> names{"nomely-manual-2020-01-01_000000.zip", "notes.txt"};
  for (const char* stamp :
       {"01-01_1", "02-01_1", "03-02_1", "03-02_2", "03-05_4", "03-05_3", "03-05_2", "03-05_1"})
    names.push_back(name(stamp));
  EXPECT_THAT(BackupPruning::superfluous(names, 3, {name("03-02_1")}),
              ElementsAre(name("03-05_1"), name("01-01_1")));
}

}  // namespace
}  // namespace nomely::test
