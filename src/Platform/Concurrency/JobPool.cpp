#include "Platform/Concurrency/JobPool.h"

#include <algorithm>
#include <atomic>
#include <exception>

#include "Platform/System/Log.h"

namespace nomely {

JobPool::JobPool(std::size_t threads)
    : limit_(threads > 0 ? threads : std::max(1U, std::thread::hardware_concurrency())) {}

JobPool::~JobPool() {
  {
    const std::lock_guard lock(mutex_);
    closing_ = true;
    for (auto& queue : waiting_) queue.clear();
  }
  ending_.request_stop();
  for (std::jthread& thread : threads_) thread.request_stop();
}

void JobPool::submit(Job job, Priority priority) {
  {
    const std::lock_guard lock(mutex_);
    if (closing_) return;
    if (threads_.size() < limit_)
      threads_.emplace_back([this](std::stop_token stopping) { work(std::move(stopping)); });
    waiting_[static_cast<std::size_t>(priority)].push_back(std::move(job));
  }
  available_.notify_one();
}

namespace {

// Shared with helpers that may come to it only after the loop has ended; those touch nothing else.
struct Loop {
  std::atomic<std::size_t> next{0};
  std::size_t count = 0;
  std::mutex mutex;
  std::condition_variable ended;
  std::size_t active = 0;
  std::exception_ptr failure;
};

void drain(Loop& loop, const std::function<void(std::size_t)>& body) {
  for (std::size_t i = loop.next.fetch_add(1); i < loop.count; i = loop.next.fetch_add(1)) {
    try {
      body(i);
    } catch (...) {
      const std::lock_guard lock(loop.mutex);
      if (!loop.failure) loop.failure = std::current_exception();
      loop.next = loop.count;
    }
  }
}

}  // namespace

void JobPool::parallelFor(std::size_t count, const std::function<void(std::size_t)>& body) {
  const auto loop = std::make_shared<Loop>();
  loop->count = count;
  const std::size_t helpers = std::min(limit_, count > 0 ? count - 1 : 0);
  for (std::size_t i = 0; i < helpers; ++i) {
    submit([loop, &body](const std::stop_token&) {
      {
        const std::lock_guard lock(loop->mutex);
        if (loop->next >= loop->count) return;  // too late: `body` may be gone
        ++loop->active;
      }
      drain(*loop, body);
      const std::lock_guard lock(loop->mutex);
      if (--loop->active == 0) loop->ended.notify_all();
    });
  }
  drain(*loop, body);
  std::unique_lock lock(loop->mutex);
  loop->ended.wait(lock, [&] { return loop->active == 0; });
  if (loop->failure) std::rethrow_exception(loop->failure);
}

void JobPool::work(std::stop_token stopping) {
  for (;;) {
    Job job;
    {
      std::unique_lock lock(mutex_);
      const auto ready = [&] { return !waiting_[0].empty() || !waiting_[1].empty(); };
      if (!available_.wait(lock, stopping, ready)) return;
      auto& queue = waiting_[0].empty() ? waiting_[1] : waiting_[0];
      job = std::move(queue.front());
      queue.pop_front();
    }
    runLogged(job);
  }
}

void JobPool::runLogged(const Job& job) const {
  try {
    job(ending_.get_token());
  } catch (const std::exception& error) {
    Log::error(LogChannel::app, "⚠️ JobPool.submit: {}", error.what());
  } catch (...) {
    Log::error(LogChannel::app, "⚠️ JobPool.submit: unknown exception");
  }
}

}  // namespace nomely
