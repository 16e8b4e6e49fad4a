#include <QClipboard>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QMimeData>
#include <QTest>
#include <QUrl>
#include <csignal>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Desktop/App/DesktopScreens.h"
#include "Desktop/Support/DesktopTest.h"
#include "Desktop/Text/QuickTextView.h"

namespace nomely::test {
namespace {

class WritingTest : public DesktopTest {
 protected:
  WritingTest() { fs::create_directories(root); }
  [[nodiscard]] QuickInputScreen& input() { return *screens().quickInput(); }
  [[nodiscard]] QString text() { return input().editor()->text(); }
  [[nodiscard]] QQuickItem& area() { return *input().editor()->area(); }
  // The text with the selection in brackets, or a bar for the caret.
  [[nodiscard]] std::string state() {
    QString shown = text();
    const int begin = area().property("selectionStart").toInt();
    const int end = area().property("selectionEnd").toInt();
    if (begin == end) return utf8(shown.insert(begin, QLatin1Char('|')));
    return utf8(shown.insert(end, QLatin1Char(']')).insert(begin, QLatin1Char('[')));
  }
  void begin(const QString& text) {
    input().editor()->setText(text);
    settle();
  }
  void compose(const QString& preedit, const QString& commit = {}) {
    QInputMethodEvent event(preedit, {});
    event.setCommitString(commit);
    QCoreApplication::sendEvent(&area(), &event);
    settle();
  }
  void copy(std::unique_ptr<QMimeData> mime) {
    QGuiApplication::clipboard()->setMimeData(mime.release());
  }
  void drop(const QMimeData& mime) {
    const QPoint at = area().mapToScene({20, 10}).toPoint();
    QDragEnterEvent enter(at, Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(desktop->window(), &enter);
    QDragMoveEvent move(at, Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(desktop->window(), &move);
    QDropEvent event(at, Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(desktop->window(), &event);
    settle();
  }
  // The text of the day's note.
  [[nodiscard]] std::string saved(int number) {
    return readFile(root / today() / fmt::format("{:03}.md", number));
  }
  [[nodiscard]] std::string today() { return Day::of(clock.now()).string(); }
  static constexpr const char* draft = ".drafts/quick-input.json";
};

TEST_F(WritingTest, KeysEditAndUndoInOneStep) {
  struct Case {
    const char* before;
    const char* keys;
    const char* after;
    const char* undone;  // by one step
  };
  const Case cases[] = {
      {"字", "Shift+Home, Ctrl+B", "**[字]**", "字"},
      {"", "Ctrl+I", "*[斜体文字]*", ""},
      {"abc", "Ctrl+A, Ctrl+K", "[abc]([url])", "abc"},
      {"a\nb", "Ctrl+A, Ctrl+Alt+7", "[1. a\n2. b]", "a\nb"},
      {"a", "Ctrl+Alt+1", "[# a]", "a"},
      {"a", "Ctrl+Alt+2", "[## a]", "a"},
      {"a", "Ctrl+Alt+3", "[### a]", "a"},
      {"a", "Ctrl+A, Ctrl+`", "`[a]`", "a"},
      {"a", "Ctrl+A, Ctrl+Shift+B, Ctrl+I", "*[a]*", "a"},
      {"- [x] 茶", "Return", "- [x] 茶\n- [ ] |", "- [x] 茶"},
      {"- 茶\n- ", "Return", "- 茶\n|", "- 茶\n- "},
      {"- 茶", "Shift+Return", "- 茶\n|", "- 茶"},
      {"茶", "Tab", "[    茶]", "茶"},
      {"    茶", "Shift+Tab", "[茶]", "    茶"},
      {"😀😁", "Ctrl+Alt+8", "[- 😀😁]", "😀😁"},
  };
  open();
  click("quickText");
  for (const Case& each : cases) {
    SCOPED_TRACE(each.after);
    begin(QString::fromUtf8(each.before));
    key(each.keys);
    EXPECT_EQ(state(), each.after);
    key("Ctrl+Z");
    EXPECT_EQ(utf8(text()), each.undone);
  }
  begin({});
  key("-, Space, A, Return, B, Tab, Ctrl+B");
  EXPECT_EQ(state(), "- a\n**[    - b]**");
  for (const char* const before : {"- a\n    - b", "- a\n- b", "- a\n- ", "- a"}) {
    key("Ctrl+Z");
    EXPECT_EQ(utf8(text()), before) << "commands and typing in turn, each a step of its own";
  }
  area().setProperty("readOnly", true);
  key("Ctrl+B, Return, Shift+Tab");
  EXPECT_EQ(utf8(text()), "- a") << "what may not be changed";
}

TEST_F(WritingTest, AnInputMethodComposesUndisturbed) {
  open();
  click("quickText");
  begin(QStringLiteral("今天 "));
  compose(QStringLiteral("ni hao"));
  key("Return, Ctrl+Return, Tab, Ctrl+B, Escape, Ctrl+V");
  EXPECT_EQ(utf8(text()), "今天 ");
  EXPECT_TRUE(area().property("inputMethodComposing").toBool());
  compose({}, QStringLiteral("你好"));
  EXPECT_EQ(state(), "今天 你好|");
  key("Ctrl+Z");
  EXPECT_EQ(state(), "今天 |");
  EXPECT_FALSE(fs::exists(root / today()));

  // It fills lines, in which a caret would find places that the text doesn't have.
  const QString composed = QStringLiteral("ni hao ").repeated(40);
  const QPoint before = area().mapToScene({1, 4}).toPoint();
  const std::pair<std::function<void()>, QString> leaving[] = {
      {[&] { key("Down"); }, u"a<>"_qs},
      {[&] { clickAt(before); }, u"a<>"_qs},
      {[&] { input().editor()->insertTagSign(); }, u"a<>#"_qs},
      {[&] { compose({}, u"b\nc"_qs); }, u"ab\nc"_qs},
      {[&] { begin(u"b\nc"_qs); }, u"b\nc<>"_qs},
  };
  for (const auto& [leave, after] : leaving) {
    begin(u"a"_qs);
    compose(composed);
    leave();
    for (const char* const keys : {"Up", "Down", "Down"}) key(keys);
    EXPECT_EQ(utf8(text().replace(composed, u"<>"_qs)), utf8(after));
    EXPECT_LE(area().property("cursorPosition").toInt(), text().size()) << utf8(after);
  }
}

TEST_F(WritingTest, TagsCompleteAfterTheSign) {
  put("2026-03-01", 1, "一", "time: \"08:30\"\ntags:\n- 读书/小说\n- 工作\n- _hidden");
  put("2026-03-02", 1, "二", "time: \"08:30\"\ntags:\n- 生活");
  open();
  click("quickText");
  struct Case {
    const char* typed;
    std::vector<const char*> rows;
    const char* keys;
    const char* after;
  };
  const Case cases[] = {
      {"#", {"生活", "读书/小说", "工作"}, "Down, Return", "#读书/小说 |"},
      {"看 #小", {"读书/小说"}, "Tab", "看 #读书/小说 |"},
      {"#工作", {}, "Return", "#工作\n|"},
      {"a#", {}, "Return", "a#\n|"},
      {"`a #", {"生活", "读书/小说", "工作"}, "Escape", "`a #|"},
      {"```\n#", {}, "Tab", "```\n[    #]"},
      {"#生", {"生活"}, "Backspace, Backspace", "|"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.typed);
    begin({});
    type(QString::fromUtf8(each.typed));
    const auto* completion = input().editor()->completion();
    EXPECT_TRUE(
        eventually([&] { return completion->rowCount() == static_cast<int>(each.rows.size()); }));
    for (int row = 0; row < completion->rowCount(); ++row)
      EXPECT_EQ(utf8(completion->index(row).data(Qt::UserRole).toString()),
                each.rows[static_cast<std::size_t>(row)]);
    key(each.keys);
    EXPECT_EQ(state(), each.after);
    EXPECT_FALSE(completion->isOpen());
  }
}

TEST_F(WritingTest, PastesAndDropsPicturesFilesAndText) {
  open();
  click("quickText");
  auto html = std::make_unique<QMimeData>();
  html->setHtml(QStringLiteral("<p>a <b>b</b></p>"));
  html->setText(QStringLiteral("a b"));
  copy(std::move(html));
  key("Ctrl+V");
  EXPECT_EQ(state(), "a **b**|");
  key("Ctrl+Shift+V");
  EXPECT_EQ(state(), "a **b**a b|");
  begin({});
  auto plain = std::make_unique<QMimeData>();
  plain->setText(QStringLiteral("x\r\ny"));
  copy(std::move(plain));
  key("Shift+Ins");
  EXPECT_EQ(state(), "x\ny|");

  QImage pixels(8, 8, QImage::Format_RGB32);
  pixels.fill(Qt::red);
  auto picture = std::make_unique<QMimeData>();
  picture->setImageData(pixels);
  picture->setText(QStringLiteral("not this"));
  copy(std::move(picture));
  key("Ctrl+V");
  // Copying the first takes longer.
  writeFile(folder.path() / "长.pdf", std::string(64 << 20, 'x'));
  writeFile(folder.path() / "纪要.pdf", "%PDF-1.4");
  QMimeData files;
  files.setUrls({QUrl::fromLocalFile(qt((folder.path() / "长.pdf").string())),
                 QUrl::fromLocalFile(qt((folder.path() / "纪要.pdf").string()))});
  drop(files);
  QMimeData words;
  words.setText(QStringLiteral("放下"));
  drop(words);
  EXPECT_EQ(state(), "x\ny放下|");
  ASSERT_TRUE(eventually([&] { return input().attachments()->count() == 3; }));
  EXPECT_EQ(input().attachments()->files()[1].originalName, "长.pdf");
  grab("quick-input.png");

  key("Ctrl+Return");
  ASSERT_TRUE(eventually([&] { return fs::exists(root / today() / "001.md"); }));
  const std::string memo = saved(1);
  EXPECT_NE(memo.find(".png"), std::string::npos);
  EXPECT_NE(memo.find("纪要.pdf"), std::string::npos);
  EXPECT_EQ(std::distance(fs::directory_iterator(root / today()), {}), 4);
  ASSERT_TRUE(eventually([&] { return !input().isFilled(); }));
  EXPECT_TRUE(eventually([&] { return textOf("inputNotice").startsWith(u"已保存 "_qs); }));
  EXPECT_TRUE(eventually([&] { return screens().timeline()->model()->rowCount() == 1; }));
}

TEST_F(WritingTest, ADraftComesBackWhole) {
  open();
  click("quickText");
  type(QStringLiteral("没写完 #梦"));
  input().setMood(4);
  ASSERT_TRUE(eventually([&] { return holds(draft, "没写完"); }));
  type(QStringLiteral("境"));
  close();  // before the next one was due
  EXPECT_TRUE(holds(draft, "没写完 #梦境"));

  open();
  ASSERT_TRUE(eventually([&] { return utf8(text()) == "没写完 #梦境"; }));
  EXPECT_EQ(input().mood(), 4);
  EXPECT_EQ(textOf("inputNotice"), QStringLiteral("已恢复草稿"));
  // A note that can't be written stays in the input.
  fs::permissions(root, fs::perms::owner_read | fs::perms::owner_exec);
  writeFile(folder.path() / "x", "");
  key("Ctrl+A");
  click("quickText");
  fs::permissions(root, fs::perms::owner_all);
  click("submitButton");
  ASSERT_TRUE(eventually([&] { return !fs::exists(root / draft); }));
  EXPECT_NE(saved(1).find("mood: 4"), std::string::npos);
  EXPECT_NE(saved(1).find("- 梦境"), std::string::npos);
}

// The program that dies is this one, begun anew over the same root.
TEST_F(WritingTest, AKilledProgramLosesNothingThatADraftHolds) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  constexpr auto shared = "NOMELY_TEST_KILLED_ROOT";
  if (qEnvironmentVariableIsSet(shared)) root = qgetenv(shared).toStdString();
  DesktopTest::state = root.parent_path() / "state";
  const fs::path away = root.string() + "-away";
  qputenv(shared, QByteArray::fromStdString(root.string()));
  const auto isOnThisMachine = [&] {
    std::error_code noneYet;
    for (const auto& file : fs::directory_iterator(DesktopTest::state / "nomely/drafts", noneYet))
      if (file.path().extension() == ".json" && holds(file.path().string(), "盘没了")) return true;
    return false;
  };
  const auto typeAndDie = [&] {
    open();
    click("quickText");
    type(QStringLiteral("还没写完"));
    ASSERT_TRUE(eventually([&] { return holds(draft, "还没写完"); }));
    fs::rename(root, away);
    type(QStringLiteral("，盘没了"));
    ASSERT_TRUE(eventually(isOnThisMachine));
    ::raise(SIGKILL);
  };
  EXPECT_EXIT(typeAndDie(), testing::KilledBySignal(SIGKILL), "");
  qunsetenv(shared);
  EXPECT_THAT(readFile(away / ".drafts/quick-input.json"), HasSubstr("还没写完"));
  fs::rename(away, root);
  open();
  EXPECT_TRUE(eventually([&] { return utf8(text()) == "还没写完，盘没了"; }));
}

class FocusEditorTest : public WritingTest {
 protected:
  [[nodiscard]] FocusEditorScreen& page() { return *screens().focusEditor(); }
  static constexpr const char* file = "2026-03-01/001.md";
  void openMemo() {
    auto* const model = screens().timeline()->model();
    ASSERT_TRUE(eventually([&] { return model->rowCount() > 0; }));
    page().open(model->index(0).data(model->roleNames().key("memo")).value<MemoHandle>());
    ASSERT_TRUE(eventually(
        [&] { return screens().navigation()->page() == Navigation::Editor && page().isOpen(); }));
    settle();
  }
  [[nodiscard]] QString body() { return page().editor()->text(); }
  [[nodiscard]] bool hasDraft() {
    for (const auto& entry : fs::directory_iterator(root / ".drafts"))
      if (entry.path().filename().string().starts_with("focus-")) return true;
    return false;
  }
};

TEST_F(FocusEditorTest, SavesADraftAndTheMemo) {
  put("2026-03-01", 1, "早上\n\n---\n<!-- original-base64:5Y6f5paH -->");
  open();
  openMemo();
  EXPECT_EQ(utf8(body()), "早上");
  grab("editor.png");
  type(QStringLiteral("跑步 #运动 "));
  ASSERT_TRUE(eventually([&] { return page().status().startsWith(QStringLiteral("草稿已存")); }));
  key("Escape");
  EXPECT_EQ(screens().navigation()->page(), Navigation::Timeline);
  EXPECT_TRUE(hasDraft());
  openMemo();
  EXPECT_EQ(utf8(body()), "早上跑步 #运动");
  EXPECT_EQ(page().notice(), QStringLiteral("已恢复草稿"));
  page().setMood(5);
  key("Ctrl+S");
  ASSERT_TRUE(eventually([&] { return page().status().startsWith(QStringLiteral("已保存")); }));
  for (const char* const part : {"早上跑步 #运动", "original-base64:5Y6f5paH", "- 运动", "mood: 5"})
    EXPECT_TRUE(holds(file, part)) << part;
  EXPECT_TRUE(eventually([&] { return !hasDraft(); }));
  EXPECT_EQ(utf8(page().count()), "6 字");
}

TEST_F(FocusEditorTest, TheFieldForATagOffersOthers) {
  put("2026-02-01", 1, "一", "time: \"08:30\"\ntags: [读书/小说, 读书/诗, 工作]");
  put("2026-03-01", 1, "二", "time: \"08:30\"\ntags: [读书/诗]");
  open();
  openMemo();
  const auto* const choices = page().tagChoices();
  const struct {
    const char* typed;
    int offered;
    const char* keys;
    std::vector<std::string> tags;
  } cases[]{
      {"读", 1, "Return", {"读书/诗", "读书/小说"}},
      {"工", 1, "Escape, Return", {"读书/诗", "读书/小说", "工"}},
      {"新的", 0, "Return", {"读书/诗", "读书/小说", "工", "新的"}},
  };
  click("addTag");
  for (const auto& [typed, offered, keys, tags] : cases) {
    SCOPED_TRACE(typed);
    type(QString::fromUtf8(typed));
    EXPECT_TRUE(eventually([&] { return choices->rowCount() == offered; }));
    key(keys);
    EXPECT_EQ(page().tags()->tags(), tags);
  }
  key("Escape");
  EXPECT_EQ(item("tagField"), nullptr);
  EXPECT_EQ(screens().navigation()->page(), Navigation::Editor);
}

TEST_F(FocusEditorTest, AConflictLosesNeitherText) {
  struct Case {
    const char* answer;
    std::vector<const char*> inEditor;
    const char* onDisk;
  };
  const Case cases[] = {
      {"keepMine", {"我的早上"}, "我的早上"},
      {"takeTheirs", {"别处的"}, "别处的"},
      {"keepBoth", {"我的早上", "别处的"}, "别处的"},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.answer);
    put("2026-03-01", 1, "早上");
    open();
    openMemo();
    key("Ctrl+Home");
    type(QStringLiteral("我的"));
    put("2026-03-01", 1, "别处的");
    key("Ctrl+S");
    ASSERT_TRUE(eventually([&] { return page().conflict() == FocusEditorScreen::Changed; }));
    EXPECT_TRUE(holds(file, "别处的"));
    grab("conflict.png");
    click(each.answer);
    EXPECT_TRUE(eventually([&] { return holds(file, each.onDisk); }));
    for (const char* const part : each.inEditor)
      EXPECT_NE(utf8(body()).find(part), std::string::npos) << part;
    EXPECT_EQ(page().conflict(), FocusEditorScreen::NoConflict);
    close();
    fs::remove_all(root);
  }
}

TEST_F(FocusEditorTest, TellsOfChangesElsewhere) {
  put("2026-03-01", 1, "早上");
  open();
  openMemo();
  put("2026-03-01", 1, "别处的");
  page().checkDisk();
  ASSERT_TRUE(eventually([&] { return utf8(body()) == "别处的\n"; }));
  key("Ctrl+Home");
  type(QStringLiteral("我的"));
  fs::remove(root / file);
  page().checkDisk();
  ASSERT_TRUE(eventually([&] { return page().conflict() == FocusEditorScreen::Gone; }));
  page().leave();
  page().checkDisk();
  click("errorAction");
  EXPECT_EQ(screens().navigation()->page(), Navigation::Editor);
  click("saveAsNew");
  EXPECT_TRUE(eventually([&] { return holds(file, "我的别处的"); }));
  EXPECT_TRUE(eventually([&] { return page().conflict() == FocusEditorScreen::NoConflict; }));
}

}  // namespace
}  // namespace nomely::test
