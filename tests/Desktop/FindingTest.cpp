#include <QAbstractItemModel>
#include <QQmlEngine>
#include <QQmlExpression>
#include <QStringList>
#include <functional>
#include <string>
#include <vector>

#include "App/Application.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Support/DesktopTest.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Concurrency/NotificationCenter.h"

namespace nomely::test {
namespace {

std::string tagged(const std::string& tags, const std::string& time = "08:30") {
  return "time: \"" + time + "\"\ntags: [" + tags + "]";
}

class FindingTest : public DesktopTest {
 protected:
  FindingTest() { clock.set("2026-06-18 19:00:00"); }

  // What a model's rows say under a role, "label" of depth 1 as "  label".
  [[nodiscard]] static QStringList texts(const QAbstractItemModel& model, const char* role) {
    const auto find = [&](const char* name) { return model.roleNames().key(name, -1); };
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row) {
      const QModelIndex index = model.index(row, 0);
      const QString indent(2 * index.data(find("depth")).toInt(), QLatin1Char(' '));
      texts << indent + index.data(find(role)).toString();
    }
    return texts;
  }
  [[nodiscard]] QStringList tagRows(const char* role = "label") {
    return texts(*screens().sidebar()->tags(), role);
  }
  [[nodiscard]] QStringList shownBodies() {
    QStringList bodies;
    for (const MemoEntry& entry : desktop->application().dayViewModel().displayMemos.get())
      bodies << qt(entry.memo->body);
    return bodies;
  }
  // Without motion: what is fading in or out takes clicks, too.
  void openStill() {
    open();
    QQmlExpression(qmlContext(desktop->window()), desktop->window(), "Theme.animated = false")
        .evaluate();
  }
  void waitForTags() {
    openStill();
    ASSERT_TRUE(eventually([&] { return !screens().sidebar()->allCount().isEmpty(); }));
    settle();
  }
  void chooseInMenuOf(int row, const char* command) {
    // Rows and menus stand where they are drawn only once they were.
    grab("tags.png");
    click(need("tagRow", row), Qt::RightButton);
    ASSERT_TRUE(eventually([&] { return item(command) != nullptr; })) << command;
    grab("tag-menu.png");
    click(command);
    ASSERT_TRUE(eventually([&] { return item(command) == nullptr; }));
  }
};

struct Step {
  const char* name;
  std::function<void()> does;
  std::function<bool()> sees;
};

#define RUN_STEPS(...)                                     \
  for (const Step& step : std::vector<Step> __VA_ARGS__) { \
    SCOPED_TRACE(step.name);                               \
    settle();                                              \
    step.does();                                           \
    ASSERT_TRUE(eventually(step.sees)) << step.name;       \
  }

TEST_F(FindingTest, TheSidebarListsAndCounts) {
  put("2026-06-18", 1, "今天", tagged("生活/做饭, 生活", "18:00"));
  put("2026-06-18", 2, "二", tagged("生活, _隐藏", "18:10") + "\npinned: true");
  put("2026-06-01", 1, "三", tagged("工作"));
  put("2026-01-05", 1, "四", tagged("工作, 阅读"));
  put("2026-01-06", 1, "五", tagged("工作"));
  put("2024-06-18", 1, "前年", tagged("备忘录/旧, _notes_import"));
  put("2026-06-02", 1, "总结", tagged("个人专栏/月度总结"));
  put("2026-06-03", 1, " ", tagged("空的"));
  waitForTags();
  SidebarScreen& sidebar = *screens().sidebar();
  const auto orderedBy = [&](const char* mode, const QStringList& labels) {
    return Step{mode,
                [&, mode] {
                  writeFile(root / "_config/tags.yaml",
                            std::string("colors: {}\nemojis: {}\nsortMode: ") + mode + "\n");
                  desktop->application().tagConfig().load();
                },
                [&, labels] { return tagRows().mid(1, 3) == labels; }};
  };
  RUN_STEPS({
      {"counts", [] {},
       [&] {
         return sidebar.allCount() == "5" && sidebar.todayCount() == "2" &&
                sidebar.pinnedCount() == "1" && sidebar.onThisDayCount() == "1" &&
                item("listOnThisDay") != nullptr;
       }},
      {"tags, the last used first", [] {},
       [&] {
         return tagRows() == QStringList{"标签",   "生活", "工作",     "阅读",
                                         "备忘录", "旧",   "个人专栏", "月度总结"} &&
                tagRows("memos").mid(1, 3) == QStringList{"2", "3", "1"};
       }},
      orderedBy("count", {"工作", "生活", "阅读"}),
      orderedBy("name", {"工作", "生活", "阅读"}),
      orderedBy("activity", {"生活", "工作", "阅读"}),
      {"the keys unfold a tag and show it",
       [&] {
         need("tagList")->forceActiveFocus();
         key("Right, Down, Return");
       },
       [&] { return screens().timeline()->tag() == "生活/做饭" && shownBodies().size() == 1; }},
      {"what another program writes comes in, and what is unfolded stays",
       [&] {
         put("2026-06-18", 3, "新", tagged("生活/散步", "19:00"));
         (void)desktop->application().searchIndex().rebuildIfDiskChanged();
         NotificationCenter::shared().post(Notifications::externalMemoWritten);
       },
       [&] {
         return tagRows().mid(1, 3) == QStringList{"生活", "  散步", "  做饭"} &&
                sidebar.todayCount() == "3";
       }},
  })
  grab("sidebar.png");
}

TEST_F(FindingTest, TagsAreRenamedMergedAndDeletedOnTheDisk) {
  put("2026-06-17", 1, "跑了 #跑步 五公里", tagged("跑步"));
  put("2026-06-17", 2, "又跑了", tagged("跑步/夜跑"));
  put("2026-06-17", 3, "走路", tagged("散步"));
  writeFile(root / "_config/tags.yaml", "colors: {}\nemojis:\n  跑步: 🏃\nsortMode: name\n");
  waitForTags();
  TagsScreen& tags = *screens().tags();
  const auto isReady = [&] { return tags.stage() == TagsScreen::Ready; };
  const auto isClosed = [&] { return tags.stage() == TagsScreen::Closed && !item("tagCancel"); };
  RUN_STEPS({
      {"a name that can't be",
       [&] {
         chooseInMenuOf(0, "tagRename");
         (void)eventually([&] { return need("tagName")->hasActiveFocus(); });
         type(u"/"_qs);
       },
       [&] { return tags.isRefused() && !need("tagConfirm")->isEnabled(); }},
      {"a name that can",
       [&] {
         key("Ctrl+A");
         type(u"运动"_qs);
       },
       [&] { return isReady() && textOf("tagQuestion").contains("2 条"); }},
      {"renames",
       [&] {
         grab("rename.png");
         key("Return");
       },
       [&] {
         return isClosed() && holds("2026-06-17/001.md", "- 运动\n") &&
                holds("2026-06-17/002.md", "- 运动/夜跑") && tagRows("emoji").contains("🏃") &&
                tagRows().contains("运动");
       }},
      {"merges into one that is offered",
       [&] {
         chooseInMenuOf(0, "tagMerge");
         click("tagSuggestion");
       },
       [&] { return isReady(); }},
      {"merged",
       [&] {
         grab("merge.png");
         click("tagConfirm");
       },
       [&] {
         return isClosed() && holds("2026-06-17/003.md", "- 运动") &&
                tagRows() == QStringList{"标签", "运动"};
       }},
      {"asks before it deletes", [&] { chooseInMenuOf(0, "tagDelete"); },
       [&] { return isReady() && textOf("tagQuestion").contains("3 条"); }},
      {"Esc leaves all as it is", [&] { key("Escape"); },
       [&] { return isClosed() && holds("2026-06-17/001.md", "- 运动"); }},
      {"deletes notes after a backup",
       [&] {
         chooseInMenuOf(0, "tagDeleteMemos");
         (void)eventually(isReady);
         click("tagConfirm");
       },
       [&] {
         return isClosed() && !fs::exists(root / "2026-06-17/001.md") &&
                fs::exists(root / ".backups") && !fs::is_empty(root / ".backups") &&
                tagRows().isEmpty();
       }},
      {"and brings them back as they were", [&] { click("toastAction"); },
       [&] {
         return isClosed() && !tags.canUndo() && holds("2026-06-17/001.md", "- 运动\n") &&
                holds("2026-06-17/002.md", "- 运动/夜跑") && fs::is_empty(root / ".trash") &&
                tagRows("emoji").contains("🏃");
       }},
  })
}

TEST_F(FindingTest, ATagIsGivenColourAndEmojiAndPinned) {
  put("2026-06-17", 1, "甲", tagged("生活"));
  waitForTags();
  const auto config = [&] { return readFile(root / "_config/tags.yaml"); };
  RUN_STEPS({
      {"colour", [&] { chooseInMenuOf(0, "tagColor"); },
       [&] {
         return fs::exists(root / "_config/tags.yaml") && config().find("#") != std::string::npos;
       }},
      {"emoji",
       [&] {
         chooseInMenuOf(0, "tagEmoji");
         grab("emoji.png");
         click("emojiChoice");
       },
       [&] { return config().find("🌿") != std::string::npos && tagRows("emoji").contains("🌿"); }},
      {"pin", [&] { chooseInMenuOf(0, "tagPin"); },
       [&] {
         return tagRows() == QStringList{"置顶标签", "生活", "标签", "生活"};
       }},
  })
}

TEST_F(FindingTest, ASearchFollowsTheKeys) {
  put("2026-06-18", 1, "公园里的 <b> 桂花开了", tagged("散步"));
  put("2026-06-17", 1, "去公园跑步", tagged("跑步"));
  put("2025-03-01", 2, "旧的公园", tagged("_导入"));
  put("2025-03-01", 1, "同一天", tagged("散步"));
  openStill();
  SearchScreen& search = *screens().search();
  const auto count = [&] { return search.results()->rowCount(); };
  const auto asks = [&](const QString& text) {
    key("Ctrl+F");
    type(text);
  };
  RUN_STEPS({
      {"results as one types", [&] { asks(u"公"_qs); }, [&] { return count() == 3; }},
      {"all words have to be there", [&] { type(u"园　跑"_qs); },
       [&] {
         return count() == 1 &&
                texts(*search.results(), "plainSnippet") == QStringList{"去公园跑步"};
       }},
      {"the text of a note is no markup", [&] { asks(u"桂花"_qs); },
       [&] {
         return count() == 1 && texts(*search.results(), "snippet")[0].startsWith(
                                    "公园里的 &lt;b&gt; <span style=\"background-color:#");
       }},
      {"a tag", [&] { asks(u"#散步"_qs); }, [&] { return count() == 2; }},
      {"nothing is found", [&] { asks(u"没有的字"_qs); },
       [&] { return search.foundNothing() && textOf("searchNotice") == "没有找到「没有的字」"; }},
      {"all in the timeline",
       [&] {
         asks(u"公园"_qs);
         (void)eventually([&] { return count() == 3; });
         grab("search.png");
         key("Return");
       },
       [&] {
         return screens().timeline()->list() == TimelineScreen::Search && shownBodies().size() == 3;
       }},
      {"Esc goes back to where one was", [&] { key("Ctrl+F, Escape"); },
       [&] {
         return screens().timeline()->list() == TimelineScreen::All && search.query().isEmpty() &&
                shownBodies().size() == 4;
       }},
      {"the day of a chosen result",
       [&] {
         asks(u"旧的"_qs);
         (void)eventually([&] { return count() == 1; });
         key("Down, Return");
       },
       [&] {
         return screens().timeline()->day() == QDate(2025, 3, 1) && shownBodies().size() == 2;
       }},
      {"Esc goes back to the results", [&] { key("Escape"); },
       [&] {
         return need("searchLine")->hasActiveFocus() && search.query() == u"旧的"_qs &&
                item("searchResult") != nullptr && search.current() == 0;
       }},
      {"another list ends it", [&] { key("Ctrl+1"); },
       [&] { return search.query().isEmpty() && !search.isShown(); }},
      {"the floating one",
       [&] {
         key("Ctrl+P");
         (void)need("floatingLine");
         settle();
         type(u"跑步"_qs);
       },
       [&] { return screens().floatingSearch()->results()->rowCount() == 1; }},
      {"opens it, too",
       [&] {
         grab("floating.png");
         key("Down, Return");
       },
       [&] { return screens().timeline()->day() == QDate(2026, 6, 17); }},
  })
}

TEST_F(FindingTest, TheCalendarShadesDaysAndLeadsToThem) {
  for (int number = 1; number <= 6; ++number) put("2026-06-05", number, "满");
  put("2026-06-03", 1, "一条");
  put("2026-05-31", 1, "上月");
  waitForTags();
  CalendarModel& calendar = *screens().sidebar()->calendar();
  // Monday the 1st is the first cell.
  const auto shade = [&](int day) {
    return calendar.data(calendar.index(day - 1), CalendarModel::Shade).toInt();
  };
  RUN_STEPS({
      {"shades", [] {}, [&] { return shade(5) == 4 && shade(3) == 1 && shade(4) == 0; }},
      {"what is spoken", [] {},
       [&] { return calendar.data(calendar.index(4), CalendarModel::Label) == "6月5日，6 条"; }},
      {"a click", [&] { click("day5"); }, [&] { return shownBodies().size() == 6; }},
      {"keys",
       [&] {
         need("days")->forceActiveFocus();
         key("PgUp, PgDown, Up, Return");
       },
       [&] {
         return calendar.title() == "2026年5月" &&
                screens().timeline()->day() == QDate(2026, 5, 29);
       }},
      {"a new note counts",
       [&] {
         (void)desktop->application().dayStore().createMemo(day("2026-05-29"), {.body = "新"});
       },
       [&] { return calendar.data(calendar.index(4 * 7 + 4), CalendarModel::Count) == 1; }},
  })
}

TEST_F(FindingTest, TheMonthIsSeenOnOnePage) {
  put("2026-06-02", 1, "会议纪要 A", tagged("工作/会议"));
  put("2026-06-09", 1, "第二次会议", tagged("工作/会议") + "\nattachments: [a.m4a, b.png]");
  put("2026-06-09", 2, "2026年6月8日 写的", tagged("生活"));
  put("2026-05-31", 1, "上个月");
  waitForTags();
  OverviewScreen& overview = *screens().overview();
  TimelineScreen& timeline = *screens().timeline();
  const auto leadsTo = [&](QDate date) {
    return [&timeline, date] { return timeline.day() == date; };
  };
  RUN_STEPS({
      {"figures", [&] { click("pageOverview"); },
       [&] {
         return overview.isReady() && overview.memos() == "3" && overview.days() == "2" &&
                overview.attachments() == "2" && overview.audio() == "1";
       }},
      {"a thread unfolds", [&] { click("thread"); },
       [&] { return item("threadEntry", 1) != nullptr; }},
      {"an entry leads to its note",
       [&] {
         grab("overview.png");
         click(need("threadEntry", 1));
       },
       leadsTo(QDate(2026, 6, 9))},
      {"what looks wrong",
       [&] {
         click("pageOverview");
         click("look");
       },
       leadsTo(QDate(2026, 6, 9))},
      {"a bar leads to its day",
       [&] {
         click("pageOverview");
         click("bar2");
       },
       leadsTo(QDate(2026, 6, 2))},
      {"the month before",
       [&] {
         click("pageOverview");
         click("overviewPrevious");
       },
       [&] { return overview.memos() == "1" && overview.threads()->rowCount() == 0; }},
      {"an empty month", [&] { click("overviewPrevious"); },
       [&] { return item("overviewEmpty") != nullptr; }},
      {"its one way on", [&] { click("emptyAction"); },
       [&] { return overview.isThisMonth() && overview.memos() == "3"; }},
  })
}

}  // namespace
}  // namespace nomely::test
