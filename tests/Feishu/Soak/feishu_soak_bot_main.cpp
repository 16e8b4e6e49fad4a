// The chat bot alone, for a soak to kill: nomely-feishu-soak-bot FOLDER PLATFORM FAULT_EVERY
//
// Its time runs two hundred times as fast, and of its file system's calls each FAULT_EVERY-th
// fails, before, after or in the middle of its work (0: none).

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>

#include <sys/prctl.h>

#include "Feishu/Bridge/FeishuBridge.h"
#include "Support/FaultyFileSystem.h"

namespace nomely::test {
namespace {

class QuickTimers final : public Timers {
 public:
  Timer after(std::chrono::milliseconds delay, std::function<void()> call) override {
    return timers_->after(delay / 200, std::move(call));
  }

 private:
  std::unique_ptr<Timers> timers_ = makeSystemTimers();
};

void runUntilTold(const std::filesystem::path& folder, const char* platform, std::uint64_t every) {
  sigset_t ending;
  ::sigemptyset(&ending);
  ::sigaddset(&ending, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &ending, nullptr);

  const SystemClock clock;
  FaultyFileSystem disk(posixFileSystem(), {.mode = FaultyFileSystem::Mode(every % 3),
                                            .atCall = every,
                                            .errorNumber = ENOSPC,
                                            .every = every});
  const MemoService memos(StoreContext({folder / "root"}, FileManager(disk), clock));
  const std::unique_ptr<HttpClient> http = makeHttpClient();
  const std::unique_ptr<WebSocketClient> webSockets = makeWebSocketClient();
  QuickTimers timers;
  FeishuBridge bridge(
      {.appId = "cli_test", .appSecret = "secret-1", .enabled = true, .allowedOpenID = "ou_me"},
      {.memos = memos,
       .http = *http,
       .webSockets = *webSockets,
       .timers = timers,
       .platformRoot = platform,
       .temporaryFolder = folder / "temporary",
       .stateFolder = folder / "state",
       .makeTranscriber =
           [&] { return std::make_unique<SpeechTranscriber>(nullptr, folder / "temporary"); },
       .saveAllowedOpenID = [](const std::string&) {},
       .onEvent = [](const BotEvent&) {}});
  bridge.start();
  int signal = 0;
  ::sigwait(&ending, &signal);
}

}  // namespace
}  // namespace nomely::test

int main(int count, char** arguments) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (count != 4) return 2;
  nomely::test::runUntilTold(arguments[1], arguments[2], std::strtoull(arguments[3], nullptr, 10));
  return 0;
}
