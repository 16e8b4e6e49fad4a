#include <QTest>
#include <atomic>

#include "Core/Storage/DraftStore.h"
#include "Desktop/Support/DesktopTest.h"
#include "Platform/Files/FileError.h"
#include "Support/FaultyFileSystem.h"

namespace nomely::test {
namespace {

using testing::HasSubstr;

// Disks that fill up and folders that go away while somebody types.
class MisfortuneTest : public DesktopTest {
 protected:
  MisfortuneTest() {
    put("2026-03-01", 1, "早上");
    fileSystem = &disk;
  }
  ~MisfortuneTest() override { desktop.reset(); }
  [[nodiscard]] std::string input() { return utf8(screens().quickInput()->editor()->text()); }
  [[nodiscard]] std::string page() {
    return utf8(screens().focusEditor()->editor()->text().remove(u'\n'));
  }
  void vanish() {
    fs::rename(root, away);
    ASSERT_TRUE(eventually([&] { return !desktop->obstacle().isEmpty(); }));
    grab("obstacle.png");
  }
  void comeBack() {
    fs::rename(away, root);
    ASSERT_TRUE(eventually([&] { return desktop->obstacle().isEmpty() && desktop->screens(); }));
  }

  std::atomic<bool> isFull = false;
  FaultyFileSystem disk{posixFileSystem(), {}, [this](const FaultyFileSystem::Call& call) {
                          if (isFull && call.name == "write")
                            throw FileError("写入", call.path, ENOSPC);
                        }};
  fs::path away = folder.path() / "away";
};

TEST_F(MisfortuneTest, AFullDiskLeavesTheTextUntilThereIsRoom) {
  open();
  click("quickText");
  type(QStringLiteral("一"));
  isFull = true;
  type(QStringLiteral("二"));
  click("submitButton");
  ASSERT_TRUE(eventually([&] { return item("errorText") != nullptr; }));
  EXPECT_THAT(utf8(textOf("errorText")), HasSubstr("没有存成笔记"));
  desktop->window()->close();
  EXPECT_EQ(textOf("questionTitle"), QStringLiteral("现在关闭，写下的文字会丢失"));
  grab("close-anyway.png");
  click("cancel");
  EXPECT_EQ(input(), "一二");
  isFull = false;
  ASSERT_TRUE(eventually([&] { return fs::exists(root / ".drafts/quick-input.json"); }));
  click("submitButton");
  EXPECT_TRUE(eventually([&] { return input().empty(); }));
  close();
}

TEST_F(MisfortuneTest, ARootThatGoesAndComesBringsListAndTexts) {
  open();
  click("quickText");
  type(QStringLiteral("甲"));
  screens().focusEditor()->open(screens().timeline()->model()->at(0));
  ASSERT_TRUE(eventually([&] { return page() == "早上"; }));
  settle();
  type(QStringLiteral("乙"));
  vanish();
  type(QStringLiteral("丙"));
  comeBack();
  EXPECT_TRUE(eventually([&] { return input() == "甲" && page() == "早上乙丙"; })) << page();
  EXPECT_EQ(screens().navigation()->page(), Navigation::Editor);
  EXPECT_TRUE(eventually([&] { return screens().timeline()->model()->rowCount() == 1; }));

  // Closed while it is away, and written in by another machine meanwhile.
  vanish();
  type(QStringLiteral("丁"));
  screens().quickInput()->editor()->replaceText(QStringLiteral("甲戊"));
  close();
  const DraftStore others(StoreContext({away}, FileManager(posixFileSystem()), clock));
  others.saveQuickInputDraft({.text = "别处的", .updatedAt = clock.now()});
  fs::rename(away, root);
  open();
  EXPECT_TRUE(eventually([&] { return input() == "别处的\n\n甲戊"; })) << input();
  screens().focusEditor()->open(screens().timeline()->model()->at(0));
  EXPECT_TRUE(eventually([&] { return page() == "早上乙丙丁"; })) << page();
}

// In whose place there is another diary: the text goes along, and can be a note there.
TEST_F(MisfortuneTest, ATextWhoseNoteIsGoneCanBeSavedAsANewOne) {
  open();
  screens().focusEditor()->open(screens().timeline()->model()->at(0));
  ASSERT_TRUE(eventually([&] { return page() == "早上"; }));
  settle();
  type(QStringLiteral("乙"));
  vanish();
  fs::create_directories(root);
  ASSERT_TRUE(eventually([&] { return desktop->obstacle().isEmpty(); }));
  ASSERT_TRUE(eventually([&] { return item("saveAsNew") != nullptr; }));
  click("saveAsNew");
  EXPECT_TRUE(eventually([&] { return fs::exists(root / "2026-03-01/001.md"); }));
}

}  // namespace
}  // namespace nomely::test
