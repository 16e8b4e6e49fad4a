#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "Core/Query/MemoEntry.h"
#include "Platform/Concurrency/Observable.h"

namespace nomely {

// One date, every date, the answer to a search or filter, or the pinned memos.
enum class TimelineMode { day, all, filtered, pinned };

// The timeline's lists: what was found, what of it is shown and in which order, and how a changed
// memo enters or leaves them. Main executor alone.
class TimelineListModel {
 public:
  template <typename Value>
  using Property = Published<TimelineListModel, Value>;
  using Entries = std::vector<MemoEntry>;
  using Membership = std::function<bool(const Memo&)>;

  static constexpr std::size_t displayStep = 50;

  explicit TimelineListModel(Day today) : selectedDate(today) {}

  Property<std::vector<Memo>> memos;  // of selectedDate
  Property<Entries> allMemos;         // all that the present mode found
  Property<Entries> displayMemos;     // what of it is shown, in the order shown
  Property<Day> selectedDate;
  Property<TimelineMode> timelineMode{TimelineMode::day};

  // Set up by a load. Outside of `filtered` no membership stands.
  void setMode(TimelineMode mode);
  void setMembership(Membership membership) { membership_ = std::move(membership); }
  [[nodiscard]] const Membership& membership() const { return membership_; }
  void selectDate(Day date) { selectedDate.set(date); }
  void showFirstPage() { displayLimit_ = displayStep; }

  void showDay(std::vector<Memo> memos);
  void show(Entries entries);

  // In `all` mode the list grows by 50, or to its end.
  [[nodiscard]] bool canShowMore() const;
  void showMore();
  void showToTheEnd();

  [[nodiscard]] const MemoEntry* entryOf(Day date, std::int64_t seqNumber) const;
  // `given`, or the day of the entry that has the memo's identity, or selectedDate.
  [[nodiscard]] Day dateOf(const Memo& memo, std::optional<Day> given) const;
  // The lists' own copy of a memo, which may be newer than the caller's. It is found by its place,
  // or by its identity when another memo stands there. Its memo is null when the lists have none.
  [[nodiscard]] MemoEntry ownEntry(const Memo& memo, Day date) const;

  // Grows with each change of a memo: a query begun before it found an older state.
  [[nodiscard]] std::uint64_t generation() const { return generation_; }

  // The one way in which a changed memo enters the lists. False when it no longer belongs into
  // allMemos and left it.
  bool update(const std::shared_ptr<const Memo>& memo, Day date);
  // Puts `now` where the lists hold `written`, or takes that out when `now` is null. A memo that
  // was changed again since is left alone.
  void replace(const Memo& written, Day date, const std::shared_ptr<const Memo>& now);
  // A memo of `from` is on another day. Timelines other than the day's show it at their next load.
  void moveAway(std::int64_t seqNumber, Day from, const Memo& moved, Day to);
  using Gone = std::function<bool(Day date, const Memo& memo)>;
  void removeAll(const Gone& isGone);

 private:
  [[nodiscard]] std::optional<std::size_t> indexOf(Day date, std::int64_t seqNumber) const;
  [[nodiscard]] bool belongs(const Memo& memo) const;
  void setLimit(std::size_t limit);
  void setEntry(std::size_t index, MemoEntry entry);
  void removeEntries(const Gone& isGone);

  // Changes allMemos, tells its observers, and then has `rows` change displayMemos alike.
  template <typename Change, typename Rows>
  void alter(Change change, Rows rows);

  // How many rows are to be shown, which stand there, and where an entry of allMemos would.
  [[nodiscard]] std::size_t shownCount() const;
  [[nodiscard]] Entries ordered(std::size_t first, std::size_t last) const;
  [[nodiscard]] std::size_t placeOf(std::size_t index) const;

  // Cuts or fills the end of `rows`, which are those of displayMemos.
  void fitRows(Entries& rows) const;

  Membership membership_;  // whether a changed memo stays in the filtered list
  std::size_t displayLimit_ = displayStep;
  std::vector<unsigned char> ranks_;  // of allMemos' entries, the lowest shown first
  std::uint64_t generation_ = 0;
  std::uint64_t revision_ = 0;      // of allMemos
  std::uint64_t rowsRevision_ = 0;  // the one that displayMemos follows
};

}  // namespace nomely
