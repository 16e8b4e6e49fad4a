#pragma once

#include <QObject>
#include <deque>
#include <functional>
#include <mutex>

#include "Platform/Concurrency/MainExecutor.h"

namespace nomely {

// The main executor over Qt's event loop. Jobs run in slices of a few milliseconds, so that input
// and frames come between them however many there are. What an exception leaves is logged: one
// that escaped from an event handler would end the process. Jobs that are left at the end are
// dropped.
class QtMainExecutor final : public QObject, public MainExecutor {
 public:
  // On the thread of the event loop.
  QtMainExecutor() = default;

  void post(std::function<void()> job) override;
  [[nodiscard]] bool isCurrent() const override;

  bool event(QEvent* event) override;

 private:
  void runSlice();
  [[nodiscard]] std::function<void()> next();

  std::mutex mutex_;
  std::deque<std::function<void()>> jobs_;  // guarded by mutex_
  bool isScheduled_ = false;                // guarded by mutex_: an event or a timer is under way
};

}  // namespace nomely
