#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "Core/Models/Memo.h"
#include "Platform/Time/Day.h"

namespace nomely {

struct TagUse {
  std::string tag;
  std::int64_t count = 0;
  std::string latestDate;  // of the newest memo that has it: "2026-03-05:000012"

  friend bool operator==(const TagUse&, const TagUse&) = default;
};

// Counts how often each tag is used, hidden ones included. Blanks around a tag are no part of it.
class TagCounts {
 public:
  // Tags last used in the same memo come in the order in which memos were added.
  void add(Day day, const MemoFrontmatter& memo, std::int64_t seqNumber);

  // The most recently used first.
  [[nodiscard]] std::vector<TagUse> rows() &&;

 private:
  std::vector<TagUse> rows_;
  std::unordered_map<std::string, std::size_t> places_;
};

}  // namespace nomely
