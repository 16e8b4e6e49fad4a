#include <QGuiApplication>
#include <QQuickWindow>
#include <QStyleHints>
#include <cstdlib>

#include <gmock/gmock.h>

extern void qml_register_types_Nomely();

// What fontconfig and Qt keep until the process ends.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig\nleak:libQt6\nleak:libglib\nleak:libdbus\n";
}

int main(int count, char** arguments) {
  testing::InitGoogleMock(&count, arguments);
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QPA_PLATFORMTHEME", "none");
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  const QGuiApplication application(count, arguments);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  QGuiApplication::styleHints()->setCursorFlashTime(0);  // pictures show the caret
  qml_register_types_Nomely();
  return RUN_ALL_TESTS();
}
