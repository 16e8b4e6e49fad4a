#include "Core/Query/MemoCache.h"

#include <algorithm>

namespace nomely {
namespace {

// A byte that occurs in no well-formed text, so that no needle matches across two tags.
constexpr char tagSeparator = '\xFF';

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

IndexedMemo::IndexedMemo(Memo&& memo)
    : memo_(std::move(memo)), foldedTags_(joinedFolded(memo_.tags)) {
  memo_.body.shrink_to_fit();
  if (isSearchableAsItIs(memo_.body)) return;
  if (auto folded = foldedBeyondAscii(memo_.body))
    foldedBody_ = std::make_unique<const std::string>(std::move(*folded));
}

MemoCache::DayMemos::DayMemos(Day date, Memos memos) : date_(date), memos_(std::move(memos)) {
  texts_.reserve(memos_.size());
  for (const auto& memo : memos_) texts_.push_back(memo->text());
}

void MemoCache::DayMemos::makeFilter() const {
  std::vector<std::string_view> texts;
  for (const auto& memo : memos_) {
    texts.push_back(memo->text().body);
    texts.push_back(memo->text().tags);
  }
  auto made = std::make_unique<const BigramFilter>(texts);
  const BigramFilter* none = nullptr;
  if (filter_.compare_exchange_strong(none, made.get())) (void)made.release();
}

std::shared_ptr<const MemoCache::DayMemos> MemoCache::sortedDay(Day date, Memos memos) {
  std::ranges::sort(memos, [](const auto& left, const auto& right) {
    return orderedBeforeInDay(left->memo(), right->memo());
  });
  return std::make_shared<const DayMemos>(date, std::move(memos));
}

MemoCache::MemoCache(Days days) : days_(std::move(days)) {
  std::erase_if(days_, [](const auto& day) { return !day || day->memos().empty(); });
}

MemoCache::Days::const_iterator MemoCache::position(Day date) const {
  return std::ranges::lower_bound(days_, date, std::greater(),
                                  [](const auto& day) { return day->date(); });
}

MemoCache::Memos MemoCache::memosOf(Day date) const {
  const auto at = position(date);
  return at != days_.end() && (*at)->date() == date ? (*at)->memos() : Memos();
}

std::shared_ptr<const MemoCache> MemoCache::withDay(Day date, Memos memos) const {
  const auto at = position(date);
  const bool isThere = at != days_.end() && (*at)->date() == date;
  Days days;
  days.reserve(days_.size() + 1);
  days.insert(days.end(), days_.begin(), at);
  if (!memos.empty()) days.push_back(std::make_shared<const DayMemos>(date, std::move(memos)));
  days.insert(days.end(), isThere ? at + 1 : at, days_.end());
  auto changed = std::make_shared<MemoCache>(std::move(days));
  changed->filtersClaimed_ = filtersClaimed_.load();
  return changed;
}

std::shared_ptr<const MemoCache> MemoCache::with(Memo memo, Day date) const {
  Memos memos = memosOf(date);
  const auto sameNumber = std::ranges::find_if(
      memos, [&](const auto& other) { return other->memo().seqNumber == memo.seqNumber; });
  const auto later = std::ranges::find_if(
      memos, [&](const auto& other) { return orderedBeforeInDay(memo, other->memo()); });
  auto indexed = std::make_shared<IndexedMemo>(std::move(memo));
  if (sameNumber != memos.end())
    *sameNumber = std::move(indexed);
  else
    memos.insert(later, std::move(indexed));
  return withDay(date, std::move(memos));
}

std::shared_ptr<const MemoCache> MemoCache::without(Day date, std::int64_t seqNumber) const {
  Memos memos = memosOf(date);
  std::erase_if(memos, [&](const auto& memo) { return memo->memo().seqNumber == seqNumber; });
  return withDay(date, std::move(memos));
}

}  // namespace nomely
