#pragma once

#include <string>
#include <vector>

#include "CLI/Session.h"
#include "Core/Query/TimelineQueryStore.h"

namespace nomely {

// Memos as the commands print them.
namespace MemoOutput {

// The record's own field names and order with "date" in front; absent optional fields left out.
[[nodiscard]] Json json(const TimelineEntry& entry);

// A heading with the memo's place and marks, its body, its attachments.
[[nodiscard]] std::string text(const TimelineEntry& entry, const Style& style);
// The same with the body drawn as the Markdown that it is.
[[nodiscard]] std::string drawn(const TimelineEntry& entry, const Style& style);
// "2026年3月1日 周日"
[[nodiscard]] std::string dayHeading(Day day);

// The memo in the form that was asked for.
void print(const TimelineEntry& entry, const Session& session);

}  // namespace MemoOutput

// Prints a list as it is produced: memos under a heading for each day, or one JSON array.
class MemoListPrinter {
 public:
  explicit MemoListPrinter(const Session& session) : session_(session), style_(session.style()) {}

  void add(const TimelineEntry& entry);
  // Ends the list.
  void finish();
  [[nodiscard]] std::size_t count() const { return count_; }

 private:
  const Session& session_;
  Style style_;
  std::optional<Day> day_;
  std::size_t count_ = 0;
};

}  // namespace nomely
