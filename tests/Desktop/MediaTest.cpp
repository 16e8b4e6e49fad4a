#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QTest>

#include "Desktop/Media/MediaScreen.h"
#include "Desktop/Sound/PlayerScreen.h"
#include "Desktop/Sound/SpokenText.h"
#include "Desktop/Support/DesktopTest.h"
#include "Support/Sound.h"

namespace nomely::test {
namespace {

class MediaTest : public DesktopTest {
 protected:
  MediaTest() {
    fs::create_directories(day);
    for (const char* name : {"a.png", "b.png", "c.png"}) {
      QImage image(640, 480, QImage::Format_RGB32);
      image.fill(Qt::darkGreen);
      EXPECT_TRUE(image.save(qt((day / name).string())));
    }
  }
  void memo(const std::string& attachments, const std::string& more = {}) {
    put("2026-03-01", 1, "附件", "time: \"08:30\"\nattachments: [" + attachments + "]" + more);
    open();
  }
  [[nodiscard]] PlayerScreen& player() { return *screens().player(); }
  // Whether the player gets to that second while it is heard.
  bool hearTo(double second) {
    return eventually([&] {
      (void)speaker.hearUntil([](std::size_t samples) { return samples > 500; });
      return player().position() >= second;
    });
  }

  fs::path day = root / "2026-03-01";
  HeardSpeaker speaker{folder.path()};
};

TEST_F(MediaTest, ACardShowsNinePicturesAndTheViewerAllOfThem) {
  std::string many = "a.png, ../../secret.png, none.png";
  for (int i = 0; i < 297; ++i) many += ", b.png";
  memo(many);
  EXPECT_NE(need("photo", 8), nullptr);
  EXPECT_EQ(item("photo", 9), nullptr);
  EXPECT_EQ(item("photo", 0)->property("source").toString(),
            u"image://thumbnail/"_qs + qt((day / "a.png").string()));
  EXPECT_EQ(item("photo", 1)->property("source").toString(), "");
  EXPECT_TRUE(eventually([&] { return item("photo", 2)->property("isMissing").toBool(); }));

  struct Step {
    const char* key;
    const char* place;
  };
  click("photo");
  ASSERT_TRUE(eventually([&] { return item("viewerPlace") != nullptr; }));
  for (const auto& [pressed, place] :
       {Step{"Left", "1 / 300"}, Step{"Right", "2 / 300"}, Step{"End", "300 / 300"},
        Step{"Right", "300 / 300"}, Step{"PgUp", "299 / 300"}, Step{"Home", "1 / 300"}}) {
    key(pressed);
    EXPECT_EQ(utf8(textOf("viewerPlace")), place) << pressed;
  }
  const auto zoom = [&] { return item("viewerPicture")->property("zoom").toDouble(); };
  key("+");
  EXPECT_EQ(zoom(), 1.25);
  for (int step = 0; step < 4; ++step) key("+");
  const QQuickItem& picture = *need("viewerImage");
  ASSERT_TRUE(eventually([&] { return picture.width() > 1280; }));
  const double before = picture.x();
  QTest::mousePress(desktop->window(), Qt::LeftButton, {}, {600, 400});
  for (const int x : {620, 640, 660}) QTest::mouseMove(desktop->window(), {x, 400});
  QTest::mouseRelease(desktop->window(), Qt::LeftButton, {}, {660, 400});
  EXPECT_GT(picture.x(), before) << "dragged";
  key("0");
  EXPECT_EQ(zoom(), 1);
  key("Ctrl+C");
  EXPECT_TRUE(eventually([] { return QGuiApplication::clipboard()->image().width() == 640; }));
  key("Esc");
  EXPECT_TRUE(eventually([&] { return item("viewerPlace") == nullptr; }));
}

TEST_F(MediaTest, AFileIsSavedUnderItsOwnNameOrTellsWhyNot) {
  writeFile(day / "d.pdf", "contract");
  memo("d.pdf", "\noriginal_names:\n  d.pdf: 合同：上/下.pdf");
  QUrl suggested;
  QStringList told;
  QObject::connect(screens().media(), &MediaScreen::saveAsked,
                   [&](const QUrl& target) { suggested = target; });
  QObject::connect(screens().navigation(), &Navigation::failed,
                   [&](const QString& text) { told.append(text); });
  click("file", Qt::RightButton);
  EXPECT_EQ(item("menuDelete"), nullptr);  // the card's own menu
  click("attachmentSave");
  EXPECT_EQ(suggested.fileName(), u"合同-上-下.pdf"_qs);
  const fs::path target = folder.path() / "saved.pdf";
  QObject* dialog = nullptr;
  for (QObject* const each : need("attachmentsOver")->findChildren<QObject*>())
    if (each->inherits("QQuickFileDialog")) dialog = each;
  ASSERT_NE(dialog, nullptr);
  dialog->setProperty("selectedFile", QUrl::fromLocalFile(qt(target.string())));
  QMetaObject::invokeMethod(dialog, "accept");
  EXPECT_TRUE(eventually([&] { return fs::exists(target) && readFile(target) == "contract"; }));
  screens().media()->saveTo(QUrl::fromLocalFile(u"/proc/none/d.pdf"_qs));
  EXPECT_TRUE(eventually([&] { return told.size() == 1; }));
  fs::remove(day / "d.pdf");
  EXPECT_TRUE(eventually([&] {
    click("file");
    return told.size() >= 2;
  }));
  EXPECT_TRUE(told.back().contains(u"不在了"_qs));
}

TEST_F(MediaTest, ASoundPlaysByMouseAndKeysAndMarksItsWords) {
  writeTone(day / "v.wav", {.seconds = 20});
  memo("v.wav",
       "\naudio_transcripts:\n  v.wav:\n    text: 一条河，不用目录。\n    segments:\n"
       "    - {text: 一条河, start: 0.5, duration: 1}\n    - {text: 不用, start: 10, duration: 1}");
  ASSERT_TRUE(eventually([&] { return item("soundTime") != nullptr; }));
  EXPECT_EQ(textOf("soundTime"), "0:20");
  click("soundWords");
  click("soundPlay");
  EXPECT_TRUE(hearTo(0.6));
  const auto marked = [&] { return item("soundText")->property("selectedText").toString(); };
  EXPECT_EQ(marked(), u"一条河"_qs);

  need("soundPlace")->forceActiveFocus();
  settle();
  key("Space");
  EXPECT_FALSE(player().isPlaying());
  const double paused = player().position();
  key("Right");
  EXPECT_NEAR(player().position(), paused + 5, 0.2);
  key("Space");
  click("soundSpeed");
  EXPECT_EQ(player().speed(), 1.25);
  EXPECT_TRUE(hearTo(10.1));
  EXPECT_EQ(marked(), u"不用"_qs);
  // A click on a word goes to it.
  QQuickItem* const words = item("soundText");
  clickAt(words->mapToScene({10, 10}).toPoint());
  EXPECT_LT(player().position(), 1);

  player().seek(player().path(), 19.8);
  EXPECT_TRUE(hearTo(19.8));
  EXPECT_TRUE(eventually([&] {
    (void)speaker.hearUntil(
        [&](std::size_t samples) { return samples > 500 || !player().isPlaying(); });
    return !player().isPlaying();
  }));
  EXPECT_EQ(player().failure(), "");
  click("soundPlay");
  screens().timeline()->showImages();  // another list
  EXPECT_TRUE(eventually([&] { return player().path().isEmpty(); }));
}

TEST_F(MediaTest, WhatCannotBePlayedSaysSo) {
  writeFile(day / "page.mp3", "<html>404</html>");
  memo("page.mp3, none.m4a");
  EXPECT_TRUE(eventually(
      [&] { return item("soundTrouble") && textOf("soundTrouble") == u"录音文件不在了"_qs; }));
  grab("sound-missing.png");
  click("soundPlay");
  EXPECT_TRUE(eventually(
      [&] { return textOf("soundTrouble") == u"不是可读的音频文件，或者文件已损坏"_qs; }));
}

TEST(SpokenWordsTest, FindsTheWordOfASecondAndTheSecondOfAWord) {
  const auto words = [](const char* text, std::vector<std::pair<const char*, double>> segments) {
    AudioTranscript transcript{.text = text, .segments = {}};
    for (const auto& [word, start] : segments)
      transcript.segments.push_back({.text = word, .start = start, .duration = 1});
    return SpokenWords(transcript);
  };
  const SpokenWords chinese = words("好，走走吧。", {{"好", 1}, {"走", 2}, {"走", 3}, {"吧", 4}});
  const auto at = [](const SpokenWords& spoken, double second) {
    const auto range = spoken.at(second);
    return std::pair(range.begin, range.end);
  };
  EXPECT_EQ(at(chinese, 0.9), std::pair(0LL, 0LL));
  EXPECT_EQ(at(chinese, 2.5), std::pair(2LL, 3LL));
  EXPECT_EQ(at(chinese, 3.0), std::pair(3LL, 4LL));
  EXPECT_EQ(at(chinese, 99), std::pair(4LL, 5LL));
  EXPECT_EQ(chinese.secondOf(0), 1);
  EXPECT_EQ(chinese.secondOf(1), 2);  // the comma
  EXPECT_EQ(chinese.secondOf(100), 4);
  const SpokenWords other = words("another text", {{"one", 1}, {"two", 2}, {"好", 3}});
  EXPECT_EQ(other.text(), u"one two好"_qs);
  EXPECT_EQ(at(other, 2), std::pair(4LL, 7LL));
  EXPECT_EQ(words("no times", {}).text(), "");
}

}  // namespace
}  // namespace nomely::test
