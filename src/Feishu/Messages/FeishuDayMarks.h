#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>

#include "Core/Storage/DayStore.h"

namespace nomely {

// What the memos of a day tell about the messages that they came from, so that a message which
// comes again is known whatever the day holds. A day is read when it is first asked for, and again
// once its folder has changed by other hands: those of another program, of another process, or of
// the user. Everything is to be called inside a write of the gate, from any thread.
class FeishuDayMarks {
 public:
  // On a memo as "_feishu_msg_" and the message's id.
  static constexpr const char* messageTag = "_feishu_msg_";
  // What `source` says of such a memo.
  static constexpr const char* source = "feishu";

  struct Marks {
    std::unordered_set<std::string> messageIds;
    std::unordered_set<std::string> bodies;  // of memos that came from the bot, trimmed
    std::int64_t highest = 0;                // of the day's numbers
  };

  explicit FeishuDayMarks(const DayStore& days) : days_(days) {}

  // Till the next call of any kind. What can't be read is left out, unless that may pass: then
  // throws FileError.
  [[nodiscard]] const Marks& of(Day day);

  // A memo was written in the same write of the gate as `of`, which nothing else has changed since.
  void add(const Memo& memo, Day day);
  // It can't be told what a failed write has left.
  void forget(Day day) { known_.erase(day); }

 private:
  // By which a folder's entries are known to be the same.
  struct Stamp {
    Moment modified;
    std::uint64_t fileNumber = 0;
    friend bool operator==(const Stamp&, const Stamp&) = default;
  };
  struct Known {
    Marks marks;
    Stamp stamp;
  };

  [[nodiscard]] std::optional<Stamp> stampOf(Day day) const;
  [[nodiscard]] bool hasNumberAfter(Day day, std::int64_t highest) const;
  [[nodiscard]] Marks read(Day day) const;
  static void mark(Marks& marks, const Memo& memo);

  const DayStore& days_;
  std::map<Day, Known> known_;
  const Marks none_ = {};
};

}  // namespace nomely
