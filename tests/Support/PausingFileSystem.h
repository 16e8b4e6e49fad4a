#pragma once

#include <array>
#include <functional>
#include <mutex>
#include <utility>

#include "Support/FaultyFileSystem.h"

namespace nomely::test {

// A file system over another that runs a job inside chosen calls, before they are done: what
// happens at that moment of another thread's work happens there on every run. Safe on any thread.
class PausingFileSystem final : public FaultyFileSystem {
 public:
  enum class Call { open, read, attributes, list };
  using Job = std::function<void()>;

  explicit PausingFileSystem(FileSystem& inner)
      : FaultyFileSystem(inner, {}, [this](const auto& call) { pause(call.name, call.path); }) {}

  // Runs `job` in the next such call for `path`, once.
  void at(Call call, std::filesystem::path path, Job job) {
    const std::lock_guard lock(mutex_);
    static constexpr std::array names{"open", "read", "stat", "list"};
    name_ = names[static_cast<std::size_t>(call)];
    path_ = std::move(path);
    job_ = std::move(job);
  }
  // Whether the job is still to be run.
  [[nodiscard]] bool isPending() {
    const std::lock_guard lock(mutex_);
    return job_ != nullptr;
  }

 private:
  void pause(std::string_view name, const std::filesystem::path& path) {
    Job job;
    {
      const std::lock_guard lock(mutex_);
      if (job_ == nullptr || name != name_ || path != path_) return;
      job = std::exchange(job_, nullptr);
    }
    job();
  }

  std::mutex mutex_;
  std::string_view name_;
  std::filesystem::path path_;
  Job job_;
};

}  // namespace nomely::test
