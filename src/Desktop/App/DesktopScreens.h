#pragma once

#include <QObject>
#include <memory>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Screens/BannerScreen.h"
#include "Desktop/Screens/HistoryScreen.h"
#include "Desktop/Screens/SettingsScreen.h"
#include "Desktop/Screens/TimelineScreen.h"
#include "Desktop/Screens/TrashScreen.h"

namespace nomely {

// All screens of one data root. Main thread.
class DesktopScreens : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the program")
  Q_PROPERTY(Navigation* navigation READ navigation CONSTANT)
  Q_PROPERTY(TimelineScreen* timeline READ timeline CONSTANT)
  Q_PROPERTY(BannerScreen* banner READ banner CONSTANT)
  Q_PROPERTY(TrashScreen* trash READ trash CONSTANT)
  Q_PROPERTY(HistoryScreen* history READ history CONSTANT)
  Q_PROPERTY(SettingsScreen* settings READ settings CONSTANT)

 public:
  // As ScreenContext has it, but for what is made here.
  struct Context {
    Application& application;
    MainExecutor& executor;
    JobPool& jobs;
    const Clock& clock;
    Timers& timers;
    FileSystem& fileSystem;
  };
  explicit DesktopScreens(const Context& context);
  ~DesktopScreens() override;

  [[nodiscard]] Navigation* navigation() { return &navigation_; }
  [[nodiscard]] TimelineScreen* timeline() { return timeline_.get(); }
  [[nodiscard]] BannerScreen* banner() { return banner_.get(); }
  [[nodiscard]] TrashScreen* trash() { return trash_.get(); }
  [[nodiscard]] HistoryScreen* history() { return history_.get(); }
  [[nodiscard]] SettingsScreen* settings() { return settings_.get(); }

  // Puts on the disk what is typed and not saved. Blocking.
  void flush();

 private:
  Navigation navigation_;
  std::unique_ptr<TimelineScreen> timeline_;
  std::unique_ptr<BannerScreen> banner_;
  std::unique_ptr<TrashScreen> trash_;
  std::unique_ptr<HistoryScreen> history_;
  std::unique_ptr<SettingsScreen> settings_;
};

}  // namespace nomely
