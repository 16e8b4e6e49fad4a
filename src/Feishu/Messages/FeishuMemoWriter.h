#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Service/MemoService.h"
#include "Core/Storage/MemoPlace.h"
#include "Feishu/Messages/FeishuDayMarks.h"

namespace nomely {

// Makes memos of messages, each message once: a memo bears its message's id as a hidden tag. Every
// call is one write of the gate. Any thread.
class FeishuMemoWriter {
 public:
  struct WriteResult {
    enum class Kind {
      success,
      duplicate,         // there is one already
      attachmentFailed,  // an attachment could not be stored
      failure,
    };
    Kind kind = Kind::success;
    std::optional<MemoPlace> place = {};  // of a success
    std::string reason = {};              // of a failure
    // Whether the message is in the diary.
    [[nodiscard]] bool stands() const { return kind == Kind::success || kind == Kind::duplicate; }
  };

  struct Content {
    std::string body = {};
    std::string messageId = {};  // empty when it came with none
    Moment date = {};            // gives the memo its day and time
    std::vector<MemoService::IncomingFile> files = {};
  };

  explicit FeishuMemoWriter(const MemoService& memos) : memos_(memos), marks_(memos.days()) {}

  // What a memo of that text is tagged with. Tags in the text that begin with "_" are not taken.
  [[nodiscard]] static std::vector<std::string> resolveTags(
      std::string_view body, const std::string& messageId,
      const std::vector<std::string>& extraTags = {});

  // Whether a memo of that day, or of the one before, has come from that message. No for an empty
  // id.
  [[nodiscard]] bool isDuplicateMessageId(const std::string& messageId, Day day);
  // Whether a memo of that day has come from the bot with the same text.
  [[nodiscard]] bool isDuplicateBody(std::string_view body, Day day);

  // Unless there is one by the message's id or, for the first, with the same text.
  [[nodiscard]] WriteResult writeMemo(const Content& content);
  [[nodiscard]] WriteResult writeMemoWithAttachments(const Content& content);

 private:
  enum class SameBody { isDuplicate, isAnother };
  [[nodiscard]] WriteResult write(const Content& content, SameBody sameBody);
  // Inside a write.
  [[nodiscard]] bool knowsMessage(const std::string& messageId, Day day);
  [[nodiscard]] bool knowsBody(std::string_view body, Day day);
  [[nodiscard]] MemoPlace create(const Content& content, Day day);

  const MemoService& memos_;
  FeishuDayMarks marks_;  // touched inside the gate
};

}  // namespace nomely
