#pragma once

#include <functional>
#include <string>

#include "Core/Lifecycle/Settling/SettlingResult.h"
#include "Core/Lifecycle/Settling/StandingNotes.h"
#include "Core/Query/SearchIndex.h"
#include "Core/Service/MemoService.h"
#include "Platform/Concurrency/JobGroup.h"
#include "Platform/Concurrency/JobPool.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/Timers.h"

namespace nomely {

// Settles a root (RootSettling) in a process that stays, whenever other programs have been through
// with it for a while. Lives on the main executor; never blocks it. Destruction ends a pass under
// way and waits for that.
class BackgroundSettling {
 public:
  // What is referred to must outlive it.
  struct Context {
    const MemoService& memos;
    SearchIndex& index;
    JobPool& jobs;
    Timers& timers;
    MainExecutor& executor;
  };

  // `onChanged` is called there when a pass has changed what lists show.
  BackgroundSettling(const Context& context, std::function<void()> onChanged);
  BackgroundSettling(const BackgroundSettling&) = delete;
  BackgroundSettling& operator=(const BackgroundSettling&) = delete;

  // A pass; when one is under way, another after it. What fails is logged.
  void run();

  // All memos of an index, for RootSettling; absent where it isn't built.
  [[nodiscard]] static MemoCensus censusOf(SearchIndex& index);
  // Posts Notifications::notesSettled when notes of another computer have come in. Main executor.
  static void tell(const SettlingResult& result);

 private:
  // On a job.
  [[nodiscard]] SettlingResult settle(const std::stop_token& stop) const;
  void take(const SettlingResult& result);

  Context context_;
  std::function<void()> onChanged_;
  bool isRunning_ = false;
  bool hasToRunAgain_ = false;
  Timers::Timer next_;
  Lifetime lifetime_;
  JobGroup running_;
};

}  // namespace nomely
