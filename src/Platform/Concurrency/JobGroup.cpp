#include "Platform/Concurrency/JobGroup.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace nomely {

// Shared with the jobs: one that the pool starts after the group is gone finds it ended.
struct JobGroup::State {
  std::stop_source ending;
  std::mutex mutex;
  std::condition_variable ended;
  std::size_t running = 0;  // guarded by mutex

  [[nodiscard]] bool begin() {
    const std::lock_guard lock(mutex);
    if (ending.stop_requested()) return false;
    ++running;
    return true;
  }

  void end() {
    const std::lock_guard lock(mutex);
    if (--running == 0) ended.notify_all();
  }
};

std::shared_ptr<JobGroup::State> JobGroup::makeState() {
  return std::make_shared<State>();
}

JobGroup::~JobGroup() {
  std::unique_lock lock(state_->mutex);
  state_->ending.request_stop();
  state_->ended.wait(lock, [this] { return state_->running == 0; });
}

void JobGroup::submit(std::function<void(std::stop_token)> job, JobPool::Priority priority) {
  pool_.submit(
      [state = state_, job = std::move(job)](const std::stop_token& poolEnding) {
        if (!state->begin()) return;
        const std::unique_ptr<State, void (*)(State*)> end(state.get(), [](State* s) { s->end(); });
        const std::stop_callback forward(poolEnding, [&] { state->ending.request_stop(); });
        job(state->ending.get_token());
      },
      priority);
}

}  // namespace nomely
