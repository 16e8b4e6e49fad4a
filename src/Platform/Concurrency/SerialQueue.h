#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

namespace nomely {

// Runs jobs one at a time in the order of submission, whatever thread they come from. `sync` jobs
// run on the caller's own thread, `async` jobs on a thread that the queue starts with the first of
// them. Destruction waits for every job.
class SerialQueue {
 public:
  explicit SerialQueue(std::string label) : label_(std::move(label)) {}
  ~SerialQueue();
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  [[nodiscard]] const std::string& label() const { return label_; }

  // Waits for this job's turn, runs it and returns; what it throws comes back to the caller. Must
  // not be called on the queue itself: it would wait for its own end.
  template <typename Body>
  decltype(auto) sync(Body&& body) {
    const Turn turn(*this);
    return std::forward<Body>(body)();
  }

  // Runs `job` later. An exception that escapes it is logged.
  void async(std::function<void()> job);

  // Whether the calling thread is running a job of this queue.
  [[nodiscard]] bool isCurrent() const;

 private:
  // Holds the queue from the moment the caller's turn comes until it is destroyed.
  class Turn {
   public:
    explicit Turn(SerialQueue& queue);
    ~Turn();
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    friend class SerialQueue;
    Turn(SerialQueue& queue, std::uint64_t ticket);

    SerialQueue& queue_;
    Turn* outer_;  // the turn on another queue inside which this one runs
  };

  struct Job {
    std::uint64_t ticket;
    std::function<void()> run;
  };

  [[nodiscard]] std::uint64_t takeTicket();
  void work();

  static thread_local Turn* innermost_;

  std::string label_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::uint64_t nextTicket_ = 0;
  std::uint64_t serving_ = 0;
  std::deque<Job> jobs_;
  bool closing_ = false;
  std::thread worker_;
};

}  // namespace nomely
