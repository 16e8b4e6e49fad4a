#pragma once

#include <atomic>
#include <chrono>
#include <fstream>
#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <thread>

#include <unistd.h>

namespace nomely::test {

constexpr std::chrono::seconds longestWait{30};

// What another thread sets. A test fails instead of waiting for ever.
template <typename Value>
Value inTime(std::promise<Value>& promise) {
  std::future<Value> future = promise.get_future();
  if (future.wait_for(longestWait) != std::future_status::ready)
    throw std::runtime_error("nothing came in time");
  return future.get();
}

// Returns once that holds, whoever brings it about.
inline void eventually(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + longestWait;
  for (; !condition(); std::this_thread::yield())
    if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("it never came");
}

// Returns once a thread of this process, which gettid(2) names, waits for something.
inline void awaitSleep(pid_t thread) {
  eventually([&] {
    std::ifstream stream("/proc/self/task/" + std::to_string(thread) + "/stat");
    const std::string text((std::istreambuf_iterator<char>(stream)), {});
    return text.substr(text.rfind(')') + 1).starts_with(" S");
  });
}

// A thread that does `job`, once that waits for something.
inline std::jthread waitingThread(std::function<void()> job) {
  std::atomic<pid_t> started = 0;
  std::jthread thread([&started, job = std::move(job)] {
    started = ::gettid();
    job();
  });
  while (started == 0) std::this_thread::yield();
  awaitSleep(started);
  return thread;
}

}  // namespace nomely::test
