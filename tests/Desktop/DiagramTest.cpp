#include <QAccessible>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

#include "Desktop/Base/Qt.h"
#include "Desktop/Base/QtMainExecutor.h"
#include "Desktop/Pictures/DiagramProvider.h"
#include "Support/FakeDiagramProgram.h"
#include "Support/Matchers.h"

namespace nomely::test {
namespace {

using namespace std::chrono_literals;

class DiagramTest : public testing::Test {
 protected:
  explicit DiagramTest(std::string program = {}) {
    provider = new DiagramProvider(
        executor, *timers,
        {.program = program.empty() ? fake.program : program, .patience = 400ms});
    view.engine()->addImportPath(QStringLiteral("qrc:/qt/qml"));
    view.engine()->addImageProvider(QStringLiteral("diagram"), provider);
    view.setResizeMode(QQuickView::SizeRootObjectToView);
    view.resize(600, 400);
    view.setSource(QUrl(QStringLiteral("qrc:/qt/qml/Nomely/Qml/Card/MermaidBlock.qml")));
    view.show();
  }

  void show(const QString& code) { view.rootObject()->setProperty("code", code); }
  [[nodiscard]] QQuickItem* part(const char* name) const {
    return view.rootObject()->findChild<QQuickItem*>(QString::fromUtf8(name));
  }
  // Which of its faces the block has: "waiting", "picture" or the message below the source.
  [[nodiscard]] std::string face() const {
    if (part("diagramWaiting")->isVisible()) return "waiting";
    if (part("diagramPicture")->isVisible()) return "picture";
    return part("diagramFallback")->isVisible()
               ? utf8(part("diagramMessage")->property("text").toString())
               : "";
  }
  [[nodiscard]] bool becomes(std::string_view start) const {
    return QTest::qWaitFor([&] { return face().starts_with(start); }, 10'000);
  }
  [[nodiscard]] double height() const { return view.rootObject()->implicitHeight(); }

  TemporaryFolder folder;
  FakeDiagramProgram fake{folder.path()};
  QtMainExecutor executor;
  std::unique_ptr<Timers> timers = makeSystemTimers();
  QQuickView view;
  DiagramProvider* provider = nullptr;
};

TEST_F(DiagramTest, ShowsThePictureOrWhyThereIsNone) {
  const struct {
    const char* code;
    std::string_view face;
    double leastHeight;
    int starts;
  } rows[] = {
      {"graph TD", "picture", 120, 1},  {"error:diagram;", "line 2", 250, 1},
      {"broken", "收到的图表", 250, 1}, {"hang", "图表 15 秒", 250, 1},
      {"crash", "画这张图表", 250, 3},  {"error:diagram;", "line 2", 250, 3},
      {"graph LR", "picture", 120, 4},
  };
  for (const auto& row : rows) {
    show(QString::fromUtf8(row.code));
    ASSERT_TRUE(becomes(row.face)) << row.code << ": " << face();
    EXPECT_GE(height(), row.leastHeight) << row.code;
    EXPECT_EQ(fake.count("started"), row.starts) << row.code;
    const QQuickItem* source = part("diagramSource");
    EXPECT_EQ(source != nullptr, row.face != "picture");
    EXPECT_TRUE(!source || utf8(source->property("text").toString()) == row.code);
  }
  // A source that was shown before is there at once; another look is drawn, and the height stays.
  const int asked = fake.count("\"code\"");
  show(QStringLiteral("graph TD"));
  EXPECT_EQ(face(), "picture");
  EXPECT_EQ(fake.count("\"code\""), asked);
  auto* diagram = view.rootObject()->findChild<QObject*>(QStringLiteral("diagram"));
  diagram->setProperty("dark", true);
  EXPECT_EQ(face(), "picture");
  EXPECT_TRUE(
      QTest::qWaitFor([&] { return diagram->property("picture").toString().contains("dark"); }));
  EXPECT_EQ(fake.count("\"dark\":true"), 1);

  // Drawn once more, finer.
  QTest::mouseClick(&view, Qt::LeftButton, {}, QPoint(20, 20));
  EXPECT_TRUE(QTest::qWaitFor([&] { return fake.count("\"scale\":2.0,\"svg\"") == 1; }));
  QTest::keyClick(&view, Qt::Key_Escape);

  view.rootObject()->setWidth(150);
  EXPECT_EQ(height(), 60);
  QAccessible::setActive(true);
  EXPECT_THAT(
      utf8(QAccessible::queryAccessibleInterface(part("diagramPicture"))->text(QAccessible::Name)),
      StartsWith("图表：graph TD"));
}

TEST_F(DiagramTest, WhatWasScrolledAwayIsNotDrawn) {
  show(QStringLiteral("slow 1"));
  for (int i = 2; i < 6; ++i) show(QStringLiteral("slow %1").arg(i));
  ASSERT_TRUE(becomes("picture"));
  // The last one, and the first where that was begun by then.
  EXPECT_LE(fake.count("\"code\""), 2);
  EXPECT_EQ(provider->client().knownHeight(QStringLiteral("slow 5")), 120);
}

class DiagramWithoutProgramTest : public DiagramTest {
 protected:
  DiagramWithoutProgramTest() : DiagramTest("nomely-no-diagrams") {}
};

TEST_F(DiagramWithoutProgramTest, TellsHowToGetIt) {
  show(QStringLiteral("graph TD"));
  ASSERT_TRUE(becomes("要显示图表，请安装软件包 nomely-diagrams"));
  EXPECT_LT(height(), 250);
}

}  // namespace
}  // namespace nomely::test
