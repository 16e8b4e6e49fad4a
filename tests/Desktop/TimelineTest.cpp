#include <functional>
#include <random>
#include <string>
#include <vector>

#include "Desktop/Models/ListDiff.h"
#include "Desktop/Support/DesktopTest.h"

namespace nomely::test {
namespace {

class TimelineTest : public DesktopTest {
 protected:
  // The cards from the top, by the first line of their text, with headings: "3月1日|b|a".
  [[nodiscard]] std::string shown() {
    std::string text;
    TimelineModel& model = *screens().timeline()->model();
    for (int row = 0; row < model.rowCount(); ++row) {
      const QString heading = model.data(model.index(row), TimelineModel::Heading).toString();
      if (!heading.isEmpty()) text += utf8(heading) + "|";
      text += utf8(model.at(row).body().section(QLatin1Char('\n'), 0, 0)) + "|";
    }
    return text.substr(0, text.size() - (text.empty() ? 0 : 1));
  }
};

struct Row {
  const char* does;
  std::function<void()> action;
  const char* sees;
};

TEST_F(TimelineTest, DoesAndSees) {
  put("2026-02-28", 1, "昨天");
  put("2026-03-01", 1, "早上", "time: \"07:00\"");
  put("2026-03-01", 2, "晚上 #散步", "time: \"21:00\"\ntags: [散步]");
  open();
  TimelineScreen& timeline = *screens().timeline();
  const Row rows[]{
      {"opens", [] {}, "3月1日|晚上 #散步|早上|2月28日|昨天"},
      {"pins with the card's button", [&] { click("cardPin"); },
       "置顶|晚上 #散步|3月1日|早上|2月28日|昨天"},
      {"goes down and locks by key", [&] { key("F6, Home, J, Shift+P"); },
       "置顶|早上|晚上 #散步|2月28日|昨天"},
      {"goes down and deletes by key",
       [&] {
         key("J");
         // A menu gives the keyboard back.
         key("Shift+F10");
         (void)need("menuDelete");
         key("Esc");
         settle();
         key("Delete");
       },
       "置顶|早上|2月28日|昨天"},
      {"takes it back", [&] { timeline.undoDelete(); }, "置顶|早上|晚上 #散步|2月28日|昨天"},
      {"chooses a tag before a search has ended",
       [&] {
         timeline.showSearch(u"昨"_qs);
         timeline.showTag(u"散步"_qs);
         screens().search()->setQuery(u"昨"_qs);
         EXPECT_TRUE(eventually([&] { return screens().search()->results()->rowCount() == 1; }));
       },
       "置顶|晚上 #散步"},
      {"another program writes",
       [&] {
         put("2026-03-01", 905, "路上 #散步", "time: \"22:00\"\ntags: [散步]");
         timeline.refresh();
       },
       "置顶|晚上 #散步|3月1日|路上 #散步"},
      {"chooses yesterday",
       [&] {
         timeline.showDay({2026, 2, 28});
       },
       "2月28日|昨天"},
      {"goes a day on", [&] { timeline.stepDay(1); }, "置顶|早上|晚上 #散步|3月1日|路上 #散步"},
      {"searches", [&] { timeline.showSearch(u"昨"_qs); }, "2月28日|昨天"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.does);
    row.action();
    EXPECT_TRUE(eventually([&] { return shown() == row.sees; })) << shown();
  }
  ASSERT_TRUE(eventually([&] { return holds("2026-03-01/001.md", "lock_on_top: true"); }));
  close();
  EXPECT_TRUE(holds("2026-03-01/002.md", "pinned: true"));
}

TEST_F(TimelineTest, ReloadsLeaveTheViewWhereItIs) {
  for (int number = 1; number <= 40; ++number)
    put("2026-02-28", number, "第 " + std::to_string(number) + " 条\n\n一段", "time: \"08:00\"");
  open();
  QQuickItem* list = need("timeline");
  list->setProperty("contentY", 900.0);
  settle();
  const auto top = [&] {
    QQuickItem* first = nullptr;
    QMetaObject::invokeMethod(list, "itemAt", Q_RETURN_ARG(QQuickItem*, first),
                              Q_ARG(double, 300.0),
                              Q_ARG(double, list->property("contentY").toDouble() + 50));
    return std::pair(first->property("memo").value<MemoHandle>().seqNumber(),
                     first->mapToScene({}).y());
  };
  const auto before = top();
  put("2026-03-01", 901, "别处写的", "time: \"09:00\"");
  put("2026-02-28", 39, "第 39 条，改过", "time: \"08:00\"");
  screens().timeline()->refresh();
  ASSERT_TRUE(eventually([&] { return screens().timeline()->model()->rowCount() == 41; }));
  settle();
  EXPECT_EQ(top(), before);
  grab("timeline-scrolled.png");
  // Another page leaves it, too; what is written here is shown.
  key("Ctrl+,");
  settle();
  key("Esc");
  settle();
  EXPECT_EQ(top(), before);
  click("quickText");
  const double height = need("quickInput")->height();
  key("Ctrl+E");
  EXPECT_TRUE(eventually([&] { return need("quickInput")->height() > 2 * height; }));
  type("here");
  key("Ctrl+Return");
  EXPECT_TRUE(eventually([&] {
    return list->property("contentY").toDouble() == list->property("originY").toDouble();
  }));
}

TEST(ListDiffTest, StepsLeadFromAnyListToAnyOther) {
  std::mt19937 random(7);
  const auto number = [&](int below) {
    return static_cast<int>(random() % static_cast<unsigned>(below));
  };
  const auto draw = [&] {
    std::vector<MemoEntry> list;
    for (int i = number(8); i > 0; --i) {
      auto memo = std::make_shared<Memo>();
      memo->memoId = "memo_" + std::to_string(number(9));
      memo->body = std::to_string(number(2));
      list.push_back({day("2026-03-01"), memo});
    }
    return list;
  };
  for (int round = 0; round < 5000; ++round) {
    const std::vector<MemoEntry> before = draw();
    const std::vector<MemoEntry> after = draw();
    std::vector<MemoEntry> list = before;
    const auto at = [&](std::size_t row) {
      return list.begin() + static_cast<std::ptrdiff_t>(row);
    };
    for (const ListDiff::Step& step : ListDiff::steps(before, after)) {
      using Kind = ListDiff::Step::Kind;
      const auto first = static_cast<std::ptrdiff_t>(step.first);
      const auto last = first + static_cast<std::ptrdiff_t>(step.count);
      if (step.kind == Kind::remove) list.erase(at(step.first), at(step.first + step.count));
      if (step.kind == Kind::insert)
        list.insert(at(step.first), after.begin() + first, after.begin() + last);
      if (step.kind == Kind::change)
        std::copy(after.begin() + first, after.begin() + last, at(step.first));
      if (step.kind == Kind::move) {
        const MemoEntry moved = list[step.first];
        list.erase(at(step.first));
        list.insert(at(step.to), moved);
      }
    }
    ASSERT_EQ(list.size(), after.size());
    for (std::size_t i = 0; i < list.size(); ++i) {
      ASSERT_EQ(list[i].memo->memoId, after[i].memo->memoId) << "round " << round;
      ASSERT_EQ(list[i].memo->body, after[i].memo->body) << "round " << round;
    }
  }
}

}  // namespace
}  // namespace nomely::test
