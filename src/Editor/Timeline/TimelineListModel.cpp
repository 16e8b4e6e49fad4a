#include "Editor/Timeline/TimelineListModel.h"

#include <algorithm>

namespace nomely {
namespace {

using Entries = TimelineListModel::Entries;

constexpr unsigned char rankCount = 4;

// Locked memos stand above pinned ones, and those above the rest.
unsigned char rankOf(const Memo& memo) {
  return static_cast<unsigned char>((memo.lockedOnTop ? 0 : 2) + (memo.pinned ? 0 : 1));
}

bool hasIdentityOf(const Memo& listed, const Memo& memo) {
  return listed.memoId && listed.memoId == memo.memoId;
}

Entries::iterator at(Entries& rows, std::size_t index) {
  return rows.begin() + static_cast<std::ptrdiff_t>(index);
}

void moveRow(Entries& rows, std::size_t from, std::size_t to) {
  if (from < to)
    std::rotate(at(rows, from), at(rows, from + 1), at(rows, to + 1));
  else
    std::rotate(at(rows, to), at(rows, from), at(rows, from + 1));
}

}  // namespace

void TimelineListModel::setMode(TimelineMode mode) {
  if (mode != TimelineMode::filtered) membership_ = nullptr;
  timelineMode.set(mode);
}

template <typename Change, typename Rows>
void TimelineListModel::alter(Change change, Rows rows) {
  // An observer of allMemos may change the list again before the rows have followed the change that
  // it is told of. That inner change then settles the rows for both.
  const bool rowsFollow = rowsRevision_ == revision_;
  const std::uint64_t revision = ++revision_;
  allMemos.modify(change);
  if (revision != revision_) return;
  displayMemos.modify([&](Entries& shown) {
    rowsRevision_ = revision;
    if (rowsFollow)
      rows(shown);
    else
      shown = ordered(0, shownCount());
  });
}

std::size_t TimelineListModel::shownCount() const {
  const std::size_t count = ranks_.size();
  return timelineMode.get() == TimelineMode::all ? std::min(displayLimit_, count) : count;
}

Entries TimelineListModel::ordered(std::size_t first, std::size_t last) const {
  Entries entries;
  entries.reserve(last - first);
  std::size_t place = 0;
  for (unsigned char rank = 0; rank < rankCount && place < last; ++rank)
    for (std::size_t i = 0; i < ranks_.size() && place < last; ++i)
      if (ranks_[i] == rank && place++ >= first) entries.push_back(allMemos.get()[i]);
  return entries;
}

std::size_t TimelineListModel::placeOf(std::size_t index) const {
  std::size_t place = 0;
  for (std::size_t i = 0; i < ranks_.size(); ++i)
    if (ranks_[i] < ranks_[index] || (ranks_[i] == ranks_[index] && i < index)) ++place;
  return place;
}

void TimelineListModel::fitRows(Entries& rows) const {
  const std::size_t count = shownCount();
  if (rows.size() > count) {
    rows.erase(at(rows, count), rows.end());
  } else {
    const Entries more = ordered(rows.size(), count);
    rows.insert(rows.end(), more.begin(), more.end());
  }
}

void TimelineListModel::showDay(std::vector<Memo> found) {
  Entries entries;
  entries.reserve(found.size());
  for (const Memo& memo : found)
    entries.push_back({selectedDate.get(), std::make_shared<const Memo>(memo)});
  memos.set(std::move(found));
  show(std::move(entries));
}

void TimelineListModel::show(Entries entries) {
  alter(
      [&](Entries& all) {
        all = std::move(entries);
        ranks_.resize(all.size());
        std::ranges::transform(all, ranks_.begin(),
                               [](const MemoEntry& entry) { return rankOf(*entry.memo); });
      },
      [this](Entries& rows) { rows = ordered(0, shownCount()); });
}

bool TimelineListModel::canShowMore() const {
  return timelineMode.get() == TimelineMode::all &&
         displayMemos.get().size() < allMemos.get().size();
}

void TimelineListModel::setLimit(std::size_t limit) {
  displayLimit_ = limit;
  // Otherwise the change that rows are yet to follow fits them.
  if (rowsRevision_ == revision_) displayMemos.modify([this](Entries& rows) { fitRows(rows); });
}

void TimelineListModel::showMore() {
  if (!canShowMore()) return;
  setLimit(displayLimit_ + displayStep);
}

void TimelineListModel::showToTheEnd() {
  if (!canShowMore()) return;
  setLimit(allMemos.get().size());
}

std::optional<std::size_t> TimelineListModel::indexOf(Day date, std::int64_t seqNumber) const {
  const auto found = std::ranges::find_if(allMemos.get(), [&](const MemoEntry& entry) {
    return entry.date == date && entry.memo->seqNumber == seqNumber;
  });
  if (found == allMemos.get().end()) return std::nullopt;
  return static_cast<std::size_t>(found - allMemos.get().begin());
}

const MemoEntry* TimelineListModel::entryOf(Day date, std::int64_t seqNumber) const {
  const auto index = indexOf(date, seqNumber);
  return index ? &allMemos.get()[*index] : nullptr;
}

Day TimelineListModel::dateOf(const Memo& memo, std::optional<Day> given) const {
  if (given) return *given;
  if (memo.memoId && !memo.memoId->empty())
    for (const MemoEntry& entry : allMemos.get())
      if (hasIdentityOf(*entry.memo, memo)) return entry.date;
  return selectedDate.get();
}

MemoEntry TimelineListModel::ownEntry(const Memo& memo, Day date) const {
  const auto mayBeIt = [&](const Memo& listed) {
    return listed.seqNumber == memo.seqNumber &&
           (!listed.memoId || !memo.memoId || listed.memoId == memo.memoId);
  };
  const MemoEntry* entry = entryOf(date, memo.seqNumber);
  if (entry && mayBeIt(*entry->memo)) return *entry;
  for (const MemoEntry& other : allMemos.get())
    if (hasIdentityOf(*other.memo, memo)) return other;
  if (date == selectedDate.get())
    for (const Memo& listed : memos.get())
      if (mayBeIt(listed)) return {date, std::make_shared<const Memo>(listed)};
  return {date, nullptr};
}

bool TimelineListModel::belongs(const Memo& memo) const {
  return (timelineMode.get() != TimelineMode::pinned || memo.pinned) &&
         (!membership_ || membership_(memo));
}

void TimelineListModel::setEntry(std::size_t index, MemoEntry entry) {
  const std::size_t from = placeOf(index);
  alter(
      [&](Entries& all) {
        ranks_[index] = rankOf(*entry.memo);
        all[index] = entry;
      },
      [&, this](Entries& rows) {
        const std::size_t to = placeOf(index);
        if (from < rows.size() && to < rows.size()) {
          moveRow(rows, from, to);
          rows[to] = entry;
        } else if (from < rows.size()) {
          rows.erase(at(rows, from));
        } else if (to < rows.size()) {
          rows.insert(at(rows, to), entry);
        }
        fitRows(rows);
      });
}

void TimelineListModel::removeEntries(const Gone& isGone) {
  alter(
      [&](Entries& all) {
        std::size_t kept = 0;
        for (std::size_t i = 0; i < all.size(); ++i) {
          if (isGone(all[i].date, *all[i].memo)) continue;
          if (kept != i) all[kept] = std::move(all[i]);
          ranks_[kept++] = ranks_[i];
        }
        all.erase(at(all, kept), all.end());
        ranks_.resize(kept);
      },
      [&](Entries& rows) {
        std::erase_if(rows, [&](const MemoEntry& row) { return isGone(row.date, *row.memo); });
        fitRows(rows);
      });
}

bool TimelineListModel::update(const std::shared_ptr<const Memo>& memo, Day date) {
  ++generation_;
  const auto isIt = [&](const Memo& listed) {
    return memo->memoId ? hasIdentityOf(listed, *memo)
                        : date == selectedDate.get() && listed.seqNumber == memo->seqNumber;
  };
  const auto place = std::ranges::find_if(memos.get(), isIt);
  if (place != memos.get().end())
    memos.modify([&, index = place - memos.get().begin()](std::vector<Memo>& list) {
      list[static_cast<std::size_t>(index)] = *memo;
    });

  const auto index = indexOf(date, memo->seqNumber);
  if (!index) return true;
  if (belongs(*memo)) {
    setEntry(*index, {date, memo});
    return true;
  }
  removeEntries([&](Day other, const Memo& listed) {
    return other == date && listed.seqNumber == memo->seqNumber;
  });
  return false;
}

void TimelineListModel::replace(const Memo& written, Day date,
                                const std::shared_ptr<const Memo>& now) {
  ++generation_;
  const auto place = std::ranges::find(memos.get(), written);
  if (date == selectedDate.get() && place != memos.get().end())
    memos.modify([&, index = place - memos.get().begin()](std::vector<Memo>& list) {
      if (now)
        list[static_cast<std::size_t>(index)] = *now;
      else
        list.erase(list.begin() + index);
    });

  const auto index = indexOf(date, written.seqNumber);
  if (!index || *allMemos.get()[*index].memo != written) return;
  if (now && belongs(*now)) return setEntry(*index, {date, now});
  removeEntries([&](Day other, const Memo& listed) {
    return other == date && listed.seqNumber == written.seqNumber;
  });
}

void TimelineListModel::moveAway(std::int64_t seqNumber, Day from, const Memo& moved, Day to) {
  removeAll(
      [&](Day date, const Memo& memo) { return date == from && memo.seqNumber == seqNumber; });
  const auto hasNumber = [&](const Memo& memo) { return memo.seqNumber == moved.seqNumber; };
  if (selectedDate.get() == to && std::ranges::none_of(memos.get(), hasNumber))
    memos.modify([&](std::vector<Memo>& list) {
      list.push_back(moved);
      std::ranges::stable_sort(list, {}, &Memo::seqNumber);
    });
}

void TimelineListModel::removeAll(const Gone& isGone) {
  ++generation_;
  removeEntries(isGone);
  const auto goes = [&](const Memo& memo) { return isGone(selectedDate.get(), memo); };
  if (std::ranges::any_of(memos.get(), goes))
    memos.modify([&](std::vector<Memo>& list) { std::erase_if(list, goes); });
}

}  // namespace nomely
