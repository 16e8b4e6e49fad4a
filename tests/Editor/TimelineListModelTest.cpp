#include <algorithm>
#include <random>

#include "Editor/Timeline/TimelineListModel.h"
#include "Support/Matchers.h"

namespace nomely::test {
namespace {

using Entries = TimelineListModel::Entries;

Day dayAt(int offset) {
  return Day::parse("2026-03-01")->plusDays(offset);
}

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
TEST_F(TimelineListModelTest, RowsFollowTheList) {
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
    const bool isAll = list.timelineMode.get() == TimelineMode::all;
    const std::size_t count = isAll ? std::min(limit, ranked.size()) : ranked.size();
    // A mode alone changes no rows.
    ASSERT_TRUE(!isSettled || shown.size() == count) << i;
    ranked.resize(shown.size(), {dayAt(0), memo(0)});
    ASSERT_EQ(contents(shown), contents(ranked)) << i;
  }
}

}  // namespace
}  // namespace nomely::test
