#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <map>
#include <set>
#include <sstream>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Core/Lifecycle/TemporaryFileSweep.h"
#include "Core/Storage/DayStore.h"
#include "Support/FaultyFileSystem.h"
#include "Support/ManualClock.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestPaths.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

// A running writer program and what it has printed.
class Writer {
 public:
  Writer(const fs::path& root, unsigned seed, std::size_t changes) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
      throw std::system_error(errno, std::generic_category());
    output_ = ends[0];
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    std::array words{TestPaths::writer, root.string(), std::to_string(seed),
                     std::to_string(changes)};
    std::array<char*, 5> arguments{words[0].data(), words[1].data(), words[2].data(),
                                   words[3].data(), nullptr};
    const int failed =
        ::posix_spawn(&process_, words[0].c_str(), &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    if (failed != 0) throw std::system_error(failed, std::generic_category(), "posix_spawn");
  }
  ~Writer() {
    ::close(output_);
    if (process_ == 0) return;
    kill();
    (void)wait();
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  [[nodiscard]] int output() const { return output_; }
  [[nodiscard]] const std::string& text() const { return text_; }
  [[nodiscard]] std::ptrdiff_t lines() const { return std::ranges::count(text_, '\n'); }

  // Takes what is there; false when there will be no more.
  bool receive() {
    std::array<char, 4096> buffer{};
    const ssize_t count = ::read(output_, buffer.data(), buffer.size());
    if (count > 0) text_.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
  }
  void kill() const { ::kill(process_, SIGKILL); }
  [[nodiscard]] int wait() {
    int status = 0;
    ::waitpid(std::exchange(process_, 0), &status, 0);
    return status;
  }

 private:
  pid_t process_ = 0;
  int output_ = -1;
  std::string text_;
};

struct Party {
  std::size_t workers;  // that make `changes` changes and end
  std::size_t changes;
  std::vector<std::ptrdiff_t> victims = {};  // killed after so many lines
};

class ManyProcessesTest : public testing::Test {
 protected:
  void run(const Party& party) {
    constexpr std::size_t endless = 1'000'000'000;
    std::vector<std::ptrdiff_t> limits(party.workers, -1);
    limits.insert(limits.end(), party.victims.begin(), party.victims.end());
    for (std::size_t i = 0; i < limits.size(); ++i)
      writers_.push_back(std::make_unique<Writer>(folder_.path(), static_cast<unsigned>(i + 1),
                                                  i < party.workers ? party.changes : endless));
    killed_ = party.victims.size();
    listen(limits);
    for (std::size_t i = 0; i < writers_.size(); ++i) {
      const int status = writers_[i]->wait();
      EXPECT_EQ(status, limits[i] < 0 ? 0 : SIGKILL) << "writer " << i + 1;
    }
  }

  // Until all have ended; kills those that reach their limit.
  void listen(const std::vector<std::ptrdiff_t>& limits) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    std::vector<pollfd> ends;
    for (const auto& writer : writers_) ends.push_back({writer->output(), POLLIN, 0});
    for (std::size_t open = ends.size(); open > 0;) {
      const auto left =
          std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
      ASSERT_GT(left.count(), 0) << "a writer is stuck";
      ::poll(ends.data(), ends.size(), static_cast<int>(left.count()));
      for (std::size_t i = 0; i < ends.size(); ++i) {
        if (ends[i].revents == 0) continue;
        if (!writers_[i]->receive()) {
          ends[i].fd = -1;
          --open;
        }
        if (limits[i] >= 0 && writers_[i]->lines() >= limits[i]) writers_[i]->kill();
      }
    }
  }

  // Reads the root once and compares it with what the writers told.
  void check() {
    sweepTemporaryFiles(context_, {});
    for (const auto& entry : fs::recursive_directory_iterator(folder_.path()))
      EXPECT_FALSE(FileManager::isTemporaryName(entry.path().filename().native()));
    for (const Day each : store_.listAllDates())
      for (const std::int64_t number : store_.listNumbers(each)) readMemo(each, number);
    for (const auto& writer : writers_) checkTold(writer->text());
    EXPECT_GT(told_, 0U);
  }

  void readMemo(Day each, std::int64_t number) {
    const auto memo = store_.memoStore().read(each, number);
    ASSERT_TRUE(memo);
    copies_[memo->memoId.value()].push_back(*memo);
    for (const std::string& name : memo->attachments)
      EXPECT_TRUE(memo->body.starts_with(readFile(store_.paths().dayFolder(each) / name)));
  }

  void checkTold(const std::string& text) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      SCOPED_TRACE(line);
      std::istringstream words(line);
      std::string what;
      std::string memoId;
      std::string token;
      std::string where;
      words >> what >> memoId >> token;
      std::getline(words, where);
      ++told_;
      const auto& copies = copies_[memoId];
      // A writer that is killed while it moves a memo leaves it twice; both may change from there.
      EXPECT_GE(copies.size(), 1U) << "lost";
      EXPECT_LE(copies.size(), 1U + killed_);
      std::size_t highest = 0;
      for (const Memo& memo : copies)
        highest = std::max(highest, occurrences(memo.body, token + "\n"));
      EXPECT_EQ(highest, 1U);
      if (where.starts_with(" 2026-03-09")) {
        EXPECT_TRUE(numbersTaken_.insert(where).second) << "drawn twice";
      }
    }
  }

  static std::size_t occurrences(const std::string& text, const std::string& part) {
    if (part == "\n") return 1;  // a line without a token
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
      ++count;
    return count;
  }

  TemporaryFolder folder_{quickParent()};
  ManualClock clock_;
  StoreContext context_{{folder_.path()}, FileManager(posixFileSystem()), clock_};
  DayStore store_{context_};
  std::vector<std::unique_ptr<Writer>> writers_;
  std::map<std::string, std::vector<Memo>> copies_;  // by memoId
  std::set<std::string> numbersTaken_;
  std::size_t killed_ = 0;
  std::size_t told_ = 0;
};

TEST_F(ManyProcessesTest, NoChangeIsLost) {
  run({.workers = 5, .changes = 120});
  check();
}

TEST_F(ManyProcessesTest, KilledWritersTakeNothingWithThem) {
  run({.workers = 3, .changes = 100, .victims = {5, 20, 40, 41, 60}});
  check();
}

// A program that knows nothing of our lock puts a file under the number that is about to be used.
TEST_F(ManyProcessesTest, ANumberThatAStrangerTakesIsPassedOver) {
  const Day today = day("2026-03-01");
  const fs::path taken = context_.paths.memoFile(today, 2);
  (void)store_.createMemo(today, {.body = "first\n"});
  FaultyFileSystem undisturbed(posixFileSystem(), {});
  const auto create = [&](FileSystem& files) {
    return DayStore({context_.paths, FileManager(files), clock_})
        .createMemo(today, {.body = "next\n"});
  };
  store_.deleteMemo(today, create(undisturbed));
  const auto rename =
      std::ranges::find(undisturbed.calls(), "rename", &FaultyFileSystem::Call::name);
  FaultyFileSystem files(
      posixFileSystem(),
      {.mode = FaultyFileSystem::Mode::partial,
       .atCall = static_cast<std::uint64_t>(rename - undisturbed.calls().begin() + 1),
       .onStrike = [&] { writeFile(taken, "a stranger's"); }});
  EXPECT_EQ(create(files).seqNumber, 3);
  EXPECT_EQ(readFile(taken), "a stranger's");
}

}  // namespace
}  // namespace nomely::test
