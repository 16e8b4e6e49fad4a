#include "Core/Query/RootScan.h"

#include <algorithm>
#include <tuple>

#include "Core/Storage/DayStore.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

bool orderedInList(const Memo& left, const Memo& right) {
  const auto rank = [](const Memo& memo) { return std::tuple(memo.lockedOnTop, memo.pinned); };
  return rank(left) != rank(right) ? rank(left) > rank(right) : orderedBeforeInDay(left, right);
}

void sortMemos(std::vector<Memo>& memos, bool (*before)(const Memo&, const Memo&),
               RootScan::Order order) {
  std::ranges::sort(memos, before);
  if (order == RootScan::Order::oldestFirst) std::ranges::reverse(memos);
}

}  // namespace

RootScan::RootScan(StoreContext context, std::stop_token stop)
    : context_(std::move(context)), stop_(std::move(stop)) {}

std::vector<Day> RootScan::days(const MemoFilter& filter, Order order) const {
  std::vector<Day> days;
  if (!context_.files.exists(context_.paths.rootURL)) return days;
  for (const DirectoryEntry& entry : context_.files.listVisible(context_.paths.rootURL))
    if (const auto day = Day::parse(entry.name); day && filter.mayHold(*day)) days.push_back(*day);
  std::ranges::sort(days);
  if (order == Order::newestFirst) std::ranges::reverse(days);
  return days;
}

RootScan::DayMemos RootScan::read(Day day) const {
  DayMemos found;
  const DayStore store(context_);
  try {
    for (const std::int64_t number : store.listNumbers(day)) {
      try {
        if (auto memo = store.memoStore().read(day, number))
          found.memos.push_back(std::move(*memo));
      } catch (const Error& error) {
        found.unreadable.push_back({context_.paths.memoFile(day, number), error.what()});
      }
    }
  } catch (const FileError& error) {
    // A plain file under a day's name is nothing to report.
    if (error.kind() != FileError::Kind::notADirectory)
      found.unreadable.push_back({context_.paths.dayFolder(day), error.what()});
  }
  return found;
}

void RootScan::forEachDay(const MemoFilter& filter, Order order,
                          const std::function<bool(Day, std::vector<Memo>&&)>& take) {
  const std::vector<Day> all = days(filter, order);
  for (std::size_t i = 0; i < all.size(); ++i) {
    throwIfStopped(stop_);
    DayMemos found = read(all[i]);
    if (onUnreadable)
      for (const Unreadable& file : found.unreadable) onUnreadable(file);
    if (!take(all[i], std::move(found.memos))) return;
    if (progress) progress(static_cast<double>(i + 1) / static_cast<double>(all.size()));
  }
}

void RootScan::forEach(const MemoFilter& filter, Order order, const Visit& visit) {
  forEachDay(filter, order, [&](Day day, std::vector<Memo>&& memos) {
    std::erase_if(memos, [&](const Memo& memo) { return !filter.matches(day, memo); });
    sortMemos(memos, orderedInList, order);
    return std::ranges::all_of(memos, [&](Memo& memo) {
      return visit({day, std::make_shared<const Memo>(std::move(memo))});
    });
  });
}

void RootScan::search(const SearchQuery& query, const MemoFilter& filter, Order order,
                      const VisitResult& visit) {
  if (query.isEmpty()) return;
  forEachDay(filter, order, [&](Day day, std::vector<Memo>&& memos) {
    std::erase_if(memos, [&](const Memo& memo) { return !filter.holds(day, memo); });
    sortMemos(memos, orderedBeforeInDay, order);
    return std::ranges::all_of(memos, [&](Memo& memo) {
      const IndexedMemo indexed(std::move(memo));
      return !query.matches(indexed) || visit(query.result(day, indexed));
    });
  });
}

std::vector<TagUse> RootScan::allTags() {
  TagCounts counts;
  forEachDay({}, Order::newestFirst, [&](Day day, std::vector<Memo>&& memos) {
    sortMemos(memos, orderedBeforeInDay, Order::newestFirst);
    for (const Memo& memo : memos) counts.add(day, memo, memo.seqNumber);
    return true;
  });
  return std::move(counts).rows();
}

std::vector<SizedEntry> RootScan::audioBySize(MemoFilter filter, std::size_t most) {
  filter.audio = true;
  std::vector<SizedEntry> largest;  // a heap, the smallest of them first
  forEach(filter, Order::newestFirst, [&](const MemoEntry& entry) {
    largest.push_back({audioBytes(entry, context_), entry});
    std::ranges::push_heap(largest, isLarger);
    if (largest.size() > most) {
      std::ranges::pop_heap(largest, isLarger);
      largest.pop_back();
    }
    return true;
  });
  std::ranges::sort_heap(largest, isLarger);
  return largest;
}

}  // namespace nomely
