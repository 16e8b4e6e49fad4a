#include <QAccessible>
#include <QImage>
#include <QTest>
#include <cstdlib>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "Desktop/Support/DesktopTest.h"
#include "Support/TestPaths.h"

namespace nomely::test {
namespace {

// Every page of the window over one diary.
class LookTest : public DesktopTest {
 protected:
  LookTest() {
    put("2026-03-01", 1,
        "傍晚沿着北山街走回家，雨刚停，湖面上一层薄雾。忽然觉得这一天**没有白过**。 #生活/散步",
        "memo_id: memo_00000000000000000000000000000001\ntime: \"18:42\"\ntags: [生活/散步]\nmood: "
        "4");
    put("2026-03-01", 2,
        "## 六月开支\n\n| 项目 | 金额 | 备注 |\n|---|---|---|\n| 房租 | 4,200 | 含物业 |\n| 买书 | "
        "386 | 三本 |\n\n"
        "> [!TIP] 提醒\n> 下个月起每周日晚上记一次。\n\n```sh\nnomely add '买菜 "
        "43.5'\n```\n\n#生活",
        "memo_id: memo_00000000000000000000000000000002\ntime: \"21:20\"\ntags: [生活]");
    put("2026-02-27", 1,
        "## 这周要做完的事\n\n- [x] 给妈妈订体检\n- [ ] 合同第三版发给小周\n- [ ] "
        "修阳台漏水的水龙头\n\n#工作",
        "memo_id: memo_00000000000000000000000000000003\ntime: \"14:05\"\ntags: [工作]\npinned: "
        "true\nlock_on_top: true");
    put("2025-03-01", 1, "去年今天：参考 https://example.org/essay 的原文。 #读书",
        "memo_id: memo_00000000000000000000000000000004\ntime: \"09:00\"\ntags: [读书]");
  }

  struct Page {
    const char* name;
    std::function<void()> show;
  };
  [[nodiscard]] std::vector<Page> pages() {
    const auto page = [this](Navigation::Page which) {
      return [this, which] { screens().navigation()->show(which); };
    };
    const auto memo = [this] { return screens().timeline()->model()->at(1); };
    return {
        {"all", [this] { screens().timeline()->showAll(); }},
        {"day",
         [this] {
           screens().timeline()->showDay({2026, 2, 27});
         }},
        {"empty", [this] { screens().timeline()->showAudio(); }},
        {"writing",
         [this] {
           key("Ctrl+N");
           type(u"读过的书按**问题**串起来 #读书"_qs);
         }},
        {"search",
         [this] {
           key("Ctrl+P");
           type(u"生活"_qs);
         }},
        {"editor", [this, memo] { screens().focusEditor()->open(memo()); }},
        {"history", [this, memo] { screens().history()->open(memo()); }},
        {"overview", page(Navigation::Overview)},
        {"trash", page(Navigation::Trash)},
        {"settings", page(Navigation::Settings)},
        {"keys", [this] { key("F1"); }},
        {"menu", [this] { click("card", Qt::RightButton); }},
    };
  }
  void leave() {
    for (int i = 0; i < 3; ++i) key("Esc");
    screens().quickInput()->editor()->replaceText({});
    screens().navigation()->showPanel(Navigation::NoPanel);
    screens().navigation()->show(Navigation::Timeline);
    screens().timeline()->showAll();
    quiet();
  }
  // Waits until what is read in the background has come and animations have ended: until the window
  // stays as it is.
  void quiet() const {
    QImage before;
    int same = 0;
    EXPECT_TRUE(eventually([&] {
      settle();
      const QImage now = desktop->window()->grabWindow();
      same = now == before ? same + 1 : 0;
      before = now;
      return same == 10;
    }));
  }
};

void walk(QQuickItem* item, const std::function<void(QQuickItem*)>& visit) {
  if (!item->isVisible()) return;
  visit(item);
  for (QQuickItem* child : item->childItems()) walk(child, visit);
}

TEST_F(LookTest, WhatTakesTheFocusHasANameAndARole) {
  QAccessible::setActive(true);
  open();
  for (const Page& page : pages()) {
    SCOPED_TRACE(page.name);
    page.show();
    quiet();
    walk(desktop->window()->contentItem(), [&](QQuickItem* item) {
      if (!item->activeFocusOnTab() || !item->isEnabled()) return;
      const QAccessibleInterface* shown = QAccessible::queryAccessibleInterface(item);
      const std::string who = utf8(item->objectName()) + " " + item->metaObject()->className();
      ASSERT_TRUE(shown) << who;
      EXPECT_NE(shown->text(QAccessible::Name), QString()) << who;
      EXPECT_NE(shown->role(), QAccessible::NoRole) << who;
    });
    leave();
  }
}

TEST_F(LookTest, TheKeyboardReachesWhatThePointerDoes) {
  open();
  const struct {
    Navigation::Page page;
    std::size_t atLeast;
  } rows[]{{Navigation::Timeline, 9}, {Navigation::Overview, 4}, {Navigation::Settings, 8}};
  for (const auto& [page, atLeast] : rows) {
    screens().navigation()->show(page);
    quiet();
    if (page == Navigation::Timeline) key("F6");  // in a text Tab indents
    std::set<QQuickItem*> reached;
    for (int press = 0; press < 40; ++press) {
      QTest::keyClick(desktop->window(), Qt::Key_Tab);
      reached.insert(desktop->window()->activeFocusItem());
    }
    EXPECT_GE(reached.size(), atLeast) << page;
    leave();
  }
}

// Share of the pixels that differ visibly.
double difference(const QImage& left, const QImage& right) {
  if (left.size() != right.size()) return 1;
  int different = 0;
  for (int y = 0; y < left.height(); ++y)
    for (int x = 0; x < left.width(); ++x) {
      const QRgb a = left.pixel(x, y);
      const QRgb b = right.pixel(x, y);
      const int most = std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                                 std::abs(qBlue(a) - qBlue(b))});
      different += most > 24 ? 1 : 0;
    }
  return static_cast<double>(different) / (static_cast<double>(left.width()) * left.height());
}

TEST_F(LookTest, PagesLookAsTheyDid) {
  constexpr double tolerance = 0.001;
  open();
  for (const QSize& each : {QSize(1280, 800), QSize(420, 800)}) {
    desktop->window()->resize(each);
    for (const bool dark : {false, true}) {
      screens().settings()->setLook(dark ? SettingsScreen::Dark : SettingsScreen::Light);
      for (const Page& page : pages()) {
        page.show();
        quiet();
        const std::string name =
            fmt::format("{}-{}-{}.png", page.name, dark ? "dark" : "light", each.width());
        const QString file = qt((fs::path(TestPaths::fixtures) / "pictures" / name).string());
        const auto drawn = [&] {
          return grab(name.c_str()).scaledToWidth(each.width() / 2, Qt::SmoothTransformation);
        };
        if (std::getenv("NOMELY_REBASELINE")) {
          EXPECT_TRUE(drawn().save(file));
        } else {
          const QImage asItWas = QImage(file).convertToFormat(drawn().format());
          EXPECT_TRUE(eventually([&] { return difference(drawn(), asItWas) <= tolerance; }))
              << name << " " << difference(drawn(), asItWas);
        }
        leave();
      }
    }
  }
}

}  // namespace
}  // namespace nomely::test
