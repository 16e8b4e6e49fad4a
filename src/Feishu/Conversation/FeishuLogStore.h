#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Core/Storage/BotFiles.h"
#include "Core/Storage/StoreContext.h"
#include "Feishu/Conversation/FeishuLogEntry.h"
#include "Platform/Concurrency/SerialQueue.h"

namespace nomely {

// The last 200 messages exchanged with the bot, in ".meta/feishu-log.jsonl", for its user alone to
// read: a help for finding out what went wrong, not a part of the diary. Nobody waits for it and no
// failure of it is anybody's but its own: what is logged is written in order on a queue of its own,
// without waiting for the disk, and failures go to the program's log. Each change is announced as
// Notifications::feishuLogChanged. Safe on any thread; other processes may use the same file.
class FeishuLogStore {
 public:
  static constexpr std::size_t mostEntries = BotFiles::mostLogLines;

  // The one of that root, as long as somebody holds it.
  [[nodiscard]] static std::shared_ptr<FeishuLogStore> of(const StoreContext& storage);
  // Writes what was handed over.
  ~FeishuLogStore() = default;
  FeishuLogStore(const FeishuLogStore&) = delete;
  FeishuLogStore& operator=(const FeishuLogStore&) = delete;

  // These three return at once.
  void logIncoming(const std::string& text);
  void logOutgoing(const std::string& text);
  void append(FeishuLogEntry entry);

  // The oldest first; what was handed over before is in it. Throws FileError. Not to be called
  // inside a write of the gate, for which the queue may be waiting.
  [[nodiscard]] std::vector<FeishuLogEntry> load();
  // Throws FileError, WriteError.
  void clear();

 private:
  explicit FeishuLogStore(const StoreContext& storage);

  void log(FeishuLogEntry::Direction direction, const std::string& text);
  void writePending();
  template <typename Body>
  decltype(auto) onQueue(Body body);
  // Inside a write of the gate.
  void write(const std::vector<std::string>& added);
  // Makes `cache_` what the file holds.
  void refresh();

  StoreContext storage_;
  std::filesystem::path file_;
  std::mutex pendingLock_;
  std::vector<FeishuLogEntry> pending_;  // guarded by pendingLock_
  // The rest is touched on the queue only.
  std::optional<std::vector<std::string>> cache_;  // lines; encoding 200 each time would be slow
  std::optional<FileAttributes> seen_;  // the file that `cache_` is of; absent when there was none
  bool endsInHalfLine_ = false;
  SerialQueue queue_{"Nomely.feishu.log"};
};

}  // namespace nomely
