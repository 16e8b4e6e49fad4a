#include <algorithm>
#include <random>

#include "Editor/Timeline/TimelineListModel.h"
#include "Support/Matchers.h"

namespace nomely::test {
namespace {

using Entries = TimelineListModel::Entries;
using Kind = ListChange::Kind;

Day dayAt(int offset) {
  return Day::parse("2026-03-01")->plusDays(offset);
}

// A view that knows the rows from what it is told of them alone.
struct View {
  explicit View(const TimelineListModel& list)
      : rows(list.displayMemos.get()), watch(list.rowChange.observe([&](const ListChange& change) {
          changes.push_back(change);
          follow(change, list.displayMemos.get());
        })) {}

  void follow(const ListChange& change, const Entries& now) {
    const auto at = [](auto& list, std::size_t index) {
      return list.begin() + static_cast<std::ptrdiff_t>(index);
    };
    const auto first = at(now, change.first);
    const auto row = at(rows, change.first);
    switch (change.kind) {
      case Kind::reset:
        rows = now;
        break;
      case Kind::inserted:
        rows.insert(row, first, at(now, change.first + change.count));
        break;
      case Kind::removed:
        rows.erase(row, at(rows, change.first + change.count));
        break;
      case Kind::changed:
        std::copy_n(first, change.count, row);
        break;
      case Kind::moved: {
        const MemoEntry moved = *row;
        rows.erase(row);
        rows.insert(at(rows, change.to), moved);
      }
    }
  }

  Entries rows;
  std::vector<ListChange> changes;
  Subscription watch;
};

std::vector<std::pair<Day, Memo>> contents(const Entries& entries) {
  std::vector<std::pair<Day, Memo>> memos;
  for (const MemoEntry& entry : entries) memos.emplace_back(entry.date, *entry.memo);
  return memos;
}

class TimelineListModelTest : public testing::Test {
 protected:
  static std::shared_ptr<Memo> memo(std::int64_t number, bool pinned = false, bool locked = false) {
    auto made = std::make_shared<Memo>();
    made->seqNumber = number;
    made->pinned = pinned;
    made->lockedOnTop = locked;
    return made;
  }
  std::size_t draw(std::size_t below) { return random() % below; }

  // Drawn from few memos, so that most changes hit one that is listed.
  std::shared_ptr<Memo> drawMemo() {
    auto drawn = memo(static_cast<std::int64_t>(draw(40)), draw(4) == 0, draw(8) == 0);
    drawn->body = std::to_string(draw(3));
    return drawn;
  }
  void change() {
    const Day day = dayAt(static_cast<int>(draw(3)));
    const auto isDrawn = [&, of = draw(4)](Day date, const Memo& each) {
      return date == day && static_cast<std::size_t>(each.seqNumber) % 4 == of;
    };
    switch (draw(9)) {
      case 0:
        list.setMode(static_cast<TimelineMode>(draw(4)));
        return list.setMembership(draw(3) == 0 ? [](const Memo& each) { return each.body != "0"; }
                                               : TimelineListModel::Membership());
      case 1: {
        Entries entries;
        for (int date = 2; date >= 0; --date)
          for (std::int64_t number = 40; number-- > 0;)
            if (draw(8) > 0) entries.push_back({dayAt(date), memo(number, number % 9 == 0)});
        return list.show(std::move(entries));
      }
      case 2:
        return list.removeAll(isDrawn);
      case 3:
        limit += list.canShowMore() ? 50 : 0;
        return list.showMore();
      case 4:
        if (!list.allMemos.get().empty()) {
          const MemoEntry entry = list.allMemos.get()[draw(list.allMemos.get().size())];
          list.replace(*entry.memo, entry.date, draw(2) == 0 ? drawMemo() : nullptr);
        }
        return;
      default:
        (void)list.update(drawMemo(), day);
    }
  }

  std::mt19937 random{7};
  std::size_t limit = 50;
  TimelineListModel list{dayAt(0)};
};

// An observer in between changes the list too, now and then.
TEST_F(TimelineListModelTest, ChangesOfRowsAddUpToTheList) {
  View view(list);
  bool isInner = false;
  const Subscription watch = list.allMemos.observe([&](const Entries&) {
    if (isInner || draw(6) > 0) return;
    isInner = true;
    change();
    isInner = false;
  });
  for (int i = 0; i < 1500; ++i) {
    change();
    const bool isSettled = draw(4) == 0;
    if (isSettled) list.show(list.allMemos.get());
    Entries ranked = list.allMemos.get();
    std::ranges::stable_sort(ranked, [](const MemoEntry& left, const MemoEntry& right) {
      return std::pair(!left.memo->lockedOnTop, !left.memo->pinned) <
             std::pair(!right.memo->lockedOnTop, !right.memo->pinned);
    });
    const auto& shown = list.displayMemos.get();
    ASSERT_EQ(contents(view.rows), contents(shown)) << i;
    const bool isAll = list.timelineMode.get() == TimelineMode::all;
    const std::size_t count = isAll ? std::min(limit, ranked.size()) : ranked.size();
    // A mode alone changes no rows.
    ASSERT_TRUE(!isSettled || shown.size() == count) << i;
    ranked.resize(shown.size(), {dayAt(0), memo(0)});
    ASSERT_EQ(contents(shown), contents(ranked)) << i;
  }
}

TEST_F(TimelineListModelTest, OneMemoOfTwoThousandChangesItsRow) {
  const std::tuple<const char*, std::int64_t, bool, std::vector<ListChange>> cases[] = {
      {"text", 1990, false, {{Kind::changed, 10, 1}}},
      {"pin", 1990, true, {{Kind::moved, 10, 1, 0}, {Kind::changed, 0, 1}}},
      {"text of a pinned one", 1990, true, {{Kind::changed, 0, 1}}},
      {"pin further down", 100, true, {{Kind::inserted, 1, 1}, {Kind::removed, 50, 1}}},
      {"unpin", 1990, false, {{Kind::moved, 0, 1, 11}, {Kind::changed, 11, 1}}},
      {"unpin what was further down", 100, false, {{Kind::removed, 0, 1}, {Kind::inserted, 49, 1}}},
      {"text further down", 100, false, {}},
  };
  Entries entries;
  for (std::int64_t number = 2000; number > 0; --number)
    entries.push_back({dayAt(0), memo(number)});
  list.setMode(TimelineMode::all);
  list.show(entries);
  View view(list);
  for (const auto& [name, changed, pinned, changes] : cases) {
    view.changes.clear();
    EXPECT_TRUE(list.update(memo(changed, pinned), dayAt(0)));
    EXPECT_EQ(view.changes, changes) << name;
  }
  view.changes.clear();
  list.show(entries);
  EXPECT_THAT(view.changes, ElementsAre()) << "what was loaded again is what is shown";
}

}  // namespace
}  // namespace nomely::test
