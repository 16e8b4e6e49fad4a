#include <array>
#include <cerrno>
#include <iostream>
#include <stdexcept>

#include <fmt/format.h>

#include "Core/Lifecycle/Backup/BackupRestore.h"
#include "Core/Lifecycle/Backup/HostileArchives.h"
#include "Core/Lifecycle/Backup/RestoreSwap.h"
#include "Core/Safety/Course.h"
#include "Core/Storage/RescueFolders.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/ForkedRun.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

// A file system that lacks or refuses something. Names may be one to it whatever their case, as on
// FAT.
struct OtherFiles final : FaultyFileSystem {
  explicit OtherFiles(FileSystem& inner) : FaultyFileSystem(inner, {}) {}

  bool canExchange = true;
  bool isMount = false;
  bool foldsCase = false;
  std::uint64_t room = std::uint64_t{1} << 40;
  int moving = 0;  // errno of every rename
  int making = 0;  // errno of every new folder

  [[nodiscard]] fs::path spelt(const fs::path& path) const {
    if (!foldsCase) return path;
    std::string name = path.filename().string();
    for (char& c : name) c = static_cast<char>(std::tolower(c));
    return path.parent_path() / name;
  }
  static void check(int errorNumber, const fs::path& path) {
    if (errorNumber != 0) throw FileError("测试", path, errorNumber);
  }

  std::unique_ptr<File> open(const fs::path& path, OpenMode mode, LinkPolicy links) override {
    return FaultyFileSystem::open(mode == OpenMode::createNew ? spelt(path) : path, mode, links);
  }
  std::optional<FileAttributes> attributes(const fs::path& path, LinkPolicy links) override {
    return FaultyFileSystem::attributes(
        path.filename().native().starts_with(".NOMELY") ? spelt(path) : path, links);
  }
  bool makeDirectory(const fs::path& path, unsigned permissions) override {
    check(making, path);
    return FaultyFileSystem::makeDirectory(path, permissions);
  }
  void rename(const fs::path& from, const fs::path& to, Replacement replacement) override {
    check(moving, to);
    FaultyFileSystem::rename(from, to, replacement);
  }
  bool exchange(const fs::path& left, const fs::path& right) override {
    check(fs::is_directory(left) ? moving : 0, right);
    return canExchange && FaultyFileSystem::exchange(left, right);
  }
  std::uint64_t freeSpace(const fs::path&) override { return room; }
  bool isMountPoint(const fs::path&) override { return isMount; }
};

const std::string zipName = ".backups/nomely-auto-2026-03-05_093000-X.zip";

// What the archive holds besides its manifest and note.
std::vector<RawEntry> entries() {
  std::vector<RawEntry> all = goodEntries();
  all.push_back({.name = "2026-03-02/", .mode = S_IFDIR | 0500});
  all.push_back({.name = "2026-03-02/a.png", .contents = "png", .mode = S_IFREG | 04410});
  all.push_back({.name = ".meta/nomely.lastMigratedSchemaVersion", .contents = "2\n"});
  return all;
}

Tree formerRoot() {
  return {{"2026-03-09/001.md", "---\nmemo_id: memo_1\n---\n\nformer\n"},
          {".versions/by-id/6d/1.md", "a version"},
          {".backups/other.zip", "another archive"},
          {zipName, rawZip(entries())}};
}

Tree restoredRoot() {
  Tree tree{{".versions/by-id/6d/1.md", "a version"}};
  for (const RawEntry& entry : entries())
    if (!entry.name.ends_with('/') && !entry.name.starts_with(".meta"))
      tree[entry.name] = entry.contents;
  return tree;
}

// Files below `folder` of the disk, less what comes and goes: archives, and notes about the root.
Tree filesIn(const Tree& disk, const std::string& folder) {
  Tree files;
  for (const auto& [path, bytes] : disk)
    if (path.starts_with(folder) && !path.ends_with('/')) files[path.substr(folder.size())] = bytes;
  std::erase_if(files, [](const auto& file) {
    return file.first.starts_with(".backups/") || file.first.starts_with(".meta/");
  });
  return files;
}

std::string rescueIn(const Tree& disk) {
  for (const auto& [path, bytes] : disk)
    if (path.starts_with(RescueFolders::prefix)) return path.substr(0, path.find('/') + 1);
  return {};
}

Tree onDisk(const Tree& root) {
  Tree disk;
  for (const auto& [path, bytes] : root) disk["root/" + path] = bytes;
  return disk;
}

RestoreResult restore(const StoreContext& context,
                      const std::function<void(RestoreStep)>& hook = {},
                      const BackupWork& work = {}) {
  context.gate.replaceRoot([&] { RestoreSwap::finishInterrupted(context); });
  return BackupRestore(context, context.paths.rootURL / zipName).run(SafetyCopy::make, hook, work);
}

// With folders that change places in one step, and without.
class RestoreDisturbed : public testing::TestWithParam<bool> {
 protected:
  const bool canExchange = GetParam();
  const Tree former = filesIn(onDisk(formerRoot()), "root/");
  const Tree restored = restoredRoot();

  void restoreOn(FileSystem& files, const Disk& disk) const {
    OtherFiles other(files);
    other.canExchange = canExchange;
    (void)restore(disk.context(other));
  }

  [[nodiscard]] Scenario scenario() const {
    return {.name = "restore",
            .run =
                [this](const StoreContext& context, const StoreContext&) {
                  OtherFiles other(context.files.fileSystem());
                  other.canExchange = canExchange;
                  (void)restore({context.paths, FileManager(other), context.clock});
                },
            .before = onDisk(formerRoot())};
  }

  // The old root or the new one stands whole, or else the way back is told. Nothing is lost, and a
  // person who starts anew gets what they wanted.
  void expectWhole(const Tree& tree) const {
    Tree disk = tree;
    const std::string rescue = rescueIn(disk);
    Tree root = filesIn(disk, "root/");
    if (root.empty()) {
      EXPECT_FALSE(canExchange);
      Tree back;
      for (auto& [path, bytes] : disk)
        back[path.starts_with(rescue) ? "root/" + path.substr(rescue.size()) : path] = bytes;
      root = filesIn(disk = back, "root/");
    }
    EXPECT_TRUE(root == former || root == restored) << testing::PrintToString(root);
    EXPECT_TRUE(root == former || filesIn(disk, rescue) == former);

    Disk anew(disk);
    restoreOn(anew.files, anew);
    const Tree after = anew.files.tree(Left::all);
    EXPECT_EQ(filesIn(after, "root/"), restored);
    for (const auto& [path, bytes] : formerRoot())
      EXPECT_TRUE(!path.starts_with(".backups/") || after.at("root/" + path) == bytes);
    EXPECT_FALSE(after.contains("root/.meta/nomely.lastMigratedSchemaVersion"));
  }
};

TEST_P(RestoreDisturbed, ByAKillOrAPowerCutLeavesOneRootWhole) {
  const ChildEnd child = runInChild([&] {
    const Course course(scenario());
    for (const auto& [tree, moment] : course.cuts) {
      SCOPED_TRACE(moment);
      expectWhole(tree);
    }
    for (const Left left : {Left::durable, Left::names})
      EXPECT_EQ(filesIn(course.end.at(left), "root/"), restored);
    std::cout << fmt::format("restore: {} calls, {} different ends\n", course.calls.size(),
                             course.cuts.size());
  });
  EXPECT_EQ(child, ChildEnd{});
}

TEST_P(RestoreDisturbed, ByAFailingCallTakesItselfBack) {
  using Mode = FaultyFileSystem::Mode;
  const ChildEnd child = runInChild([&] {
    const Course course(scenario());
    for (std::size_t i = 0; i < course.calls.size(); ++i)
      for (const Mode mode : {Mode::fail, Mode::failLate, Mode::partial}) {
        SCOPED_TRACE(
            fmt::format("{} {}", static_cast<int>(mode), momentOf(i + 1, course.calls[i])));
        Disk disk(scenario().before);
        FaultyFileSystem faulty(disk.files, {mode, i + 1, EIO});
        bool failed = false;
        try {
          restoreOn(faulty, disk);
        } catch (const Error&) {
          failed = true;
        }
        const Tree tree = disk.files.tree(Left::all);
        EXPECT_EQ(filesIn(tree, "root/"), failed ? former : restored);
        EXPECT_EQ(disk.context(faulty).gate.isFrozen(), !failed);
        EXPECT_EQ(tree.contains("root/" + zipName), true);
        EXPECT_EQ(rescueIn(tree).empty(), failed);
        expectWhole(tree);
      }
  });
  EXPECT_EQ(child, ChildEnd{});
}

INSTANTIATE_TEST_SUITE_P(Safety, RestoreDisturbed, testing::Bool());

// On a real disk.
class RestoreTest : public testing::Test {
 protected:
  TemporaryFolder folder{quickParent()};
  OtherFiles files{posixFileSystem()};
  ManualClock clock;
  fs::path root = folder.path() / "root";
  StoreContext context{{root}, FileManager(files), clock};
  const Tree before = [&] {
    writeTree(folder.path(), onDisk(formerRoot()));
    return treeOn(folder.path());
  }();

  void expectRefused(const std::string& says) {
    SCOPED_TRACE(says);
    EXPECT_THAT(messageOf<Error>([&] { (void)restore(context); }), HasSubstr(says));
    EXPECT_EQ(treeOn(folder.path()), before);
    EXPECT_FALSE(context.gate.isFrozen());
  }
};

TEST_F(RestoreTest, PutsTheArchiveInTheRootsPlace) {
  fs::permissions(root, static_cast<fs::perms>(0750));
  double last = -1;
  const auto restored = restore(context, {}, {.progress = [&](double share) {
                                  EXPECT_GE(share, last);
                                  last = share;
                                }});
  EXPECT_EQ(last, 1);
  EXPECT_EQ(filesIn(treeOn(folder.path()), "root/"), restoredRoot());
  EXPECT_EQ(filesIn(treeOn(restored.rescue), ""), filesIn(onDisk(formerRoot()), "root/"));
  EXPECT_FALSE(fs::exists(restored.rescue / ".backups"));
  const auto permissions = [&](const char* name) {
    return static_cast<unsigned>(fs::status(root / name).permissions());
  };
  EXPECT_EQ(permissions("."), 0750U);
  EXPECT_EQ(permissions("2026-03-02"), 0700U);
  EXPECT_EQ(permissions("2026-03-02/a.png"), 0610U);
  EXPECT_EQ(fs::hard_link_count(root / ".versions/by-id/6d/1.md"), 2U);
  EXPECT_FAILURE(WriteError, maintenance, context.write([] {}));
}

TEST_F(RestoreTest, MakesAMissingRoot) {
  fs::rename(root / zipName, folder.path() / "a.zip");
  fs::remove_all(root);
  EXPECT_TRUE(
      BackupRestore(context, folder.path() / "a.zip").run(SafetyCopy::make, {}, {}).rescue.empty());
  EXPECT_EQ(filesIn(treeOn(folder.path()), "root/").size(), restoredRoot().size() - 1);
  EXPECT_EQ(context.files.attributes(root)->permissions, 0700U);
}

TEST_F(RestoreTest, ChangesNothingWhenItIsRefused) {
  files.isMount = true;
  expectRefused("是挂载点");
  files.isMount = false;
  files.room = 10;
  expectRefused("磁盘空间不足");
  files.room = 1 << 30;
  files.making = EACCES;
  expectRefused("--root");
  files.making = 0;
  for (const int reason : {EBUSY, EXDEV}) {
    files.moving = reason;
    expectRefused("--root");
  }
}

TEST_F(RestoreTest, HostileArchivesChangeNothing) {
  std::vector<HostileArchive> archives = hostileArchives();
  archives.push_back({"no notes", rawZip({goodEntries().back()}),
                      "恢复失败：备份中没有可恢复的笔记，当前数据未替换"});
  for (const auto& [name, bytes, message] : archives) {
    writeFile(root / zipName, bytes);
    EXPECT_EQ(messageOf<Error>([&] { (void)restore(context); }), message) << name;
    writeFile(root / zipName, rawZip(entries()));
    EXPECT_EQ(treeOn(folder.path()), before) << name;
  }
}

TEST_F(RestoreTest, NamesThatAreOneToTheDiskAreRefusedThereAlone) {
  auto all = entries();
  all.push_back({.name = "2026-03-02/A.PNG", .contents = "PNG"});
  writeFile(root / zipName, rawZip(all));
  const std::string tree = treeOf(folder.path());
  files.foldsCase = true;
  EXPECT_THAT(messageOf<Error>([&] { (void)restore(context); }), HasSubstr("2026-03-02/A.PNG"));
  EXPECT_EQ(treeOf(folder.path()), tree);
  files.foldsCase = false;
  (void)restore(context);
}

// What is told and left when a step fails, and when taking it back fails, too.
TEST_F(RestoreTest, AFailedStepIsTakenBackOrTheGateFreezes) {
  using enum RestoreStep;
  for (const bool canExchange : {true, false})
    for (const RestoreStep step : {saveOriginal, installRestored, preserveBackups}) {
      files.canExchange = canExchange;
      EXPECT_EQ(messageOf<BackupError>([&] {
                  (void)restore(context, [&](RestoreStep at) {
                    if (at == step) throw std::runtime_error("fault");
                  });
                }),
                "恢复失败：已保留原数据：fault");
      EXPECT_EQ(treeOn(folder.path()), before);
      EXPECT_FALSE(context.gate.isFrozen());
    }
  const std::string told = messageOf<BackupError>([&] {
    (void)restore(context, [&](RestoreStep at) {
      if (at != preserveBackups) return;
      files.moving = EIO;
      throw std::runtime_error("fault");
    });
  });
  EXPECT_TRUE(context.gate.isFrozen());
  const Tree left = treeOn(folder.path());
  EXPECT_THAT(told, StartsWith("恢复失败：自动回滚失败。请停止使用并保留救援目录：" +
                               (folder.path() / rescueIn(left)).parent_path().string() + "。"));
  EXPECT_EQ(filesIn(left, rescueIn(left)), filesIn(onDisk(formerRoot()), "root/"));
}

}  // namespace
}  // namespace nomely::test
