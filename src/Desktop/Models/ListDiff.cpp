#include "Desktop/Models/ListDiff.h"

#include <algorithm>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

namespace nomely::ListDiff {
namespace {

using Entries = std::vector<MemoEntry>;
constexpr auto none = static_cast<std::size_t>(-1);

bool isSameRow(const MemoEntry& left, const MemoEntry& right) {
  if (left.memo == right.memo) return left.date == right.date;
  if (left.memo->memoId && right.memo->memoId) return left.memo->memoId == right.memo->memoId;
  // One that another program wrote is given its identity by the first change.
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

// The move that does it all, if one does.
std::optional<Step> moveOf(const Middle& middle) {
  if (middle.beforeEnd != middle.afterEnd || middle.beforeEnd == middle.first) return std::nullopt;
  const std::size_t last = middle.beforeEnd - 1;
  // Of two neighbours that changed places the lower one rose: it was put on top.
  for (const auto& [from, to] : {std::pair(last, middle.first), std::pair(middle.first, last)})
    if (isOneMove(middle, from, to)) return Step{Step::Kind::move, from, 1, to};
  return std::nullopt;
}

// `origins` gets, for each row after, the row before that it was, or `none`.
std::vector<Step> stepsOf(const Middle& middle, std::vector<std::size_t>& origins) {
  if (const std::optional<Step> move = moveOf(middle)) {
    const std::size_t from = move->first;
    const std::size_t to = move->to;
    for (std::size_t row = middle.first; row < middle.afterEnd; ++row)
      origins[row] = row == to ? from : from < to ? row + 1 : row - 1;
    return {*move};
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
  for (std::size_t i = targets.size(); i-- > 0;) {
    if (stays[i]) {
      origins[targets[i]] = middle.first + i;
    } else if (!steps.empty() && steps.back().first == middle.first + i + 1) {
      --steps.back().first;
      ++steps.back().count;
    } else {
      steps.push_back({Step::Kind::remove, middle.first + i, 1, 0});
    }
  }
  for (std::size_t i = middle.first; i < middle.afterEnd; ++i)
    if (origins[i] == none) add(steps, Step::Kind::insert, i);
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
  std::vector<std::size_t> origins(after.size(), none);
  std::vector<Step> found = stepsOf(middle, origins);
  for (std::size_t row = 0; row < after.size(); ++row) {
    if (row < first) origins[row] = row;
    if (row >= middle.afterEnd) origins[row] = row + before.size() - after.size();
    if (origins[row] != none && !isUnchanged(before[origins[row]], after[row]))
      add(found, Step::Kind::change, row);
  }
  return found;
}

}  // namespace nomely::ListDiff
