#pragma once

#include <string>

#include "CLI/Terminal.h"
#include "Core/Models/Memo.h"

namespace nomely {

// What changed from an earlier version of a memo to a later one, by the lines of their files.
class HistoryDiff {
 public:
  HistoryDiff(const Memo& before, const Memo& after);

  [[nodiscard]] bool isEmpty() const { return before_ == after_; }
  // As diff(1) -u draws it.
  [[nodiscard]] std::string text(const Style& style) const;

 private:
  std::string before_;
  std::string after_;
};

}  // namespace nomely
