#pragma once

#include <memory>
#include <stop_token>
#include <string>
#include <type_traits>
#include <utility>

#include "Platform/Cancellation.h"
#include "Platform/Concurrency/JobGroup.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Error.h"

namespace nomely {

// What a screen has done off the main executor. Declare it as the last member: destruction asks the
// work to stop, waits for what has begun and calls nothing back. All calls come from the main
// executor.
class BackgroundWork {
 public:
  // Both must outlive this.
  BackgroundWork(MainExecutor& executor, JobPool& pool) : executor_(executor), group_(pool) {}
  ~BackgroundWork() { lifetime_.end(); }

  // Runs `work(stop)` on a background thread, and then on the main executor `then` with what it
  // returned, or `failed` with the text of the Error that it threw. Work that was cancelled calls
  // neither.
  template <typename Work, typename Then, typename Failed>
  void run(Work work, Then then, Failed failed) {
    auto succeed = lifetime_.guard(std::move(then));
    auto fail = lifetime_.guard(std::move(failed));
    group_.submit([&executor = executor_, work = std::move(work), succeed = std::move(succeed),
                   fail = std::move(fail)](const std::stop_token& stop) mutable {
      try {
        if constexpr (std::is_void_v<decltype(work(stop))>) {
          work(stop);
          executor.post(succeed);
        } else {
          auto result = std::make_shared<decltype(work(stop))>(work(stop));
          executor.post([succeed, result]() mutable { succeed(std::move(*result)); });
        }
      } catch (const CancellationError&) {
      } catch (const Error& error) {
        executor.post([fail, text = std::string(error.what())]() mutable { fail(text); });
      }
    });
  }
  template <typename Work, typename Then>
  void run(Work work, Then then) {
    run(std::move(work), std::move(then), [](const std::string&) {});
  }

 private:
  MainExecutor& executor_;
  Lifetime lifetime_;
  JobGroup group_;
};

}  // namespace nomely
