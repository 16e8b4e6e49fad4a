#pragma once

#include <QObject>
#include <memory>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Screens/OverviewScreen.h"
#include "Desktop/Screens/SearchScreen.h"
#include "Desktop/Screens/SidebarScreen.h"
#include "Desktop/Screens/TagsScreen.h"
#include "Desktop/Screens/TimelineScreen.h"

namespace nomely {

// All screens of one data root. Main thread.
class DesktopScreens : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the program")
  Q_PROPERTY(Navigation* navigation READ navigation CONSTANT)
  Q_PROPERTY(TimelineScreen* timeline READ timeline CONSTANT)
  Q_PROPERTY(SidebarScreen* sidebar READ sidebar CONSTANT)
  Q_PROPERTY(TagsScreen* tags READ tags CONSTANT)
  Q_PROPERTY(SearchScreen* search READ search CONSTANT)
  // The one that floats over any page.
  Q_PROPERTY(SearchScreen* floatingSearch READ floatingSearch CONSTANT)
  Q_PROPERTY(OverviewScreen* overview READ overview CONSTANT)

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
  [[nodiscard]] SidebarScreen* sidebar() { return sidebar_.get(); }
  [[nodiscard]] TagsScreen* tags() { return tags_.get(); }
  [[nodiscard]] SearchScreen* search() { return search_.get(); }
  [[nodiscard]] SearchScreen* floatingSearch() { return floatingSearch_.get(); }
  [[nodiscard]] OverviewScreen* overview() { return overview_.get(); }

  // Puts on the disk what is typed and not saved. Blocking.
  void flush();

 private:
  Navigation navigation_;
  std::unique_ptr<TimelineScreen> timeline_;
  std::unique_ptr<SidebarScreen> sidebar_;
  std::unique_ptr<TagsScreen> tags_;
  std::unique_ptr<SearchScreen> search_;
  std::unique_ptr<SearchScreen> floatingSearch_;
  std::unique_ptr<OverviewScreen> overview_;
};

}  // namespace nomely
