#include "Desktop/Models/ListDiff.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>

namespace nomely::ListDiff {
namespace {

using Entries = std::vector<MemoEntry>;
constexpr auto none = static_cast<std::size_t>(-1);

bool isSameRow(const MemoEntry& left, const MemoEntry& right) {
  if (left.memo == right.memo) return left.date == right.date;
  if (left.memo->memoId || right.memo->memoId) return left.memo->memoId == right.memo->memoId;
  return left.date == right.date && left.memo->seqNumber == right.memo->seqNumber;
}

bool isUnchanged(const MemoEntry& left, const MemoEntry& right) {
  return left.date == right.date &&
         (left.memo == right.memo || isStoredAs(*left.memo, *right.memo));
}

std::string keyOf(const MemoEntry& entry) {
  return entry.memo->memoId ? *entry.memo->memoId : memoKey(entry.date, entry.memo->seqNumber);
}

// Adds one row to the steps: neighbours of one kind become one step.
void add(std::vector<Step>& steps, Step::Kind kind, std::size_t row) {
  if (!steps.empty() && steps.back().kind == kind && steps.back().first + steps.back().count == row)
    ++steps.back().count;
  else
    steps.push_back({kind, row, 1, 0});
}

// The members of a longest rising subsequence of `places`, without those that are `none`.
std::vector<bool> risingMembers(const std::vector<std::size_t>& places) {
  std::vector<std::size_t> tails;  // indices into places
  std::vector<std::size_t> previous(places.size(), none);
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (places[i] == none) continue;
    const auto tail = std::ranges::lower_bound(tails, places[i], {},
                                               [&](std::size_t index) { return places[index]; });
    if (tail != tails.begin()) previous[i] = *(tail - 1);
    if (tail == tails.end())
      tails.push_back(i);
    else
      *tail = i;
  }
  std::vector<bool> members(places.size(), false);
  for (std::size_t i = tails.empty() ? none : tails.back(); i != none; i = previous[i])
    members[i] = true;
  return members;
}

// The middle of two lists, between what is equal at both ends.
struct Middle {
  const Entries& before;
  const Entries& after;
  std::size_t first = 0;
  std::size_t beforeEnd = 0;
  std::size_t afterEnd = 0;
};

// Whether one row alone changed its place.
bool isOneMove(const Middle& middle, std::size_t from, std::size_t to) {
  if (!isSameRow(middle.before[from], middle.after[to])) return false;
  const std::size_t shift = from < to ? 1 : 0;
  for (std::size_t row = std::min(from, to); row < std::max(from, to); ++row)
    if (!isSameRow(middle.before[row + shift], middle.after[row + 1 - shift])) return false;
  return true;
}

std::vector<Step> stepsOf(const Middle& middle) {
  if (middle.beforeEnd == middle.afterEnd && middle.beforeEnd > middle.first) {
    const std::size_t last = middle.beforeEnd - 1;
    if (isOneMove(middle, middle.first, last)) return {{Step::Kind::move, middle.first, 1, last}};
    if (isOneMove(middle, last, middle.first)) return {{Step::Kind::move, last, 1, middle.first}};
  }
  std::unordered_map<std::string, std::size_t> places;
  for (std::size_t i = middle.first; i < middle.afterEnd; ++i)
    places.emplace(keyOf(middle.after[i]), i);
  std::vector<std::size_t> targets;
  for (std::size_t i = middle.first; i < middle.beforeEnd; ++i) {
    const auto found = places.find(keyOf(middle.before[i]));
    targets.push_back(found == places.end() ? none : found->second);
  }
  const std::vector<bool> stays = risingMembers(targets);
  std::vector<Step> steps;
  std::vector<bool> isKept(middle.afterEnd, false);
  for (std::size_t i = targets.size(); i-- > 0;) {
    if (stays[i]) {
      isKept[targets[i]] = true;
    } else if (!steps.empty() && steps.back().first == middle.first + i + 1) {
      --steps.back().first;
      ++steps.back().count;
    } else {
      steps.push_back({Step::Kind::remove, middle.first + i, 1, 0});
    }
  }
  for (std::size_t i = middle.first; i < middle.afterEnd; ++i)
    if (!isKept[i]) add(steps, Step::Kind::insert, i);
  return steps;
}

}  // namespace

std::vector<Step> steps(const Entries& before, const Entries& after) {
  std::size_t first = 0;
  const std::size_t shorter = std::min(before.size(), after.size());
  while (first < shorter && isSameRow(before[first], after[first])) ++first;
  std::size_t same = 0;
  while (same < shorter - first &&
         isSameRow(before[before.size() - 1 - same], after[after.size() - 1 - same]))
    ++same;
  const Middle middle{before, after, first, before.size() - same, after.size() - same};
  std::vector<Step> found = stepsOf(middle);

  // Rows that came are new as they are; of those that stayed, which have other contents?
  std::vector<bool> isNew(after.size(), false);
  for (const Step& step : found)
    if (step.kind == Step::Kind::insert)
      std::fill_n(isNew.begin() + static_cast<std::ptrdiff_t>(step.first), step.count, true);
  std::unordered_map<std::string, const MemoEntry*> known;
  for (std::size_t i = first; i < middle.beforeEnd; ++i)
    known.emplace(keyOf(before[i]), &before[i]);
  for (std::size_t i = 0; i < after.size(); ++i) {
    if (isNew[i]) continue;
    const bool isBefore = i < first;
    const bool isBehind = i >= middle.afterEnd;
    const MemoEntry* old = isBefore   ? &before[i]
                           : isBehind ? &before[i - after.size() + before.size()]
                                      : known.at(keyOf(after[i]));
    if (!isUnchanged(*old, after[i])) add(found, Step::Kind::change, i);
  }
  return found;
}

}  // namespace nomely::ListDiff
