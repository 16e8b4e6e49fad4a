#pragma once

#include <functional>
#include <mutex>
#include <utility>

#include "Platform/Files/FileSystem.h"

namespace nomely::test {

// A file system over another that runs a job inside chosen calls, before they are done: what
// happens at that moment of another thread's work happens there on every run. Safe on any thread.
class PausingFileSystem final : public FileSystem {
 public:
  enum class Call { open, attributes, list };
  using Job = std::function<void()>;

  explicit PausingFileSystem(FileSystem& inner) : inner_(inner) {}

  // Runs `job` in the next such call for `path`, once.
  void at(Call call, std::filesystem::path path, Job job) {
    const std::lock_guard lock(mutex_);
    call_ = call;
    path_ = std::move(path);
    job_ = std::move(job);
  }
  // Whether the job is still to be run.
  [[nodiscard]] bool isPending() {
    const std::lock_guard lock(mutex_);
    return job_ != nullptr;
  }

  std::unique_ptr<File> open(const std::filesystem::path& path, OpenMode mode,
                             LinkPolicy links) override {
    pause(Call::open, path);
    return inner_.open(path, mode, links);
  }
  std::optional<FileAttributes> attributes(const std::filesystem::path& path,
                                           LinkPolicy links) override {
    pause(Call::attributes, path);
    return inner_.attributes(path, links);
  }
  std::vector<DirectoryEntry> list(const std::filesystem::path& directory) override {
    pause(Call::list, directory);
    return inner_.list(directory);
  }
  bool makeDirectory(const std::filesystem::path& path, unsigned permissions) override {
    return inner_.makeDirectory(path, permissions);
  }
  void rename(const std::filesystem::path& from, const std::filesystem::path& to,
              Replacement replacement) override {
    inner_.rename(from, to, replacement);
  }
  bool remove(const std::filesystem::path& path) override { return inner_.remove(path); }
  void syncDirectory(const std::filesystem::path& path) override { inner_.syncDirectory(path); }

 private:
  void pause(Call call, const std::filesystem::path& path) {
    Job job;
    {
      const std::lock_guard lock(mutex_);
      if (job_ == nullptr || call != call_ || path != path_) return;
      job = std::exchange(job_, nullptr);
    }
    job();
  }

  FileSystem& inner_;
  std::mutex mutex_;
  Call call_{};
  std::filesystem::path path_;
  Job job_;
};

}  // namespace nomely::test
