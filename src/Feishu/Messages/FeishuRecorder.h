#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>

#include "Feishu/Conversation/FeishuReplies.h"
#include "Feishu/FeishuContext.h"
#include "Feishu/Messages/FeishuInbox.h"
#include "Feishu/Messages/FeishuMemoWriter.h"

namespace nomely {

// Makes a memo of a message that lies in the inbox: fetches what it carries, turns a voice into a
// sound file and text, writes memo and attachments at once, and takes it from the inbox. Blocks as
// long as that takes; any thread.
class FeishuRecorder {
 public:
  // What is referred to must outlive it.
  struct Parts {
    const FeishuContext& context;
    FeishuReplies& replies;  // for its token
    FeishuMemoWriter& writer;
    const FeishuInbox& inbox;
  };

  explicit FeishuRecorder(const Parts& parts) : parts_(parts) {}

  // Failures are logged and in the result. Throws CancellationError when asked to stop; the message
  // is in the inbox then.
  [[nodiscard]] FeishuMemoWriter::WriteResult record(const FeishuInbox::Entry& entry,
                                                     const std::stop_token& stop) const;

 private:
  class Attempt;
  [[nodiscard]] FeishuMemoWriter::WriteResult write(const FeishuInbox::Entry& entry,
                                                    const FeishuMemoWriter::Content& content) const;

  Parts parts_;
};

}  // namespace nomely
