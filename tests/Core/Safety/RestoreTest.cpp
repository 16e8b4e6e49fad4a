#include <array>
#include <stdexcept>

#include <fmt/format.h>

#include "Core/Lifecycle/Backup/BackupLeftovers.h"
#include "Core/Lifecycle/Backup/BackupRestore.h"
#include "Core/Lifecycle/Backup/HostileArchives.h"
#include "Core/Lifecycle/Backup/RestoreSwap.h"
#include "Core/Safety/Course.h"
#include "Core/Storage/RescueFolders.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/ForkedRun.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

// A file system that lacks or refuses something. Names may be one to it whatever their case.
struct OtherFiles final : FaultyFileSystem {
  explicit OtherFiles(FileSystem& inner)
      : FaultyFileSystem(inner, {}, [this](const Call& call) {
          if (call.name == refused) throw FileError("测试", call.path, reason);
        }) {}

  std::string refused;  // a kind of call
  int reason = 0;       // errno
  bool canExchange = true;
  bool isMount = false;
  bool foldsCase = false;
  std::uint64_t room = std::uint64_t{1} << 40;

  [[nodiscard]] fs::path spelt(const fs::path& path) const {
    std::string name = path.filename().string();
    for (char& c : name) c = static_cast<char>(std::tolower(c));
    const bool isTold = foldsCase && path.extension() != ".zip";
    return isTold ? path.parent_path() / name : path;
  }
  std::unique_ptr<File> open(const fs::path& path, OpenMode mode, LinkPolicy links) override {
    return FaultyFileSystem::open(spelt(path), mode, links);
  }
  std::optional<FileAttributes> attributes(const fs::path& path, LinkPolicy links) override {
    return FaultyFileSystem::attributes(path.extension() == "" ? spelt(path) : path, links);
  }
  bool exchange(const fs::path& left, const fs::path& right) override {
    return canExchange && FaultyFileSystem::exchange(left, right);
  }
  std::uint64_t freeSpace(const fs::path&) override { return room; }
  bool isMountPoint(const fs::path&) override { return isMount; }
};

const std::string zipName = ".backups/nomely-auto-2026-03-05_093000-X.zip";

std::vector<RawEntry> entries() {
  std::vector<RawEntry> all = goodEntries();
  all.push_back({.name = "2026-03-02/", .mode = S_IFDIR | 0500});
  all.push_back({.name = "2026-03-02/a.png", .contents = "png", .mode = S_IFREG | 04410});
  all.push_back({.name = "2026-03-02/A.PNG", .contents = "PNG"});
  all.push_back({.name = ".meta/nomely.lastMigratedSchemaVersion", .contents = "2\n"});
  all.push_back({.name = ".git/HEAD", .contents = "of another time"});
  return all;
}

Tree disk() {
  return {{"root/2026-03-09/001.md", "---\nmemo_id: memo_1\n---\n\nformer\n"},
          {"root/.versions/by-id/6d/1.md", "a version"},
          {"root/.backups/other.zip", "another archive"},
          {"root/.git/HEAD", "of this root"},
          {"root/.stignore", "/.backups"},
          {"root/" + zipName, rawZip(entries())}};
}

// Files below `folder`, less archives, notes about the root and what engines have there.
Tree filesIn(const Tree& tree, const std::string& folder) {
  Tree files;
  for (const auto& [path, bytes] : tree)
    if (path.starts_with(folder) && !path.ends_with('/')) files[path.substr(folder.size())] = bytes;
  std::erase_if(files, [](const auto& file) {
    return file.first.starts_with(".backups/") || file.first.starts_with(".meta/") ||
           file.first.starts_with(".git/") || file.first == ".stignore";
  });
  return files;
}

const Tree former = filesIn(disk(), "root/");
const Tree restored = [] {
  Tree tree{{".versions/by-id/6d/1.md", "a version"}};
  for (const RawEntry& entry : entries())
    if (!entry.name.ends_with('/')) tree[entry.name] = entry.contents;
  return filesIn(tree, "");
}();

std::string rescueIn(const Tree& tree) {
  for (const auto& [path, bytes] : tree)
    if (path.starts_with(RescueFolders::prefix)) return path.substr(0, path.find('/') + 1);
  return {};
}

RestoreResult restore(const StoreContext& context,
                      const std::function<void(RestoreStep)>& hook = {},
                      const BackupWork& work = {}) {
  context.gate.replaceRoot([&] { RestoreSwap::finishInterrupted(context); });
  return BackupRestore(context, context.paths.rootURL / zipName).run(SafetyCopy::make, hook, work);
}

void restoreThrough(FileSystem& inner, const StoreContext& context, bool canExchange) {
  OtherFiles files(inner);
  files.canExchange = canExchange;
  (void)restore({context.paths, FileManager(files), context.clock});
}

}  // namespace

Scenario restoring(bool canExchange) {
  return {.name = "restore",
          .run =
              [=](const StoreContext& context, const StoreContext&) {
                restoreThrough(context.files.fileSystem(), context, canExchange);
              },
          .before = disk()};
}

namespace {

// With folders that change places in one step, and without.
class RestoreDisturbed : public testing::TestWithParam<bool> {
 protected:
  // The old root or the new one stands whole, or else the way back is told. Nothing is lost, and a
  // person who starts anew gets what they wanted.
  static void expectWhole(Tree tree) {
    const std::string rescue = rescueIn(tree);
    if (filesIn(tree, "root/").empty()) {
      EXPECT_FALSE(GetParam());
      Tree back;
      for (auto& [path, bytes] : tree)
        back[path.starts_with(rescue) ? "root/" + path.substr(rescue.size()) : path] = bytes;
      tree = back;
    }
    const Tree root = filesIn(tree, "root/");
    EXPECT_TRUE(root == former || (root == restored && filesIn(tree, rescue) == former))
        << testing::PrintToString(root);
    Disk anew(tree);
    restoreThrough(anew.files, anew.context(anew.files), GetParam());
    const Tree after = anew.files.tree(Left::all);
    EXPECT_EQ(filesIn(after, "root/"), restored);
    EXPECT_FALSE(after.contains("root/.meta/nomely.lastMigratedSchemaVersion"));
    for (const std::string& name : {std::string("root/.backups/other.zip"), "root/" + zipName,
                                    std::string("root/.git/HEAD"), std::string("root/.stignore")})
      EXPECT_TRUE(after.contains(name) && after.at(name) == disk().at(name)) << name;
  }
};

TEST_P(RestoreDisturbed, LeavesOneRootWholeAndTakesFailuresBack) {
  using Mode = FaultyFileSystem::Mode;
  const ChildEnd child = runInChild([&] {
    const Course course(restoring(GetParam()));
    for (const auto& [tree, moment] : course.cuts) {
      SCOPED_TRACE(moment);
      expectWhole(tree);
    }
    for (const Left left : {Left::durable, Left::names})
      EXPECT_EQ(filesIn(course.end.at(left), "root/"), restored);
    for (std::size_t i = 0; i < course.calls.size(); ++i)
      for (const Mode mode : {Mode::fail, Mode::failLate, Mode::partial}) {
        SCOPED_TRACE(
            fmt::format("{} at {}", static_cast<int>(mode), momentOf(i + 1, course.calls[i])));
        Disk faultyDisk(disk());
        FaultyFileSystem faulty(faultyDisk.files, {mode, i + 1, EIO});
        const StoreContext context = faultyDisk.context(faulty);
        const bool failed = messageOf<Error>([&] {
                              restoreThrough(faulty, context, GetParam());
                            }) != "nothing thrown";
        const Tree tree = faultyDisk.files.tree(Left::all);
        EXPECT_EQ(filesIn(tree, "root/"), failed ? former : restored);
        EXPECT_EQ(context.gate.isFrozen(), !failed);
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
    writeTree(folder.path(), disk());
    return treeOn(folder.path());
  }();

  void expectRefused(const std::string& says, const std::function<void(RestoreStep)>& hook = {}) {
    SCOPED_TRACE(says);
    EXPECT_THAT(messageOf<Error>([&] { (void)restore(context, hook); }), HasSubstr(says));
    EXPECT_EQ(treeOn(folder.path()), before);
    EXPECT_FALSE(context.gate.isFrozen());
  }
};

TEST_F(RestoreTest, PutsTheArchiveInTheRootsPlaceOrMakesAMissingOne) {
  fs::permissions(root, static_cast<fs::perms>(0750));
  double last = 0;
  const auto result = restore(context, {}, {.progress = [&](double share) {
                                EXPECT_GE(share, last);
                                last = share;
                              }});
  EXPECT_EQ(last, 1);
  EXPECT_EQ(filesIn(treeOn(folder.path()), "root/"), restored);
  EXPECT_EQ(filesIn(treeOn(result.rescue), ""), former);
  for (const char* name : {".backups", ".git", ".stignore"})
    EXPECT_TRUE(fs::exists(root / name) && !fs::exists(result.rescue / name)) << name;
  EXPECT_EQ(readFile(root / ".git/HEAD"), "of this root");
  const auto permissions = [](const fs::path& path) {
    return static_cast<unsigned>(fs::status(path).permissions());
  };
  EXPECT_EQ(permissions(root), 0750U);
  EXPECT_EQ(permissions(root / "2026-03-02"), 0700U);
  EXPECT_EQ(permissions(root / "2026-03-02/a.png"), 0610U);
  EXPECT_EQ(fs::hard_link_count(root / ".versions/by-id/6d/1.md"), 2U);

  // Enough for two threads, into what a link names and nothing is there; and a root beside all
  // that.
  auto many = entries();
  for (int i = 0; i < 2000; ++i)
    many.push_back({.name = fmt::format("2026-03-02/{}.bin", i), .contents = "x"});
  writeFile(folder.path() / "many.zip", rawZip(many));
  fs::create_directory_symlink(folder.path() / "a/b", folder.path() / "link");
  const StoreContext other{{folder.path() / "link"}, FileManager(files), clock};
  const BackupRestore making(other, folder.path() / "many.zip");
  EXPECT_EQ(making.run(SafetyCopy::make, {}, {}).rescue, "");
  EXPECT_EQ(filesIn(treeOn(folder.path() / "a/b"), "").size(), restored.size() - 1 + 2000);
  EXPECT_EQ(permissions(folder.path() / "a/b"), 0700U);
  StoreContext({folder.path() / "c"}, FileManager(files), clock).write([] {});

  fs::create_directory(folder.path() / ".nomely-staging-X");
  clock.advance(std::chrono::hours(24 * 365 * 100));
  const auto leftovers = BackupLeftovers::find(context);
  EXPECT_EQ(leftovers.abandoned.at(0).path.filename(), ".nomely-staging-X");
  EXPECT_EQ(leftovers.rescues.at(0).path, result.rescue);
  EXPECT_GT(leftovers.rescues.at(0).bytes, 40U);
}

TEST_F(RestoreTest, ChangesNothingWhenItIsRefused) {
  files.isMount = true;
  expectRefused("是挂载点");
  files.isMount = false;
  files.room = 10;
  expectRefused("磁盘空间不足");
  files.room = 1 << 30;
  files.foldsCase = true;
  expectRefused("2026-03-02/A.PNG");
  files.foldsCase = false;
  for (const auto& [call, reason] :
       {std::pair("makeDirectory", EACCES), {"rename", EBUSY}, {"rename", EXDEV}}) {
    files.refused = call;
    files.reason = reason;
    expectRefused("--root");
  }
  files.refused = "";
  std::stop_source stop;
  const auto stopLate = [&](double share) { share > 0.5 && stop.request_stop(); };
  EXPECT_THROW((void)restore(context, {}, {stop.get_token(), stopLate}), CancellationError);
  std::vector<HostileArchive> archives = hostileArchives();
  archives.push_back(
      {"", rawZip({goodEntries().back()}), "备份中没有可恢复的笔记，当前数据未替换"});
  for (const auto& [name, bytes, message] : archives) {
    SCOPED_TRACE(name);
    writeFile(root / zipName, bytes);
    EXPECT_THAT(messageOf<Error>([&] { (void)restore(context); }), EndsWith(message));
    writeFile(root / zipName, rawZip(entries()));
    EXPECT_EQ(treeOn(folder.path()), before);
  }
}

TEST_F(RestoreTest, AFailedStepIsTakenBackOrTheGateFreezes) {
  using enum RestoreStep;
  for (const bool canExchange : {true, false})
    for (const RestoreStep step : {saveOriginal, installRestored, preserveBackups}) {
      files.canExchange = canExchange;
      expectRefused("恢复失败：已保留原数据：fault", [&](RestoreStep at) {
        if (at == step) throw std::runtime_error("fault");
      });
    }
  files.reason = EIO;
  const std::string told = messageOf<BackupError>([&] {
    (void)restore(context, [&](RestoreStep at) {
      if (at == preserveBackups) files.refused = "rename";
    });
  });
  EXPECT_TRUE(context.gate.isFrozen());
  const Tree left = treeOn(folder.path());
  EXPECT_THAT(told, StartsWith("恢复失败：自动回滚失败。请停止使用并保留救援目录：" +
                               (folder.path() / rescueIn(left)).parent_path().string() + "。"));
  EXPECT_EQ(filesIn(left, rescueIn(left)), former);
}

}  // namespace
}  // namespace nomely::test
