#pragma once

#include <chrono>
#include <functional>
#include <stop_token>

#include "Platform/Concurrency/JobGroup.h"
#include "Platform/Concurrency/JobPool.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/Timers.h"

namespace nomely {

// Asks for a backup every hour in a process that stays, since the jobs of its start run once. Lives
// on the main executor; never blocks it. Destruction ends a backup under way and waits for that.
class HourlyBackup {
 public:
  static constexpr std::chrono::hours interval{1};

  // What is referred to must outlive it.
  struct Context {
    Timers& timers;
    JobPool& jobs;
    MainExecutor& executor;
  };

  // `backup` runs on a background job; what it throws is logged, and the next hour tries again.
  HourlyBackup(const Context& context, std::function<void(std::stop_token)> backup);
  HourlyBackup(const HourlyBackup&) = delete;
  HourlyBackup& operator=(const HourlyBackup&) = delete;

  // The first comes an hour from here, each other one an hour after the end of the one before.
  void start();

 private:
  void run();

  Context context_;
  std::function<void(std::stop_token)> backup_;
  Timers::Timer next_;
  Lifetime lifetime_;
  JobGroup running_;
};

}  // namespace nomely
