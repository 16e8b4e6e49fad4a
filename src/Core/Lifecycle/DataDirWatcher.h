#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "Core/Lifecycle/OwnWrites.h"
#include "Core/Storage/StoreContext.h"
#include "Platform/Concurrency/QueueTimers.h"
#include "Platform/Concurrency/SerialQueue.h"
#include "Platform/Concurrency/Timers.h"
#include "Platform/Files/FileEvents.h"

namespace nomely {

// Notices notes that other programs wrote, other processes of this one among them, and that the
// root was replaced or is gone. In the numbers that are left to other programs this one's own
// writes are told of, too. Opens no file. Any thread may call it; it does nothing there but wait
// for its queue.
class DataDirWatcher {
 public:
  static constexpr std::int64_t firstNumber = 901;
  static constexpr std::int64_t lastNumber = 999;
  static constexpr std::chrono::milliseconds debounce{800};
  static constexpr std::chrono::seconds quietInterval{2};
  static constexpr std::chrono::seconds retryInterval{30};

  // What is told, on the watcher's queue.
  struct Observer {
    // Notes may have come, changed or gone.
    std::function<void()> onExternalWrite;
    // The path names another folder than when this was built or last told of it, or one again.
    std::function<void()> onRootReplaced = [] {};
    // There is no folder, or none any more.
    std::function<void()> onRootMissing = [] {};
    // Another program wrote in the days' folders, notes or what may be meant for some, and nobody
    // has since for a while.
    std::function<void()> onQuiet = [] {};
  };

  // What is referred to must outlive it. Starts nothing.
  DataDirWatcher(const StoreContext& storage, FileEvents& events, Timers& timers,
                 Observer observer);
  ~DataDirWatcher();
  DataDirWatcher(const DataDirWatcher&) = delete;
  DataDirWatcher& operator=(const DataDirWatcher&) = delete;

  // Returns before anything is watched. What can't be watched is tried again every 30 seconds.
  // Nothing happens when it was started.
  void start();
  // Once it has returned nothing is told. May be started again.
  void stop();

  // Makes the root that there is by now the one whose replacement is told, where there was none.
  void rememberRoot();

 private:
  enum class Root { asBefore, replaced, missing };

  // Returns the root that is there.
  std::optional<FolderIdentity> startStream();
  void startAgain();
  void scheduleLook();
  void look();
  [[nodiscard]] std::optional<FolderIdentity> presentRoot() const;
  Root tellOf(const std::optional<FolderIdentity>& found);
  void enqueue(const FileEventBatch& batch);
  [[nodiscard]] bool isInDay(const std::filesystem::path& file) const;
  [[nodiscard]] bool isThere(const std::filesystem::path& file) const;
  [[nodiscard]] bool takeForeign();
  void notify();
  void awaitQuiet();

  std::filesystem::path root_;
  FileManager files_;
  FileEvents& events_;
  Observer observer_;
  SerialQueue queue_{"com.tarvik.nomely.datadirwatcher"};
  QueueTimers timers_;
  // The rest is touched on the queue alone.
  std::string canonicalRoot_;  // ends in "/": no sibling's path begins with it
  std::optional<FolderIdentity> known_;
  bool isMissing_ = false;
  bool isStarted_ = false;
  bool hasFailed_ = false;  // which is logged once
  std::unique_ptr<FileEventStream> stream_;
  std::optional<FolderIdentity> watched_;    // by the stream, from its start on
  std::set<std::filesystem::path> changed_;  // Markdown files, told since the last notification
  bool isAnyNote_ = false;                   // others' notes may have changed since then
  bool isUnsettled_ = false;                 // others have written since the last quiet
  Timers::Timer fire_;                       // the notification to come
  Timers::Timer quiet_;
  Timers::Timer look_;
  OwnWrites own_;  // told of writes on any thread
};

}  // namespace nomely
