#include <cerrno>

#include "Core/Lifecycle/Maintenance/DataMigrator.h"
#include "Core/Lifecycle/Maintenance/OrphanAttachmentFinder.h"
#include "Core/Lifecycle/Maintenance/StartupMaintenance.h"
#include "Core/Storage/RootMarkers.h"
#include "Support/FaultyFileSystem.h"
#include "Support/MemoryFileSystem.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using testing::HasSubstr;

class MaintenanceTest : public StoreTest {
 protected:
  void put(const Tree& tree) { writeTree(folder.path(), tree); }
  [[nodiscard]] std::string at(const char* file) const { return readFile(folder.path() / file); }

  StartupMaintenance::Result pass(bool canBackUp = true) { return passOn(context, canBackUp); }
  StartupMaintenance::Result passOn(const StoreContext& root, bool canBackUp) {
    UserDefaults defaults(folder.path() / ".state", root.files);
    const MemoService service(root);
    const auto backup = [&](const std::stop_token&) {
      ++backups;
      if (!canBackUp) throw std::runtime_error("no room");
    };
    return StartupMaintenance(service, defaults, {.backup = backup}).run({});
  }
  // The names of orphans, parted by blanks.
  [[nodiscard]] std::string orphans(std::optional<OrphanAttachmentFinder::Kind> kind = {}) const {
    std::string names;
    for (const auto& report : OrphanAttachmentFinder(context).scan(kind))
      names += report.filename + " ";
    return names;
  }

  int backups = 0;
};

const std::string colored = "<span style=\"color: #FF0000\">红</span>";
const std::string withSegments =
    "---\nid: memo_a\nupdated_at: u\ntime: 早上\nattachments: [a.m4a]\naudio_transcripts:\n  "
    "a.m4a:\n"
    "    text: 红\n    segments:\n    - {text: 红, start: 0, duration: 1}\n---\n\n" +
    colored;

TEST_F(MaintenanceTest, CleansColoursOnceABackupStands) {
  put({{"2026-03-01/001.md", withSegments}, {"2026-03-01/a.m4a", "sound"}});
  const RootMarkers markers(context.paths, context.files);
  testing::internal::CaptureStderr();
  EXPECT_TRUE(pass(false).changed) << "the schema step goes on";
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              HasSubstr("清理前备份失败，跳过颜色标记清理：no room"));
  EXPECT_FALSE(markers.areColorSpansCleaned());
  const Memo memo = store.listMemos(day("2026-03-01")).at(0);
  EXPECT_EQ(memo.body, colored);
  EXPECT_EQ(memo.createdAt, "2026-03-01T00:00:00+08:00");
  EXPECT_EQ(memo.source, "nomely");

  EXPECT_TRUE(pass().changed);
  EXPECT_EQ(store.listMemos(day("2026-03-01")).at(0).body, "红");
  EXPECT_EQ(store.listMemos(day("2026-03-01")).at(0).updatedAt, "u");
  EXPECT_EQ(VersionStore(context).listVersions(day("2026-03-01"), 1, "memo_a").at(0).memo.body,
            colored);

  put({{"2026-03-01/001.md", withSegments}});
  EXPECT_FALSE(pass().changed) << "both steps are done for good";
  EXPECT_EQ(at("2026-03-01/001.md"), withSegments);
  EXPECT_EQ(backups, 2);
}

TEST_F(MaintenanceTest, LeavesColoursOfARootThatWasMadeHere) {
  (void)store.createMemo(day("2026-03-01"), {.body = colored});
  EXPECT_FALSE(pass().changed);
  EXPECT_EQ(store.listMemos(day("2026-03-01")).at(0).body, colored);
  EXPECT_EQ(backups, 0);
}

TEST_F(MaintenanceTest, ARootThatCannotBeWrittenIsToldOfOnce) {
  put({{"2026-03-01/001.md", withSegments}, {"2009/03/01.md", "旧\n"}});
  for (const auto& [errorNumber, name] : {std::pair(EROFS, "open"), {ENOSPC, "rename"}}) {
    std::size_t number = 0;
    std::size_t first = 0;
    const Tree before = treeOn(folder.path());
    MemoryFileSystem memory(folder.path(), before);
    FaultyFileSystem watched(memory, {}, [&](const FaultyFileSystem::Call& call) {
      ++number;
      if (first == 0 && call.name == name) first = number;
    });
    const auto rootOn = [&](FileSystem& files) {
      return StoreContext{{folder.path()}, FileManager(files), clock};
    };
    (void)passOn(rootOn(watched), true);
    MemoryFileSystem again(folder.path(), before);
    FaultyFileSystem failing(again, {FaultyFileSystem::Mode::fail, first, errorNumber});
    testing::internal::CaptureStderr();
    EXPECT_FALSE(passOn(rootOn(failing), true).changed);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, HasSubstr("数据目录无法写入"));
    EXPECT_EQ(std::ranges::count(log, '\n'), 1) << log;
  }
}

TEST_F(MaintenanceTest, OnlyWhatNobodyNeedsIsAnOrphan) {
  const std::string named = "---\ntime: 08:00\nattachments: [b.m4a, \"\\x63.m4a\"]\n---\n\na.m4a";
  put({{"2026-03-01/001.md", named},
       {"2026-03-01/a.m4a", "1"},
       {"2026-03-01/b.m4a", "2"},
       {"2026-03-01/c.m4a", "3"},
       {"2026-03-01/.hidden.m4a", "4"},
       {"2026-03-01/day.yaml", ""},
       {"2026-03-01/~syncthing~b.m4a.tmp", ""},
       {"2026-03-01/notes.md", ""},
       {"2026-03-01/P.JPG", ""},
       {"2026-03-02/001.md", "no header"},
       {"2026-03-02/d.m4a", ""},
       {"2026-03-03/7.md", named},
       {"2026-03-03/e.m4a", ""},
       {"2026-03-04/f.wav", ""},
       {"2026-3-5/g.wav", ""}});
  using Kind = OrphanAttachmentFinder::Kind;
  EXPECT_EQ(orphans(), "P.JPG a.m4a f.wav ");
  EXPECT_EQ(orphans(Kind::audio), "a.m4a f.wav ");
  EXPECT_EQ(orphans(Kind::image), "P.JPG ");

  OrphanAttachmentFinder finder(context);
  const auto reports = finder.scan(Kind::audio);
  EXPECT_TRUE(finder.isStillOrphan(reports.at(0)));
  (void)store.createMemo(day("2026-03-01"), {.attachments = {"a.m4a"}});
  fs::remove(reports.at(1).fileURL);
  EXPECT_FALSE(finder.isStillOrphan(reports.at(0)));
  EXPECT_FALSE(finder.isStillOrphan(reports.at(1)));
  put({{".drafts/quick-input.json", "damaged"}});
  EXPECT_EQ(orphans(), "");
}

TEST_F(MaintenanceTest, TellsOfOldTextsThatItLeavesOut) {
  put({{"2009/03/01.md", "一\n"},
       {"2009/03/02.md", "\xFF\xFE"},
       {"2009/03/03.md", "三\n"},
       {"2009/03/31.txt", ""},
       {"2009/02/30.md", "no such day"},
       {"2009-03-03/x.jpg", ""}});
  const DataMigrator migrator(context);
  for (const std::size_t days : {1U, 0U}) {
    const auto result = migrator.migrate({});
    EXPECT_EQ(result.days, days);
    EXPECT_THAT(result.errors, testing::ElementsAre(HasSubstr("迁移 2009-03-02 失败: ")));
    EXPECT_EQ(migrator.leftOut(), std::vector{day("2009-03-03")});
  }
  EXPECT_EQ(store.listMemos(day("2009-03-01")).at(0).body, "一");
  EXPECT_EQ(at("2009/03/01.md"), "一\n");
}

}  // namespace
}  // namespace nomely::test
