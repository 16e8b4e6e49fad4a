#include <set>
#include <sstream>

#include <fmt/ranges.h>

#include "Core/Lifecycle/Maintenance/TemporaryFileSweep.h"
#include "Core/Storage/MemoFile.h"
#include "Import/FlomoExportFiles.h"
#include "Import/FlomoImporter.h"
#include "Support/FaultyFileSystem.h"
#include "Support/ForkedRun.h"
#include "Support/MemoryFileSystem.h"

namespace nomely::test {
namespace {

using Left = MemoryFileSystem::Left;
using Mode = FaultyFileSystem::Mode;

// An import on a disk in memory: new notes with files on two days, and an old one that gets its
// own.
class Disk {
 public:
  explicit Disk(const Tree& tree) : files(folder_.path(), tree) {
    fs::create_directory(folder_.path() / "root");
  }
  [[nodiscard]] StoreContext context(FileSystem& through) const {
    return {{folder_.path() / "root"}, FileManager(through), clock_};
  }
  void import(FileSystem& through) const {
    (void)FlomoImporter(MemoService(context(through)))
        .importFromURL(folder_.path() / "export/flomo.html");
  }

 private:
  TemporaryFolder folder_{quickParent()};
  ManualClock clock_;

 public:
  MemoryFileSystem files;
};

Tree before() {
  Memo old;
  old.memoId = "memo_1";
  old.time = "21:30";
  old.body = "旧的";
  return {{"root/2026-03-05/001.md", MemoFile::contentOf(old)},
          {"export/a.jpg", "picture"},
          {"export/b.m4a", "sound"},
          {"export/flomo.html", flomoNote("2026-03-05 21:30", "旧的", "a.jpg") +
                                    flomoNote("2026-03-05 21:31", "新的", "b.m4a") +
                                    flomoNote("2026-03-06", "又一条")}};
}

// Each memo with its files, "2026-03-05 旧的 picture". Throws when one is not whole.
std::string memosOf(const Tree& tree) {
  std::multiset<std::string> memos;
  for (const auto& [path, content] : tree) {
    const fs::path file = path;
    if (!path.starts_with("root/2026") || file.extension() != ".md") continue;
    const Memo memo = MemoFile::parsed(content, 1);
    std::string line = file.parent_path().filename().string() + " " + memo.body;
    for (const std::string& name : memo.attachments)
      line += " " + tree.at((file.parent_path() / name).string());
    memos.insert(line);
  }
  return fmt::format("{}\n", fmt::join(memos, "\n"));
}

const std::string done = "2026-03-05 新的 sound\n2026-03-05 旧的 picture\n2026-03-06 又一条\n";

void expectFinished(Disk& disk) {
  disk.import(disk.files);
  sweepTemporaryFiles(disk.context(disk.files), {});
  const Tree tree = disk.files.tree(Left::all);
  EXPECT_EQ(memosOf(tree), done);
  for (const auto& [path, content] : tree)
    EXPECT_EQ(path.find(".tmp"), std::string::npos) << "left behind: " << path;
}

// Each memo is a finished one, or the old one as it was, or one of the others that may be there.
void expectWhole(const Tree& tree, const std::string& others = {}) {
  std::istringstream lines(memosOf(tree));
  for (std::string line; std::getline(lines, line);)
    EXPECT_NE((done + "2026-03-05 旧的\n" + others).find(line + "\n"), std::string::npos) << line;
  EXPECT_NE(memosOf(tree).find("旧的"), std::string::npos);
}

TEST(FlomoSafetyTest, AnImportIsFinishedByItsRepeatWhateverStopsIt) {
  const ChildEnd child = runInChild([] {
    std::set<Tree> cuts;
    std::uint64_t calls = 0;
    {
      Disk disk(before());
      FaultyFileSystem watched(disk.files, {}, [&](const auto&) {
        for (const Left left : {Left::all, Left::durable, Left::names})
          cuts.insert(disk.files.tree(left));
      });
      disk.import(watched);
      calls = watched.calls();
      for (const Left left : {Left::all, Left::durable, Left::names})
        EXPECT_EQ(memosOf(disk.files.tree(left)), done);
    }
    for (const Tree& tree : cuts) {
      expectWhole(tree);
      Disk disk(tree);
      expectFinished(disk);
    }
    std::set<Tree> seen;
    for (std::uint64_t call = 1; call <= calls; ++call)
      for (const Mode mode : {Mode::fail, Mode::failLate, Mode::partial}) {
        SCOPED_TRACE(fmt::format("call {}", call));
        Disk disk(before());
        FaultyFileSystem faulty(disk.files, {mode, call});
        try {
          disk.import(faulty);
        } catch (const std::exception&) {
        }
        const Tree tree = disk.files.tree(Left::all);
        if (!seen.insert(tree).second) continue;
        expectWhole(tree, "2026-03-05 新的\n");  // its file counts as missing
        expectFinished(disk);
      }
    EXPECT_GT(calls, 60U);
    EXPECT_GT(cuts.size(), 30U);
  });
  EXPECT_EQ(child, ChildEnd{});
}

}  // namespace
}  // namespace nomely::test
