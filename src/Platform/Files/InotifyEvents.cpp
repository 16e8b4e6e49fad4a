#include <algorithm>
#include <array>
#include <atomic>
#include <exception>
#include <stop_token>
#include <thread>
#include <utility>

#include <poll.h>

#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Files/FileEvents.h"
#include "Platform/Files/InotifyWatches.h"
#include "Platform/System/Log.h"
#include "Platform/System/WakeUp.h"

namespace nomely {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr auto never = SteadyClock::time_point::max();

class InotifyStream final : public FileEventStream {
 public:
  explicit InotifyStream(FileEventRequest request)
      : request_(std::move(request)),
        watches_(request_.root, request_.isWatched),
        root_(watches_.root()),
        isThere_(root_.has_value()),
        thread_([this](const std::stop_token& stop) { run(stop); }) {}

  ~InotifyStream() override {
    lifetime_.end();
    thread_.request_stop();
    wakeUp_.wake();
  }

  [[nodiscard]] std::optional<FolderIdentity> root() const override {
    return isThere_ ? root_ : std::nullopt;
  }

  void retry() override {
    isToRetry_ = true;
    wakeUp_.wake();
  }

 private:
  void run(const std::stop_token& stop) {
    InotifyWatches::Seen seen;
    auto due = never;
    while (!stop.stop_requested()) {
      await(due);
      take(seen);
      if (!watches_.isRootWatched()) isThere_ = false;
      if (std::exchange(seen.isRootTouched, false)) request_.queue.async(rootTouched_);
      const auto now = SteadyClock::now();
      if (due == never && !seen.isEmpty()) due = now + request_.latency;
      if (now < due) continue;
      deliver(std::exchange(seen, {}));
      due = never;
    }
  }

  void await(SteadyClock::time_point due) const {
    int milliseconds = -1;
    if (due != never) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - SteadyClock::now());
      milliseconds = static_cast<int>(std::max<std::int64_t>(left.count(), 0));
    }
    std::array<pollfd, 2> waited{{{.fd = watches_.descriptor(), .events = POLLIN, .revents = 0},
                                  {.fd = wakeUp_.descriptor(), .events = POLLIN, .revents = 0}}};
    ::poll(waited.data(), waited.size(), milliseconds);
    wakeUp_.clear();
  }

  void take(InotifyWatches::Seen& seen) {
    try {
      if (isToRetry_.exchange(false)) watches_.retry(seen);
      watches_.read(seen);
    } catch (const std::exception& error) {
      Log::error(LogChannel::storage, "⚠️ FileEvents.watch: {}", error.what());
      seen.isIncomplete = true;
    }
  }

  void deliver(InotifyWatches::Seen seen) {
    auto batch = std::make_shared<FileEventBatch>();
    batch->isIncomplete = seen.isIncomplete;
    batch->changed.assign(seen.changed.begin(), seen.changed.end());
    request_.queue.async([batch, told = told_] { told(*batch); });
  }

  FileEventRequest request_;
  InotifyWatches watches_;  // the thread's
  std::optional<FolderIdentity> root_;
  std::atomic<bool> isThere_;
  std::atomic<bool> isToRetry_ = false;
  WakeUp wakeUp_;
  Lifetime lifetime_;
  std::function<void(const FileEventBatch&)> told_ = lifetime_.guard(request_.onBatch);
  std::function<void()> rootTouched_ = lifetime_.guard(request_.onRootTouched);
  std::jthread thread_;
};

class InotifyEvents final : public FileEvents {
 public:
  std::unique_ptr<FileEventStream> watch(FileEventRequest request) override {
    return std::make_unique<InotifyStream>(std::move(request));
  }
};

}  // namespace

FileEvents& systemFileEvents() {
  static InotifyEvents events;
  return events;
}

}  // namespace nomely
