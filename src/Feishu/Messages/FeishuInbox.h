#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "Core/Storage/StoreContext.h"
#include "Feishu/Messages/FeishuMessage.h"

namespace nomely {

// Messages that are to become memos and are none yet, so that the platform need not keep them: a
// file each in ".meta/feishu-inbox", for its user alone to read, written once and removed once.
// What could not be written for long, and files that can't be read, are kept in "aside" below it.
// Stateless; any thread. Changes pass the gate, are on the disk when they return, and throw
// FileError, WriteError.
class FeishuInbox {
 public:
  struct Entry {
    std::string name;  // of its file
    FeishuMessage message;
    Moment date;      // when it was sent, else received
    Moment received;  // whole seconds, as `date`
  };

  explicit FeishuInbox(StoreContext context) : context_(std::move(context)) {}

  // Returns it as it lies there.
  [[nodiscard]] Entry put(const FeishuMessage& message, Moment date) const;
  // No for an empty id.
  [[nodiscard]] bool holds(const std::string& messageId) const;
  // One that isn't there is no error.
  void remove(const Entry& entry) const;
  void putAside(const std::string& name) const;

  struct Contents {
    std::vector<Entry> entries;        // the oldest first
    std::vector<std::string> damaged;  // names of files that can't be read as entries
  };
  [[nodiscard]] Contents contents() const;

  struct Counts {
    std::size_t waiting = 0;
    std::size_t aside = 0;
  };
  // For any process to look at.
  [[nodiscard]] static Counts counts(const StoreContext& context);

 private:
  StoreContext context_;
};

}  // namespace nomely
