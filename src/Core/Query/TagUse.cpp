#include "Core/Query/TagUse.h"

#include <algorithm>
#include <functional>

#include <fmt/format.h>

#include "Platform/Text/Unicode.h"

namespace nomely {

void TagCounts::add(Day day, const MemoFrontmatter& memo, std::int64_t seqNumber) {
  if (memo.tags.empty()) return;
  const std::string key = fmt::format("{}:{:06}", day.string(), seqNumber);
  for (const std::string& text : memo.tags) {
    const std::string tag(trimHorizontal(text));
    if (tag.empty()) continue;
    const auto [place, isNew] = places_.try_emplace(tag, rows_.size());
    if (isNew) rows_.push_back({.tag = tag, .count = 0, .latestDate = {}});
    TagUse& row = rows_[place->second];
    ++row.count;
    row.latestDate = std::max(row.latestDate, key);
  }
}

std::vector<TagUse> TagCounts::rows() && {
  std::ranges::stable_sort(rows_, std::greater(), &TagUse::latestDate);
  return std::move(rows_);
}

}  // namespace nomely
