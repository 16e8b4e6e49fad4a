#include "Core/Query/MemoEntry.h"

#include <tuple>

#include <fmt/format.h>

#include "Platform/Text/Unicode.h"

namespace nomely {

bool orderedBeforeInDay(const Memo& left, const Memo& right) {
  return std::tie(left.time, left.seqNumber) > std::tie(right.time, right.seqNumber);
}

bool orderedBefore(const MemoEntry& left, const MemoEntry& right) {
  return left.date != right.date ? left.date > right.date
                                 : orderedBeforeInDay(*left.memo, *right.memo);
}

std::string memoKey(Day date, std::int64_t seqNumber) {
  return fmt::format("{}-{}", date.string(), seqNumber);
}

bool isVisible(const Memo& memo) {
  return !memo.attachments.empty() || !trimSpaceAndBreaks(memo.body).empty();
}

}  // namespace nomely
