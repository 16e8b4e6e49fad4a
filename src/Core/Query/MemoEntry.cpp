#include "Core/Query/MemoEntry.h"

#include <tuple>

#include "Platform/Text/Unicode.h"

namespace nomely {

bool orderedBefore(const MemoEntry& left, const MemoEntry& right) {
  return std::tie(left.date, left.memo->time, left.memo->seqNumber) >
         std::tie(right.date, right.memo->time, right.memo->seqNumber);
}

bool isVisible(const Memo& memo) {
  return !memo.attachments.empty() || !trimSpaceAndBreaks(memo.body).empty();
}

}  // namespace nomely
