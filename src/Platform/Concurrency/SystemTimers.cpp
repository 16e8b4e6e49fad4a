#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include <poll.h>
#include <sys/timerfd.h>
#include <time.h>

#include "Platform/Concurrency/Timers.h"
#include "Platform/System/Descriptor.h"
#include "Platform/System/Log.h"
#include "Platform/System/WakeUp.h"

namespace nomely {
namespace {

using Nanoseconds = std::chrono::nanoseconds;

constexpr auto clockThatCountsSleep = CLOCK_BOOTTIME;

Nanoseconds bootTime() {
  timespec now{};
  ::clock_gettime(clockThatCountsSleep, &now);
  return std::chrono::seconds(now.tv_sec) + Nanoseconds(now.tv_nsec);
}

// What the thread waits on.
Descriptor opened(int number) {
  if (number < 0) throw std::system_error(errno, std::generic_category(), "timers");
  return Descriptor(number);
}

// The calls to come, by the time when they are due and the order in which they were asked for.
class Agenda {
 public:
  using Key = std::pair<Nanoseconds, std::uint64_t>;

  Key add(Nanoseconds due, std::function<void()> call) {
    const std::lock_guard lock(mutex_);
    const Key key(due, next_++);
    calls_.emplace(key, std::move(call));
    if (calls_.begin()->first == key) wakeUp_.wake();
    return key;
  }

  void remove(const Key& key) {
    // What the call holds goes after the lock: it may own timers itself.
    std::function<void()> removed;
    const std::lock_guard lock(mutex_);
    if (const auto found = calls_.find(key); found != calls_.end()) {
      removed = std::move(found->second);
      calls_.erase(found);
    }
  }

  void close() {
    const std::lock_guard lock(mutex_);
    closing_ = true;
    wakeUp_.wake();
  }

  // Runs what is due until `close`.
  void run() {
    while (auto call = next()) {
      try {
        (*call)();
      } catch (const std::exception& error) {
        Log::error(LogChannel::app, "⚠️ Timers.run: {}", error.what());
      }
    }
  }

 private:
  // Waits for the next call that is due; absent at the end.
  std::optional<std::function<void()>> next() {
    for (;;) {
      {
        const std::lock_guard lock(mutex_);
        if (closing_) return std::nullopt;
        if (!calls_.empty() && calls_.begin()->first.first <= bootTime()) {
          auto call = std::move(calls_.begin()->second);
          calls_.erase(calls_.begin());
          return call;
        }
        setAlarm();
      }
      std::array<pollfd, 2> waited{{{.fd = alarm_.get(), .events = POLLIN, .revents = 0},
                                    {.fd = wakeUp_.descriptor(), .events = POLLIN, .revents = 0}}};
      ::poll(waited.data(), waited.size(), -1);
      wakeUp_.clear();
    }
  }

  void setAlarm() const {
    itimerspec when{};
    if (!calls_.empty()) {
      const Nanoseconds due = std::max(calls_.begin()->first.first, Nanoseconds(1));
      const auto seconds = std::chrono::floor<std::chrono::seconds>(due);
      when.it_value = {.tv_sec = seconds.count(), .tv_nsec = (due - seconds).count()};
    }
    ::timerfd_settime(alarm_.get(), TFD_TIMER_ABSTIME, &when, nullptr);
  }

  std::mutex mutex_;
  std::map<Key, std::function<void()>> calls_;
  std::uint64_t next_ = 0;
  bool closing_ = false;
  Descriptor alarm_ = opened(::timerfd_create(clockThatCountsSleep, TFD_CLOEXEC | TFD_NONBLOCK));
  WakeUp wakeUp_;
};

class SystemTimers final : public Timers {
 public:
  ~SystemTimers() override {
    if (!agenda_) return;
    agenda_->close();
    thread_.join();
  }

  Timer after(std::chrono::milliseconds delay, std::function<void()> call) override {
    const std::shared_ptr<Agenda> agenda = started();
    const Agenda::Key key = agenda->add(bootTime() + delay, std::move(call));
    return {agenda.get(), [key, weak = std::weak_ptr(agenda)](void*) {
              if (const auto present = weak.lock()) present->remove(key);
            }};
  }

 private:
  std::shared_ptr<Agenda> started() {
    const std::lock_guard lock(mutex_);
    if (!agenda_) {
      agenda_ = std::make_shared<Agenda>();
      thread_ = std::thread([agenda = agenda_] { agenda->run(); });
    }
    return agenda_;
  }

  std::mutex mutex_;
  std::shared_ptr<Agenda> agenda_;
  std::thread thread_;
};

}  // namespace

std::unique_ptr<Timers> makeSystemTimers() {
  return std::make_unique<SystemTimers>();
}

}  // namespace nomely
