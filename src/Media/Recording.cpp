#include "Media/Recording.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "Media/Answers.h"
#include "Media/Commands.h"
#include "Media/Failure.h"
#include "Media/Microphone.h"
#include "Media/RecordingFile.h"

namespace nomely::media {
namespace {

std::atomic<int> wakeUp = -1;  // an eventfd
std::atomic<bool> signalled = false;

void wake() {
  constexpr std::uint64_t one = 1;
  (void)!::write(wakeUp, &one, sizeof one);
}

extern "C" void stopOnSignal(int) {
  const int before = errno;
  signalled = true;
  wake();
  errno = before;
}

// Takes samples off a device on a thread of its own, so that a slow disk makes none of them late.
class Capture {
 public:
  explicit Capture(const std::string& device) : microphone_(device) {
    // Never joined: a device may hold it for ever, and the process ends soon.
    std::thread([this] { run(); }).detach();
  }

  // What came since the last call. Throws what ended it, once all was taken.
  [[nodiscard]] std::vector<std::int16_t> take() {
    const std::lock_guard lock(mutex_);
    if (samples_.empty() && failure_) std::rethrow_exception(failure_);
    return std::exchange(samples_, {});
  }
  void setPaused(bool isPaused) {
    const std::lock_guard lock(mutex_);
    isPaused_ = isPaused;
  }

 private:
  static constexpr std::size_t period = 1024;
  static constexpr std::size_t most = std::size_t{60} * recordingRate;  // that a disk may be late

  void run() {
    std::array<std::int16_t, period> buffer{};
    try {
      for (;;) {
        const std::size_t count = microphone_.read(buffer);
        const std::lock_guard lock(mutex_);
        if (!isPaused_ && samples_.size() < most)
          samples_.insert(samples_.end(), buffer.begin(),
                          buffer.begin() + static_cast<long>(count));
        wake();
      }
    } catch (...) {
      const std::lock_guard lock(mutex_);
      failure_ = std::current_exception();
    }
    wake();
  }

  Microphone microphone_;
  std::mutex mutex_;
  std::vector<std::int16_t> samples_;
  std::exception_ptr failure_;
  bool isPaused_ = false;
};

enum class Ending { none, keep, cancel };

class Session {
 public:
  Session(const std::string& device, int file, int commands, int answers)
      // Lives as long as its thread may.
      : capture_(*new Capture(device)), file_(file), commands_(commands), answers_(answers) {}

  void run() {
    answers_.line("ready");
    try {
      while (ending_ == Ending::none) {
        waitForSomething();
        take();
      }
    } catch (const Failure& failure) {
      // What the encoder still holds goes into the file if that can be written at all.
      if (failure.kind() == "deviceLost") file_.finish();
      throw;
    }
    if (ending_ == Ending::cancel) return answers_.line("stopped 0");
    file_.finish();
    answers_.line("stopped " + std::to_string(file_.seconds()));
  }

 private:
  void waitForSomething() {
    std::array<pollfd, 2> waited{{{commands_.descriptor(), POLLIN, 0}, {wakeUp, POLLIN, 0}}};
    if (::poll(waited.data(), waited.size(), -1) < 0) return;
    if (waited[1].revents != 0) {
      std::uint64_t count = 0;
      (void)!::read(wakeUp, &count, sizeof count);
    }
    if (waited[0].revents != 0 &&
        !commands_.read([this](std::string_view command) { obey(command); }))
      ending_ = Ending::keep;
    if (signalled) ending_ = Ending::keep;
  }

  void obey(std::string_view command) {
    if (command == "pause" || command == "resume") {
      take();  // what was said until here counts
      capture_.setPaused(command == "pause");
      answers_.line(std::string(command) + "d");
    }
    if (command == "stop") ending_ = Ending::keep;
    if (command == "cancel") ending_ = Ending::cancel;
  }

  void take() {
    const std::vector<std::int16_t> samples = capture_.take();
    file_.write(samples);
    for (const std::int16_t sample : samples)
      peak_ = std::max(peak_, std::abs(static_cast<float>(sample)) / 32768);
    taken_ += samples.size();
    if (taken_ < told_ + recordingRate / 10) return;
    told_ = taken_;
    answers_.line("level " + std::to_string(static_cast<double>(taken_) / recordingRate) + " " +
                  std::to_string(std::exchange(peak_, 0)));
  }

  Capture& capture_;
  RecordingFile file_;
  Commands commands_;
  Answers answers_;
  Ending ending_ = Ending::none;
  std::size_t taken_ = 0;  // samples
  std::size_t told_ = 0;   // of them
  float peak_ = 0;
};

}  // namespace

void record(const std::string& device, int file, int commands, int answers) {
  wakeUp = ::eventfd(0, EFD_CLOEXEC);
  for (const int number : {SIGTERM, SIGINT}) ::signal(number, &stopOnSignal);
  ::signal(SIGHUP, SIG_IGN);   // the end of `commands` follows
  ::signal(SIGPIPE, SIG_IGN);  // nobody listening is no reason to lose what is said
  Session(device, file, commands, answers).run();
}

}  // namespace nomely::media
