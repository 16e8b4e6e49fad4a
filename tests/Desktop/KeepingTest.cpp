#include <QDesktopServices>
#include <QSignalSpy>
#include <QTest>

#include <fmt/format.h>

#include "Core/Service/MemoService.h"
#include "Desktop/Support/DesktopTest.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Text/Unicode.h"

namespace nomely::test {
namespace {

class KeepingTest : public DesktopTest {
 protected:
  [[nodiscard]] const MemoService& memos() { return desktop->application().memos(); }
  // One that maintenance leaves as it is.
  void note(const std::string& day, int number, const std::string& body) {
    put(day, number, body,
        fmt::format("schema_version: 2\nid: memo_{0}\ncreated_at: '2026-03-01T08:30:00+08:00'\n"
                    "time: '0{0}:00'",
                    number));
  }
  // Deletes what stands there by the service, as the command would.
  void trash(const std::string& day, int number) {
    const Day date = Day::parse(day).value();
    (void)memos().trash(date, memos().days().memoStore().read(date, number).value());
  }
  [[nodiscard]] bool hasTrash(const std::string& name) const {
    return fs::exists(root / ".trash" / name);
  }
  // Says yes to what is asked, once the dialog stands.
  void answer(const char* title) {
    const auto isOpaque = [](const QQuickItem* item) {
      while (item && item->opacity() == 1) item = item->parentItem();
      return !item;
    };
    ASSERT_TRUE(eventually([&] { return item("confirm") && isOpaque(item("confirm")); })) << title;
    EXPECT_EQ(textOf("questionTitle"), qt(title));
    grab((std::string("question-") + title + ".png").c_str());
    click("confirm");
  }
  void showTrash() {
    screens().navigation()->show(Navigation::Trash);
    (void)need("trashPage");
    settle();
  }
};

TEST_F(KeepingTest, TrashDoesAndShows) {
  for (int number = 1; number <= 6; ++number)
    note("2026-03-0" + std::to_string(number), number, fmt::format("第 {} 条", number));
  open();
  for (int number = 1; number <= 6; ++number) trash("2026-03-0" + std::to_string(number), number);
  writeFile(root / ".trash/2026-03-04_004/memo.md", "---\n[broken\n---\n");
  showTrash();
  ASSERT_TRUE(eventually([&] { return item("trashRow", 5) != nullptr; }));
  grab("trash.png");

  click(need("trashCheck", 0));
  key("Down, Down, Shift+Space");
  EXPECT_EQ(screens().trash()->model()->checkedCount(), 3) << "Shift takes the rows between";
  click("restoreChecked");
  ASSERT_TRUE(eventually([&] { return fs::exists(root / "2026-03-06/006.md"); }));
  EXPECT_EQ(textOf("toastText"), qt("已恢复 3 条"));
  click("toastAction");
  ASSERT_TRUE(eventually([&] { return hasTrash("2026-03-06_006"); })) << "taken back";

  screens().trash()->removeBetween(qt("2026-03-01"), qt("2026-3-2"));
  answer("按日期范围删除");
  ASSERT_TRUE(eventually([&] { return !hasTrash("2026-03-01_001"); }));
  EXPECT_FALSE(hasTrash("2026-03-02_002"));
  EXPECT_TRUE(hasTrash("2026-03-03_003"));
  EXPECT_FALSE(fs::is_empty(root / ".backups")) << "a backup came first";

  fs::remove_all(root / ".backups");
  writeFile(root / ".backups", "stands against a backup");
  ASSERT_TRUE(eventually([&] { return !item("stopBackup"); }));
  click("trashEmpty");
  answer("确认清空回收站？");
  ASSERT_TRUE(eventually([&] { return screens().trash()->question().isAsked(); }));
  EXPECT_TRUE(hasTrash("2026-03-03_003"));
  answer("没有备份成");
  ASSERT_TRUE(eventually([&] { return item("trashEmptyState") != nullptr; }));
  EXPECT_FALSE(fs::exists(root / ".trash"));
}

TEST_F(KeepingTest, HistoryDoesAndShows) {
  note("2026-03-01", 1, "早上跑步五公里");
  open();
  const Day day = Day::parse("2026-03-01").value();
  const auto stored = [&] { return memos().days().memoStore().read(day, 1).value(); };
  const auto text = [&] { return std::string(trimSpaceAndBreaks(stored().body)); };
  (void)memos().edit(day, stored(), "早上跑步六公里");
  (void)memos().edit(day, stored(), "早上跑步六公里，下雨");
  ASSERT_TRUE(eventually([&] { return screens().timeline()->model()->rowCount() == 1; }));
  screens().history()->open(screens().timeline()->model()->at(0));
  ASSERT_TRUE(eventually([&] { return item("historyRow", 1) != nullptr; }));
  const auto shown = [&](const char* expected) {
    return eventually([&] {
      return need("historyText")->property("text").toString().contains(qt(expected)) ||
             need("historySize")->property("text").toString() == qt(expected);
    });
  };
  EXPECT_TRUE(shown("+2 −0 字")) << "the newest against the present";
  key("Down");
  EXPECT_TRUE(shown("+3 −1 字"));
  click("compareNext");
  EXPECT_TRUE(shown("+1 −1 字"));
  grab("history.png");
  click("historyRestore");
  ASSERT_TRUE(eventually([&] { return text() == "早上跑步五公里"; }))
      << utf8(screens().banner()->error());
  ASSERT_TRUE(eventually([&] { return item("historyRow", 2) != nullptr; }));
  click("toastAction");
  ASSERT_TRUE(eventually([&] { return text() == "早上跑步六公里，下雨"; })) << "undone";

  const HistoryScreen& history = *screens().history();
  ASSERT_TRUE(eventually([&] { return !history.isRestoring() && !history.isLoading(); }));
  settle();

  // Another program writes while the panel is up: nothing of that is overwritten.
  note("2026-03-01", 1, "别处改的");
  click("historyRestore");
  ASSERT_TRUE(eventually([&] { return item("errorText") != nullptr; }));
  EXPECT_THAT(utf8(textOf("errorText")), HasSubstr("版本恢复失败"));
  EXPECT_EQ(text(), "别处改的");
  click("errorAction");
  ASSERT_TRUE(eventually([&] { return text() != "别处改的"; })) << "tried again on that";

  click("historyClear");
  answer("清空所有版本历史？");
  ASSERT_TRUE(eventually([&] { return item("historyEmptyState") != nullptr; }));
  EXPECT_FALSE(fs::exists(memos().versions().identityDirectory("memo_1")));
}

TEST_F(KeepingTest, SettingsDoAndShow) {
  open();
  EXPECT_EQ(need("firstRun")->isVisible(), true);
  screens().navigation()->show(Navigation::Settings);
  const auto comesToHold = [&](const char* name, const char* text) {
    return eventually([&] { return holds(name, text); });
  };
  const char* display = "_config/display-config.yaml";
  click("bodySizeMore");
  EXPECT_TRUE(comesToHold(display, "bodyFontSize: 15"));
  QTest::mouseDClick(desktop->window(), Qt::LeftButton, {},
                     need("bodySizeMore")->mapToScene({10, 10}).toPoint());
  click("bodySizeLess");
  click("linkCard");
  click("showsNumber");
  click("orderName");
  EXPECT_TRUE(comesToHold(display, "bodyFontSize: 16"));
  EXPECT_TRUE(comesToHold(display, "linkDisplayMode: card"));
  EXPECT_TRUE(comesToHold(display, "defaultShowsSeriesNumber: true"));
  EXPECT_TRUE(comesToHold("_config/tags.yaml", "sortMode: name"));
  const QColor light = desktop->window()->color();
  click("lookDark");
  EXPECT_NE(desktop->window()->color(), light);
  grab("settings-dark.png");
  EXPECT_TRUE(comesToHold((state / "nomely/defaults.json").c_str(), "morning-dark"));

  writeFile(root / display, "tagFontSize: 9\nbodyFontSize: 20\n");
  EXPECT_TRUE(eventually([&] { return textOf("bodySize") == qt("20"); })) << "by another process";
  writeFile(root / display, "tagFontSize: [\n");
  EXPECT_TRUE(eventually([&] { return item("errorText") != nullptr; }));
  EXPECT_EQ(textOf("bodySize"), qt("20"));

  fs::create_directories(folder.path() / "elsewhere");
  screens().settings()->chooseRoot(QUrl::fromLocalFile(qt((folder.path() / "elsewhere").string())));
  answer("改用这个数据目录？");
  ASSERT_TRUE(eventually(
      [&] { return desktop->application().paths().rootURL == folder.path() / "elsewhere"; }));
}

TEST_F(KeepingTest, MessagesWaitForEachOther) {
  note("2026-03-01", 1, "一");
  open();
  BannerScreen& banner = *screens().banner();
  banner.fail(qt("甲"));
  int retried = 0;
  banner.fail(qt("乙"), qt("重试"), [&] { ++retried; });
  banner.fail(qt("甲"));
  EXPECT_EQ(banner.errorCount(), 2) << "the same is told once";
  grab("banners.png");
  click("errorClose");
  EXPECT_EQ(textOf("errorText"), qt("乙"));
  click("errorAction");
  EXPECT_EQ(retried, 1);
  EXPECT_EQ(item("errorText"), nullptr);

  screens().timeline()->remove(screens().timeline()->model()->at(0));
  ASSERT_TRUE(eventually([&] { return banner.toast() == qt("已删除 1 条"); }));
  QTest::mouseMove(desktop->window(), need("toast")->mapToScene({20, 20}).toPoint());
  EXPECT_TRUE(eventually([&] { return banner.isHeld(); }));
  click("toastAction");
  ASSERT_TRUE(eventually([&] { return fs::exists(root / "2026-03-01/001.md"); }));
  banner.succeed(qt("好了"));
  EXPECT_EQ(banner.toast(), qt("好了"));
  QTest::mouseMove(desktop->window(), {5, 5});
  EXPECT_TRUE(eventually([&] { return banner.toast().isEmpty(); })) << "goes by itself";
}

}  // namespace
}  // namespace nomely::test
