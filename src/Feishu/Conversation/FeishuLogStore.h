#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Core/Storage/StoreContext.h"

namespace nomely {

struct FeishuLogEntry {
  enum class Direction { incoming, outgoing };
  std::string id;  // a UUID
  Direction direction = Direction::incoming;
  Moment timestamp;
  std::string text;
  friend bool operator==(const FeishuLogEntry&, const FeishuLogEntry&) = default;
};

// The last 200 messages exchanged with the bot, in ".meta/feishu-log.jsonl", for its user alone to
// read: a help for finding out what went wrong, not a part of the diary. Failures are logged. Safe
// on any thread; other processes may use the same file.
class FeishuLogStore {
 public:
  static constexpr std::size_t mostEntries = 200;

  // The one of that file.
  [[nodiscard]] static std::shared_ptr<FeishuLogStore> of(const StoreContext& storage);

  // Return at once; what is logged is written in order on a queue of its own.
  void logIncoming(const std::string& text);
  void logOutgoing(const std::string& text);

  void append(const FeishuLogEntry& entry);
  // The oldest first. What was handed over before is in it.
  [[nodiscard]] std::vector<FeishuLogEntry> load();
  // Throws FileError, WriteError.
  void clear();
};

}  // namespace nomely
