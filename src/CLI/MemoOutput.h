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
[[nodiscard]] std::string drawn(const TimelineEntry& entry, const Style& style, std::size_t width);
// The first line of a body that is not blank, without tabs; empty for an empty body.
[[nodiscard]] std::string firstLine(std::string_view body);
// "REF<tab>time<tab>first line", for other programs to cut.
[[nodiscard]] std::string oneLine(std::string_view reference, std::string_view time,
                                  std::string_view body);

// The memo in the form that was asked for.
void print(const TimelineEntry& entry, const Session& session);
// The same for what has just been stored: when nothing can be printed, the error says that the memo
// is stored all the same.
void printStored(const TimelineEntry& entry, const Session& session);
// One memo as itself, several as a list.
void printStored(const std::vector<TimelineEntry>& entries, const Session& session);

}  // namespace MemoOutput

enum class ListForm { full, oneLine };

// Prints a list as it is produced: memos under a heading for each day, a line each, or one JSON
// array.
class MemoListPrinter {
 public:
  explicit MemoListPrinter(const Session& session, ListForm form = ListForm::full)
      : session_(session), style_(session.style()), form_(form) {}

  void add(const TimelineEntry& entry);
  // Ends the list.
  void finish();
  [[nodiscard]] std::size_t count() const { return count_; }

 private:
  const Session& session_;
  Style style_;
  ListForm form_;
  std::optional<Day> day_;
  std::size_t count_ = 0;
};

}  // namespace nomely
