#include "Desktop/Base/QtMainExecutor.h"

#include <QCoreApplication>
#include <QEvent>
#include <QThread>
#include <QTimerEvent>
#include <chrono>
#include <exception>
#include <utility>

#include "Platform/System/Log.h"

namespace nomely {
namespace {

constexpr std::chrono::milliseconds slice{4};

void runLogged(const std::function<void()>& job) {
  try {
    job();
  } catch (const std::exception& error) {
    Log::error(LogChannel::app, "主线程上的任务失败：{}", error.what());
  }
}

}  // namespace

void QtMainExecutor::post(std::function<void()> job) {
  const std::lock_guard lock(mutex_);
  jobs_.push_back(std::move(job));
  if (!std::exchange(isScheduled_, true))
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

bool QtMainExecutor::isCurrent() const {
  return QThread::currentThread() == thread();
}

bool QtMainExecutor::event(QEvent* event) {
  if (event->type() == QEvent::Timer) {
    killTimer(static_cast<QTimerEvent*>(event)->timerId());
    runSlice();
    return true;
  }
  if (event->type() == QEvent::User) {
    runSlice();
    return true;
  }
  return QObject::event(event);
}

std::function<void()> QtMainExecutor::next() {
  const std::lock_guard lock(mutex_);
  if (jobs_.empty()) {
    isScheduled_ = false;
    return nullptr;
  }
  std::function<void()> job = std::move(jobs_.front());
  jobs_.pop_front();
  return job;
}

void QtMainExecutor::runSlice() {
  const auto end = std::chrono::steady_clock::now() + slice;
  do {
    const std::function<void()> job = next();
    if (!job) return;
    runLogged(job);
  } while (std::chrono::steady_clock::now() < end);
  // A timer of zero comes after the events that wait, posted ones would come before them.
  startTimer(0);
}

}  // namespace nomely
