#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <random>
#include <thread>

#include <fcntl.h>
#include <fmt/format.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Core/Storage/DayStore.h"
#include "Feishu/Messages/FeishuInbox.h"
#include "Feishu/Soak/SoakMessages.h"
#include "Support/Sound.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

using namespace std::chrono_literals;
using Call = FeishuPlatform::Call;

// The program that is killed and begins anew.
class Bot {
 public:
  Bot(std::filesystem::path folder, std::string platform)
      : folder_(std::move(folder)), platform_(std::move(platform)) {}
  ~Bot() {
    if (process_ > 0) end(SIGKILL);
  }
  Bot(const Bot&) = delete;
  Bot& operator=(const Bot&) = delete;

  void start(std::uint64_t faultEvery) {
    const std::filesystem::path program =
        std::filesystem::read_symlink("/proc/self/exe").replace_filename("nomely-feishu-soak-bot");
    std::vector<std::string> arguments{program, folder_, platform_, std::to_string(faultEvery)};
    std::vector<char*> pointers;
    for (std::string& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, log().c_str(),
                                       O_WRONLY | O_CREAT | O_APPEND, 0600);
    const int failure =
        ::posix_spawn(&process_, program.c_str(), &actions, nullptr, pointers.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (failure != 0) throw std::runtime_error("no bot");
  }
  // Fails the test when it ended by itself, or otherwise than it was told.
  void end(int signal) {
    ::kill(process_, signal);
    int status = 0;
    ::waitpid(std::exchange(process_, -1), &status, 0);
    const bool isRight = signal == SIGKILL ? WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL
                                           : WIFEXITED(status) && WEXITSTATUS(status) == 0;
    EXPECT_TRUE(isRight) << "status " << status << "\n" << lastOfLog();
  }
  [[nodiscard]] std::string lastOfLog() const {
    const std::string text = readFile(log());
    return text.substr(text.size() - std::min<std::size_t>(text.size(), 6000));
  }

 private:
  [[nodiscard]] std::filesystem::path log() const { return folder_ / "log"; }

  std::filesystem::path folder_;
  std::string platform_;
  pid_t process_ = -1;
};

struct Counts {
  std::size_t sent = 0, deliveries = 0, acks = 0, connections = 0;
  std::size_t cuts = 0, kills = 0, refusals = 0;
  std::size_t memos = 0, toldFailed = 0;
  std::size_t missing = 0, twice = 0, damaged = 0, foreign = 0;
};

std::ostream& operator<<(std::ostream& out, const Counts& counts) {
  return out << fmt::format(
             "{} messages in {} deliveries, {} acknowledgements; {} connections, {} cuts, {} "
             "kills, "
             "{} refused calls\n{} memos; {} messages were told as failed first; {} missing, {} "
             "twice, {} damaged, {} that should not be\n",
             counts.sent, counts.deliveries, counts.acks, counts.connections, counts.cuts,
             counts.kills, counts.refusals, counts.memos, counts.toldFailed, counts.missing,
             counts.twice, counts.damaged, counts.foreign);
}

class FeishuSoakTest : public testing::Test {
 protected:
  FeishuSoakTest() {
    std::filesystem::create_directory(folder.path() / "root");
    std::filesystem::create_directory(folder.path() / "state");
    std::filesystem::create_directory(folder.path() / "temporary");
    writeTone(folder.path() / "tone.wav", {});
    sound = readFile(folder.path() / "tone.wav");
    platform.redeliverAfter(500ms);
  }

  void disturb() {
    const auto oneIn = [this](unsigned n) { return random() % n == 0; };
    if (oneIn(40)) {
      platform.cut();
      ++counts.cuts;
    }
    if (oneIn(30)) platform.redeliver(messages[random() % messages.size()].message.id());
    if (oneIn(300)) platform.expireTokens();
    for (const Call call : {Call::resource, Call::endpoint, Call::token, Call::reaction})
      if (oneIn(150)) {
        platform.fail(call, {.status = 500, .body = "{"}, 2);
        counts.refusals += 2;
      }
    if (oneIn(40)) {
      bot.end(SIGKILL);
      ++counts.kills;
      bot.start(faultEvery());
    }
  }

  // From a disk that fails with every third message to one that hardly does.
  std::uint64_t faultEvery() { return 40 + random() % (random() % 2 == 0 ? 200 : 2000); }

  void sendOne() {
    messages.push_back(soakMessage(messages.size(), platform, sound));
    FeishuPlatform::Pieces pieces;
    if (random() % 10 == 0) {
      pieces.count = 1 + random() % 5;
      for (std::size_t i = 0; i < pieces.count + 1; ++i)
        pieces.order.push_back(random() % pieces.count);
    }
    platform.send(messages.back().message, pieces);
    // Not so many at once that a kill never meets the work on one of them.
    platform.awaitUnacknowledged(random() % 40, 300ms);
  }

  void awaitQuiet() {
    for (const Call call : {Call::resource, Call::endpoint, Call::token, Call::reaction})
      platform.fail(call, {}, 0);
    bot.end(SIGKILL);
    bot.start(0);
    const auto deadline = std::chrono::steady_clock::now() + 5min;
    while (!platform.unacknowledged().empty() || FeishuInbox::counts(storage).waiting > 0) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline)
          << platform.unacknowledged().size() << " unacknowledged, "
          << FeishuInbox::counts(storage).waiting << " in the inbox\n"
          << bot.lastOfLog();
      platform.awaitUnacknowledged(0, 100ms);
      std::this_thread::sleep_for(20ms);
    }
    bot.end(SIGTERM);
  }

  void count() {
    const DayStore days(storage);
    std::map<std::string, std::vector<std::pair<Day, Memo>>> found;
    for (const Day day : days.listAllDates())
      for (Memo& memo : days.listMemos(day)) {
        ++counts.memos;
        found[memo.sourceId.value_or("")].emplace_back(day, std::move(memo));
      }
    for (const SoakMessage& sent : messages) {
      const std::string& id = sent.message.id();
      const auto& memos = found[id];
      counts.deliveries += platform.deliveries(id);
      counts.acks += platform.acks(id);
      const std::vector<std::string> reactions = platform.reactions(id);
      if (sent.isRecorded && std::ranges::count(reactions, "CRY") > 0) ++counts.toldFailed;
      if (!sent.isRecorded) {
        counts.foreign += memos.size();
      } else if (memos.empty()) {
        ++counts.missing;
        ADD_FAILURE() << "lost: " << sent.message.payload();
      } else {
        counts.twice += memos.size() - 1;
        if (memos.size() > 1) ADD_FAILURE() << "twice: " << sent.message.payload();
        if (!isWhole(sent, memos.front().first, memos.front().second)) {
          ++counts.damaged;
          ADD_FAILURE() << "damaged: " << sent.message.payload();
        }
      }
    }
    counts.sent = messages.size();
    counts.connections = platform.connections();
  }

  [[nodiscard]] bool isWhole(const SoakMessage& sent, Day day, const Memo& memo) {
    if (memo.body.find(sent.bodyPart) == std::string::npos) return false;
    if (memo.attachments.size() != sent.files.size()) return false;
    for (std::size_t i = 0; i < sent.files.size(); ++i) {
      const std::string bytes = readFile(storage.paths.dayFolder(day) / memo.attachments[i]);
      // Made of the same sound, all are of one size.
      if (sent.isVoice && voiceSize == 0) voiceSize = bytes.size();
      if (sent.isVoice ? bytes.size() != voiceSize || bytes.find("ftyp") != 4
                       : bytes != sent.files[i])
        return false;
    }
    return true;
  }

  const TemporaryFolder folder{quickParent()};
  const SystemClock clock;
  const StoreContext storage{{folder.path() / "root"}, FileManager(posixFileSystem()), clock};
  FeishuPlatform platform;
  Bot bot{folder.path(), platform.root()};
  std::mt19937 random{7};
  std::string sound;
  std::vector<SoakMessage> messages;
  std::size_t voiceSize = 0;
  Counts counts;
};

// NOMELY_SOAK says how many messages; `tools/dev soak` sets it.
TEST_F(FeishuSoakTest, EveryMessageIsOneMemoWhateverFails) {
  const char* const told = std::getenv("NOMELY_SOAK");
  const std::size_t count = told == nullptr ? 300 : std::strtoull(told, nullptr, 10);
  bot.start(faultEvery());
  while (messages.size() < count) {
    sendOne();
    disturb();
  }
  awaitQuiet();
  this->count();
  std::cout << counts;
  EXPECT_EQ(counts.foreign, 0U);
  EXPECT_GT(counts.kills, 0U);
}

}  // namespace
}  // namespace nomely::test
