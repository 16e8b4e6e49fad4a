#pragma once

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "Platform/Concurrency/JobPool.h"

namespace nomely {

// Makes results on several threads and takes them in order on the caller's, at most a window of
// them ahead, so that memory does not grow with their count.
//
// `newMaker()` gives each thread a maker of its own; maker(i) gives result i, of `count`. `take(i,
// result)` ends the run by returning false. Rethrows what a maker throws, when its result is due.
template <typename NewMaker, typename Take>
class InOrder {
 public:
  InOrder(std::size_t count, NewMaker newMaker, Take take)
      : shared_(std::make_shared<Shared>(count, std::move(newMaker))), take_(std::move(take)) {}

  void run(JobPool& jobs, std::size_t helpers) {
    Shared& shared = *shared_;
    for (std::size_t i = 1; i < std::min(helpers + 1, shared.count); ++i)
      jobs.submit([shared = shared_](const std::stop_token&) { shared->help(); });
    const Ending ending(shared);
    auto maker = shared.newMaker();
    for (std::size_t i = 0; i < shared.count; ++i) {
      Slot due = shared.next(i, maker);
      if (due.failure) std::rethrow_exception(due.failure);
      if (!take_(i, std::move(*due.result))) return;
    }
  }

 private:
  using Maker = std::invoke_result_t<NewMaker&>;
  using Result = std::invoke_result_t<Maker&, std::size_t>;
  static constexpr std::size_t window = 64;

  struct Slot {
    std::optional<Result> result;
    std::exception_ptr failure;
    [[nodiscard]] bool isFilled() const { return result || failure; }
  };

  // Helpers that come to it only after the run has ended touch nothing else.
  struct Shared {
    Shared(std::size_t all, NewMaker make) : count(all), newMaker(std::move(make)) {}

    void help() {
      std::unique_lock lock(mutex);
      if (ended) return;
      ++active;
      lock.unlock();
      {
        std::optional<Maker> maker;
        lock.lock();
        for (;;) {
          room.wait(lock, [&] { return ended || claimed >= count || mayClaim(); });
          if (ended || claimed >= count) break;
          makeNext(lock, [&]() -> Maker& { return maker ? *maker : maker.emplace(newMaker()); });
        }
        lock.unlock();
      }
      lock.lock();
      if (--active == 0) filled.notify_all();
    }

    // On the caller's thread, which makes results itself rather than wait.
    Slot next(std::size_t i, Maker& maker) {
      std::unique_lock lock(mutex);
      while (!slots[i % window].isFilled()) {
        if (mayClaim())
          makeNext(lock, [&]() -> Maker& { return maker; });
        else
          filled.wait(lock, [&] { return slots[i % window].isFilled(); });
      }
      Slot due = std::exchange(slots[i % window], {});
      taken = i + 1;
      // Woken for single days, helpers would sleep and wake all the time.
      if (claimed == count || claimed - taken <= window / 2) room.notify_all();
      return due;
    }

    template <typename GetMaker>
    void makeNext(std::unique_lock<std::mutex>& lock, GetMaker maker) {
      const std::size_t i = claimed++;
      lock.unlock();
      Slot made;
      try {
        made.result.emplace(maker()(i));
      } catch (...) {
        made.failure = std::current_exception();
      }
      lock.lock();
      slots[i % window] = std::move(made);
      if (i == taken) filled.notify_all();
    }

    [[nodiscard]] bool mayClaim() const { return claimed < count && claimed < taken + window; }

    const std::size_t count;
    NewMaker newMaker;
    std::mutex mutex;
    std::condition_variable room;
    std::condition_variable filled;
    std::vector<Slot> slots{window};
    std::size_t claimed = 0;
    std::size_t taken = 0;
    std::size_t active = 0;
    bool ended = false;
  };

  struct Ending {
    explicit Ending(Shared& of) : shared(of) {}
    Ending(const Ending&) = delete;
    Ending& operator=(const Ending&) = delete;
    ~Ending() {
      std::unique_lock lock(shared.mutex);
      shared.ended = true;
      shared.room.notify_all();
      shared.filled.wait(lock, [&] { return shared.active == 0; });
    }
    Shared& shared;
  };

  std::shared_ptr<Shared> shared_;
  Take take_;
};

}  // namespace nomely
