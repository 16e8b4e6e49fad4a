#include <algorithm>
#include <array>
#include <csignal>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Core/Lifecycle/Backup/BackupManager.h"
#include "Core/Lifecycle/Maintenance/TemporaryFileSweep.h"
#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/DayStore.h"
#include "Core/Storage/RescueFolders.h"
#include "Core/Storage/WriteError.h"
#include "Support/FaultyFileSystem.h"
#include "Support/ManualClock.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

// Nothing moves into or out of the last one, so that its numbers are drawn once each.
const std::array days{day("2026-03-01"), day("2026-03-02"), day("2026-03-03"), day("2026-03-09")};

// A process's work: changes the memos of a root at random, everybody's. Tells a line for every
// change that was reported as done: "<memoId> <token> <day> <number>" of a new memo, "<memoId>
// <token>" of one with more text, "<memoId>" of one that moved. A token is a line that from then on
// is in the memo's body, exactly once.
class Writer {
 public:
  Writer(const StoreContext& context, unsigned seed, const fs::path& log, bool attaches)
      : store_(context), seed_(seed), random_(seed), log_(log), attaches_(attaches) {}

  void change() {
    const std::size_t dice = pick(10);
    const Day from = days.at(pick(days.size()));
    const Day to = days.at(pick(days.size() - 1));
    const std::vector<Memo> memos = store_.listMemos(from);
    const std::string token = fmt::format("token-{}-{}", seed_, ++tokens_);
    if (dice < 4 || memos.empty()) return create(from, token);
    Memo memo = memos[pick(memos.size())];
    try {
      if (dice < 8) {
        const Memo seen = memo;
        memo.body += token + "\n";
        store_.commitMemo(memo, from, seen);
        log_ << *memo.memoId << " " << token << std::endl;
      } else if (to != from && from != days.back()) {
        (void)store_.moveMemo(memo, from, to);
        log_ << *memo.memoId << std::endl;
      }
    } catch (const WriteError&) {
      // Another process was quicker.
    }
  }

 private:
  void create(Day today, const std::string& token) {
    DayStore::NewMemo content{.body = token + "\n"};
    if (attaches_ && pick(3) == 0)
      content.attachments.push_back(
          AttachmentStorage::save(store_.context(), token, "txt", store_.paths().dayFolder(today))
              .value());
    const Memo memo = store_.createMemo(today, content);
    log_ << fmt::format("{} {} {} {}", *memo.memoId, token, today.string(), memo.seqNumber)
         << std::endl;
  }

  std::size_t pick(std::size_t count) { return random_() % count; }

  DayStore store_;
  unsigned seed_;
  std::mt19937 random_;
  std::ofstream log_;
  bool attaches_;
  int tokens_ = 0;
};

class ManyProcessesTest : public testing::Test {
 protected:
  // Processes that make their changes and end, and such as are killed in front of some call of the
  // file system. Others back the root up and restore that.
  void run(int workers, const std::vector<std::size_t>& lastCalls, unsigned restorers = 0) {
    std::map<pid_t, int> ends;
    restorers_ = restorers;
    for (int i = 0; i < workers; ++i) ends[start(0)] = 0;
    for (unsigned i = 0; i < restorers; ++i) ends[startRestorer()] = 0;
    for (const std::size_t last : lastCalls) ends[start(last)] = SIGKILL;
    for (const auto& [process, expected] : ends) {
      int status = 0;
      EXPECT_EQ(::waitpid(process, &status, 0), process);
      EXPECT_EQ(status, expected);
    }
    killed_ = lastCalls.size();
    check();
  }

  [[nodiscard]] StoreContext context(FileSystem& files = posixFileSystem()) const {
    return {{root_}, FileManager(files), clock_};
  }

 private:
  [[nodiscard]] fs::path logOf(unsigned seed) const {
    return folder_.path() / fmt::format("{}.log", seed);
  }

  pid_t start(std::size_t lastCall) {
    const unsigned seed = ++started_;
    const pid_t child = ::fork();
    if (child != 0) return child;
    constexpr unsigned longest = 120;  // seconds
    ::alarm(longest);
    std::size_t calls = 0;
    FaultyFileSystem files(posixFileSystem(), {}, [&](const FaultyFileSystem::Call&) {
      if (++calls == lastCall) ::kill(::getpid(), SIGKILL);
    });
    try {
      Writer writer(context(files), seed, logOf(seed), restorers_ == 0);
      for (int left = 80; left > 0 || lastCall > 0; --left) writer.change();
      ::_exit(0);
    } catch (const std::exception& error) {
      fmt::print(stderr, "writer {}: {}\n", seed, error.what());
      ::_exit(1);
    }
  }

  pid_t startRestorer() const {
    const pid_t child = ::fork();
    if (child != 0) return child;
    try {
      // Everybody's archives are of one moment here, so none may be the one too many.
      const BackupManager backups(context(), 2 * restorers_);
      const auto restored = backups.restore(backups.backup(), SafetyCopy::make, {});
      ::_exit(fs::exists(restored.safetyCopy) ? 0 : 1);
    } catch (const std::exception& error) {
      fmt::print(stderr, "restorer: {}\n", error.what());
      ::_exit(1);
    }
  }

  // Reads the root once, former ones too, and compares that with what the processes told.
  void check() {
    const auto former = RescueFolders::of(root_, context().files);
    EXPECT_EQ(former.size(), restorers_);
    sweepTemporaryFiles(context(), {});
    EXPECT_EQ(treeOf(root_).find(".tmp\n"), std::string::npos);
    read(DayStore(context()));
    for (const fs::path& root : former)
      read(DayStore({{root}, FileManager(posixFileSystem()), clock_}));
    std::size_t told = 0;
    for (unsigned seed = 1; seed <= started_; ++seed) {
      std::ifstream log(logOf(seed));
      for (std::string line; std::getline(log, line); ++told) checkTold(line);
    }
    EXPECT_GT(told, 100U);
  }

  void read(const DayStore& store) {
    for (const Day each : days)
      for (const std::int64_t number : store.listNumbers(each)) {
        const Memo memo = store.memoStore().read(each, number).value();
        copies_[memo.memoId.value()].push_back(memo);
        for (const std::string& file : memo.attachments)
          EXPECT_TRUE(memo.body.starts_with(readFile(store.paths().dayFolder(each) / file)));
      }
  }

  void checkTold(const std::string& line) {
    SCOPED_TRACE(line);
    std::istringstream words(line);
    std::string memoId;
    std::string token;
    std::string where;
    words >> memoId >> token;
    std::getline(words, where);
    const auto& copies = copies_[memoId];
    // A writer that is killed while it moves a memo leaves it twice; both may change from there.
    EXPECT_GE(copies.size(), 1U) << "lost";
    EXPECT_LE(copies.size(), 1U + killed_ + restorers_);
    std::ptrdiff_t most = 0;
    for (const Memo& memo : copies) {
      std::istringstream lines(memo.body);
      most = std::max(most, std::count(std::istream_iterator<std::string>(lines), {}, token));
    }
    EXPECT_EQ(most, token.empty() ? 0 : 1);
    if (where.starts_with(" 2026-03-09") && restorers_ == 0) {
      EXPECT_TRUE(numbersTaken_.insert(where).second) << "drawn twice";
    }
  }

  TemporaryFolder folder_{quickParent()};
  fs::path root_ = folder_.path() / "root";
  ManualClock clock_;
  unsigned started_ = 0;
  std::map<std::string, std::vector<Memo>> copies_;  // by memoId
  std::set<std::string> numbersTaken_;
  std::size_t killed_ = 0;
  std::size_t restorers_ = 0;
};

TEST_F(ManyProcessesTest, NoChangeIsLost) {
  run(4, {});
}

TEST_F(ManyProcessesTest, KilledWritersTakeNothingWithThem) {
  run(2, {150, 700, 1003, 1501});
}

TEST_F(ManyProcessesTest, WhatWasWrittenBeforeARestoreIsInAFormerRoot) {
  (void)DayStore(context()).createMemo(days[0], {.body = "first\n"});
  run(3, {}, 2);
}

// A program that knows nothing of our lock puts a file under the number that is about to be used.
TEST(StrangersTest, ANumberThatAStrangerTakesIsPassedOver) {
  const TemporaryFolder folder;
  const ManualClock clock;
  const DiskPaths paths{folder.path()};
  const Day today = day("2026-03-01");
  FaultyFileSystem files(posixFileSystem(), {}, [&](const FaultyFileSystem::Call& call) {
    if (call.name == "rename" && call.path == paths.memoFile(today, 1))
      writeFile(call.path, "a stranger's");
  });
  const DayStore store({paths, FileManager(files), clock});
  EXPECT_EQ(store.createMemo(today, {.body = "ours\n"}).seqNumber, 2);
  EXPECT_EQ(readFile(paths.memoFile(today, 1)), "a stranger's");
}

}  // namespace
}  // namespace nomely::test
