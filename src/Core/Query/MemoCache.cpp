#include "Core/Query/MemoCache.h"

#include <algorithm>
#include <tuple>

namespace nomely {
namespace {

// In no well-formed text, so that no needle reaches from one tag into the next.
constexpr char tagSeparator = '\xFF';

bool precedes(const Memo& left, const Memo& right) {
  return std::tie(left.time, left.seqNumber) > std::tie(right.time, right.seqNumber);
}

std::string joinedFolded(const std::vector<std::string>& tags) {
  std::string joined;
  for (const std::string& tag : tags) {
    if (!joined.empty()) joined += tagSeparator;
    joined += foldedText(tag);
  }
  joined.shrink_to_fit();
  return joined;
}

}  // namespace

IndexedMemo::IndexedMemo(Memo memo)
    : memo_(std::move(memo)), foldedTags_(joinedFolded(memo_.tags)) {
  memo_.body.shrink_to_fit();
  if (auto folded = foldedBeyondAscii(memo_.body))
    foldedBody_ = std::make_unique<const std::string>(std::move(*folded));
}

std::shared_ptr<const MemoCache::DayMemos> MemoCache::sortedDay(Day date, std::vector<Memo> memos) {
  std::ranges::stable_sort(memos, precedes);
  auto day = std::make_shared<DayMemos>(DayMemos{date, {}});
  day->memos.reserve(memos.size());
  for (Memo& memo : memos) day->memos.push_back(std::make_shared<IndexedMemo>(std::move(memo)));
  return day;
}

MemoCache::MemoCache(Days days) : days_(std::move(days)) {
  std::erase_if(days_, [](const auto& day) { return !day || day->memos.empty(); });
  for (const auto& day : days_) size_ += day->memos.size();
}

MemoCache::Days::const_iterator MemoCache::position(Day date) const {
  return std::ranges::lower_bound(days_, date, std::greater(),
                                  [](const auto& day) { return day->date; });
}

std::shared_ptr<const MemoCache> MemoCache::withDay(DayMemos changed) const {
  const auto at = position(changed.date);
  const bool isThere = at != days_.end() && (*at)->date == changed.date;
  Days days;
  days.reserve(days_.size() + 1);
  days.insert(days.end(), days_.begin(), at);
  if (!changed.memos.empty()) days.push_back(std::make_shared<DayMemos>(std::move(changed)));
  days.insert(days.end(), isThere ? at + 1 : at, days_.end());
  return std::make_shared<MemoCache>(std::move(days));
}

std::shared_ptr<const MemoCache> MemoCache::with(Memo memo, Day date) const {
  DayMemos changed{date, {}};
  if (const auto at = position(date); at != days_.end() && (*at)->date == date) changed = **at;
  const auto sameNumber = std::ranges::find_if(
      changed.memos, [&](const auto& other) { return other->memo().seqNumber == memo.seqNumber; });
  const auto later = std::ranges::find_if(
      changed.memos, [&](const auto& other) { return precedes(memo, other->memo()); });
  auto indexed = std::make_shared<IndexedMemo>(std::move(memo));
  if (sameNumber != changed.memos.end())
    *sameNumber = std::move(indexed);
  else
    changed.memos.insert(later, std::move(indexed));
  return withDay(std::move(changed));
}

std::shared_ptr<const MemoCache> MemoCache::without(Day date, std::int64_t seqNumber) const {
  const auto at = position(date);
  DayMemos changed{date, {}};
  if (at != days_.end() && (*at)->date == date) changed = **at;
  std::erase_if(changed.memos,
                [&](const auto& memo) { return memo->memo().seqNumber == seqNumber; });
  return withDay(std::move(changed));
}

}  // namespace nomely
