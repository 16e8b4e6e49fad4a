#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickTextDocument>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <map>
#include <random>

#include "Desktop/Support/DesktopTest.h"
#include "Desktop/Text/SelectedText.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

MemoHandle memoOf(const std::string& body, const char* id = "memo_1") {
  auto memo = std::make_shared<Memo>();
  memo->memoId = id;
  memo->body = body;
  MemoHandle handle;
  handle.entry.memo = std::move(memo);
  return handle;
}

// A body on its own in the window.
class BodyTest : public DesktopTest {
 protected:
  QQuickItem* make(const char* type) {
    QQmlEngine* const engine = qmlEngine(desktop->window());
    QQmlComponent component(engine);
    component.setData(QByteArray("import QtQuick\nimport Nomely\n") + type +
                          " { width: 600; property Item theme: Item { property bool dark; "
                          "onDarkChanged: Theme.dark = dark } }",
                      QUrl());
    auto* const made = qobject_cast<QQuickItem*>(component.create());
    EXPECT_NE(made, nullptr) << utf8(component.errorString());
    made->setParent(desktop->window());
    made->setParentItem(desktop->window()->contentItem());
    return made;
  }
  static void show(QQuickItem& body, const MemoHandle& memo) {
    body.setProperty("memo", QVariant::fromValue(memo));
  }

  static std::vector<QQuickItem*> textsIn(const QQuickItem& item) {
    std::vector<QQuickItem*> texts;
    for (QQuickItem* child : item.childItems()) {
      if (child->inherits("QQuickTextEdit") && child->isVisible()) texts.push_back(child);
      for (QQuickItem* text : textsIn(*child)) texts.push_back(text);
    }
    return texts;
  }
  static QTextDocument& documentOf(const QQuickItem& text) {
    return *text.property("textDocument").value<QQuickTextDocument*>()->textDocument();
  }
  // What all texts hold, each after a bar.
  static std::string html(const QQuickItem& body) {
    QString all;
    for (const QQuickItem* text : textsIn(body)) {
      const QTextDocument& document = documentOf(*text);
      all += u'|' + SelectedText::html(document, 0, document.characterCount() - 1);
    }
    return utf8(all);
  }
};

TEST_F(BodyTest, Drawn) {
  open();
  QQuickItem& body = *make("MemoBody");
  body.setProperty("expanded", true);
  const std::pair<const char*, const char*> cases[]{
      {"一 **二***三*~~四~~`五`[六](http://a.b/?c&d)\n七 @[[id|八]]",
       "|<p>一 <strong>二</strong><em>三</em><s>四</s><code>五</code>"
       "<a href=\"http://a.b/?c&amp;d\">六</a><br>七 <strong>@八</strong></p>"},
      {"# 甲\n- 乙\n* 丙\n3. 丁\n- [x] 戊\n> 己\n> 庚",
       "|<h1>甲</h1><ul><li>乙</li><li>丙</li></ul><ol><li>丁</li></ol>"
       "<ul><li><s>戊</s></li></ul><blockquote>己<br>庚</blockquote>"},
      {"上\n```c\na<b\n\tc\n```\n下\n\n---\n> [!tip]\n> 说",
       "|<p>上</p>|<pre>a&lt;b\n\tc</pre>|<p>下</p>|<p>Tip</p>|<p>说</p>"},
      {"|甲|乙|\n|---|---|\n|**丙**|丁|",
       "|<table><tr><th><strong>甲</strong></th><th><strong>乙</strong></th></tr>"
       "<tr><td><strong>丙</strong></td><td>丁</td></tr></table>"},
      {"\uFDD0\u2029\u0001<b>&amp;", "|<p>\uFFFD<br>\u0001&lt;b&gt;&amp;</p>"},
      {"短\n\n---\n<!-- original-base64:5pen -->", "|<p>短</p>"},
  };
  for (const auto& [text, drawn] : cases) {
    show(body, memoOf(text));
    EXPECT_EQ(html(body), drawn);
  }
}

TEST_F(BodyTest, TagsStandOut) {
  open();
  QQuickItem& body = *make("MemoBody");
  const struct {
    const char* text;
    const char* coloured;
  } cases[]{{"看 **书** #读书/小说，#不是 #一", "#读书/小说#一"},
            {"- [x] 完 #事\n- [ ] 未 #物", "#物"},
            {"`#码` [#链](http://a.b) #甲\n```\n#乙\n```", "#甲"}};
  for (const auto& [text, coloured] : cases) {
    show(body, memoOf(text));
    QString found;
    for (const QQuickItem* item : textsIn(body))
      for (QTextBlock block = documentOf(*item).begin(); block.isValid(); block = block.next())
        for (auto part = block.begin(); !part.atEnd(); ++part)
          if (part.fragment().charFormat().foreground().color() == QColor("#A8452B"))
            found += part.fragment().text();
    EXPECT_EQ(utf8(found), coloured);
  }
}

// Whatever is changed, a body is drawn as one made of it anew.
TEST_F(BodyTest, EditsLeadWhereANewCardBegins) {
  open();
  QQuickItem& edited = *make("MemoBody");
  edited.setProperty("expanded", true);
  const std::vector<std::string> pieces{"甲",     "- 乙", "- [ ] 丙",    "- [x] 丁",         "> 戊",
                                        "### 己", "",     "```\nx\n```", "|a|b|\n|---|---|", "---"};
  std::mt19937 random(5);
  std::vector<std::string> lines;
  for (int round = 0; round < 60; ++round) {
    for (auto edits = random() % 3; edits < 3; ++edits) {
      const auto at = lines.begin() + static_cast<std::ptrdiff_t>(random() % (lines.size() + 1));
      if (random() % 3 > 0 || at == lines.end())
        lines.insert(at, pieces[random() % pieces.size()]);
      else
        lines.erase(at);
    }
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    show(edited, memoOf(text));
    QQuickItem& made = *make("MemoBody");
    made.setProperty("expanded", true);
    show(made, memoOf(text));
    desktop->window()->grabWindow();
    ASSERT_EQ(html(edited), html(made)) << text;
    ASSERT_EQ(edited.implicitHeight(), made.implicitHeight()) << text;
    delete &made;
  }
}

TEST_F(BodyTest, ColoursChangeUnderASelection) {
  open();
  QQuickItem& body = *make("MemoBody");
  show(body, memoOf("甲 [乙](http://a.b) <span style=\"color: #101060\">丙</span>丁"));
  QQuickItem& text = *textsIn(body).front();
  QMetaObject::invokeMethod(&text, "select", Q_ARG(int, 1), Q_ARG(int, 4));
  const auto ink = [&](int position) {
    QTextCursor cursor(&documentOf(text));
    cursor.setPosition(position);
    return cursor.charFormat().foreground().color().lightnessF();
  };
  auto* const theme = body.property("theme").value<QQuickItem*>();
  std::map<bool, std::pair<double, double>> inks;
  for (const bool dark : {true, false}) {
    theme->setProperty("dark", dark);
    settle();
    inks[dark] = {ink(3), ink(5)};
    EXPECT_EQ(text.property("selectedText").toString(), u" 乙 "_qs);
  }
  EXPECT_GT(inks[true].first, inks[false].first) << "the link";
  EXPECT_GT(inks[true].second, inks[false].second + 0.2) << "a dark blue of the writer's";
  body.setProperty("keyword", u"丁"_qs);
  EXPECT_EQ(text.property("selectedText").toString(), u" 乙 "_qs);
}

struct Drag {
  const char* does;
  std::function<void()> action;
  const char* text;
  const char* html;
};

TEST_F(BodyTest, SelectedAcrossTexts) {
  open();
  QQuickItem& body = *make("MemoBody");
  const MemoHandle memo = memoOf("头**尾**\n- 项\n\n```\n码\n```\n|甲|乙|\n|---|---|\n末");
  body.setProperty("expanded", true);
  show(body, memo);
  settle();
  auto* const window = desktop->window();
  const auto texts = textsIn(body);
  ASSERT_EQ(texts.size(), 4U);
  const auto place = [&](std::size_t text, double x) {
    return texts[text]->mapToScene({x, 8}).toPoint();
  };
  const auto drag = [&](QPoint from, QPoint to) {
    QTest::mousePress(window, Qt::LeftButton, {}, from);
    for (int step = 1; step <= 4; ++step) QTest::mouseMove(window, from + (to - from) * step / 4);
    QTest::mouseRelease(window, Qt::LeftButton, {}, to);
  };
  const Drag rows[]{
      {"copies without a selection",
       [&] { QTest::mouseClick(window, Qt::LeftButton, {}, place(0, 2)); },
       "头**尾**\n- 项\n\n```\n码\n```\n|甲|乙|\n|---|---|\n末", ""},
      {"drags down", [&] { drag(place(0, 16), place(2, 40)); }, "尾\n• 项\n码\n甲\t乙",
       "<p><strong>尾</strong></p><ul><li>项</li></ul><pre>码</pre>"
       "<table><tr><th><strong>甲</strong></th><th><strong>乙</strong></th></tr></table>"},
      {"drags up", [&] { drag(place(3, 15), place(1, 0)); }, "码\n甲\t乙\n末", nullptr},
      {"clicks with Shift",
       [&] {
         QTest::mouseClick(window, Qt::LeftButton, {}, place(0, 15));
         QTest::mouseClick(window, Qt::LeftButton, Qt::ShiftModifier, place(1, 100));
       },
       "尾\n• 项\n码", nullptr},
      {"selects all", [&] { key("Ctrl+A"); }, "头尾\n• 项\n码\n甲\t乙\n末", nullptr},
  };
  for (const Drag& row : rows) {
    SCOPED_TRACE(row.does);
    row.action();
    settle();
    key("Ctrl+C");
    EXPECT_EQ(utf8(QGuiApplication::clipboard()->text()), row.text);
    if (row.html != nullptr) {
      EXPECT_EQ(utf8(QGuiApplication::clipboard()->mimeData()->html()), row.html);
    }
  }
  show(body, memoOf("另一条", "memo_2"));
  EXPECT_EQ(textsIn(body).front()->property("selectedText").toString(), QString());
}

TEST_F(BodyTest, TickedOnItsLine) {
  put("2026-03-01", 1, "[Image #1]\n要做\n\n- [ ] 甲\n- [ ] 乙\n- [x] 丙");
  open();
  const auto becomes = [&](const char* text) {
    return eventually([&] { return holds("2026-03-01/001.md", text); });
  };
  QQuickItem* const box = need("box3");
  click(box);
  EXPECT_TRUE(becomes("- [ ] 甲\n- [x] 乙\n- [x] 丙"));
  settle();
  EXPECT_EQ(item("box3"), box) << "the card was not built anew";
  need("box4")->forceActiveFocus(Qt::TabFocusReason);
  key("Space");
  EXPECT_TRUE(becomes("- [ ] 甲\n- [x] 乙\n- [ ] 丙"));
  key("Shift+Tab, Shift+Tab, Return");
  EXPECT_TRUE(becomes("- [x] 甲\n- [x] 乙\n- [ ] 丙"));
  EXPECT_TRUE(need("box2")->property("checked").toBool());
  grab("body-ticked.png");
}

TEST_F(BodyTest, HugeBodies) {
  open();
  QQuickItem& card = *make("MemoBody");
  QQuickItem& reader = *make("LongBody");
  reader.setHeight(700);
  const std::pair<const char*, std::string> cases[]{
      {"one endless line", repeated("长", 100'000)},
      {"one endless word", repeated("x", 100'000)},
      {"marks on one letter", "a" + repeated("\u0301", 60'000)},
      {"100,000 characters",
       repeated("这是一段普通的正文，有标点，也有 **加粗** 与 `code`，还有数字 12345。\n\n",
                2'500)},
      {"500 blocks", repeated("# 题\n\n- 甲\n- [ ] 乙\n\n> 丙\n\n```\nx\n```\n\n", 100)},
      {"200 columns", "|" + repeated("列|", 200) + "\n|" + repeated("---|", 200) + "\n|" +
                          repeated("格 **b**|", 200)},
      {"2,000 rows", "|a|b|c|\n|---|---|---|\n" + repeated("|甲|乙|丙|\n", 2'000)},
      {"nested spans", repeated("<span style=\"color: #FF0000\">*", 2'000) + "x"},
      {"right to left", repeated("שלום ", 20'000)},
      {"code without lines", "```\n" + repeated("码", 100'000) + "\n```"},
      {"links", repeated("https://a.example/b ", 3'000)},
  };
  const auto draw = [&] {
    settle();
    desktop->window()->grabWindow();
  };
  for (const auto& [name, text] : cases) {
    show(card, memoOf(text));
    draw();
    card.setProperty("expanded", true);
    draw();
    EXPECT_LT(card.implicitHeight(), 60'000) << name;
    show(reader, memoOf(text));
    draw();
    EXPECT_FALSE(textsIn(reader).empty()) << name;
    card.setProperty("expanded", false);
    show(card, memoOf(""));
    show(reader, memoOf(""));
  }
}

}  // namespace
}  // namespace nomely::test
