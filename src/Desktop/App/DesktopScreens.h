#pragma once

#include <QObject>
#include <memory>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Media/MediaScreen.h"
#include "Desktop/Media/ViewerScreen.h"
#include "Desktop/Screens/BannerScreen.h"
#include "Desktop/Screens/CardActions.h"
#include "Desktop/Screens/FocusEditorScreen.h"
#include "Desktop/Screens/HistoryScreen.h"
#include "Desktop/Screens/OverviewScreen.h"
#include "Desktop/Screens/QuickInputScreen.h"
#include "Desktop/Screens/SearchScreen.h"
#include "Desktop/Screens/SettingsScreen.h"
#include "Desktop/Screens/SidebarScreen.h"
#include "Desktop/Screens/TagsScreen.h"
#include "Desktop/Screens/TimelineScreen.h"
#include "Desktop/Screens/TrashScreen.h"
#include "Desktop/Sound/PlayerScreen.h"

namespace nomely {

// All screens of one data root. Main thread.
class DesktopScreens : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the program")
  Q_PROPERTY(nomely::Navigation* navigation READ navigation CONSTANT)
  Q_PROPERTY(nomely::TimelineScreen* timeline READ timeline CONSTANT)
  Q_PROPERTY(nomely::QuickInputScreen* quickInput READ quickInput CONSTANT)
  Q_PROPERTY(nomely::FocusEditorScreen* focusEditor READ focusEditor CONSTANT)
  Q_PROPERTY(nomely::MediaScreen* media READ media CONSTANT)
  Q_PROPERTY(nomely::ViewerScreen* viewer READ viewer CONSTANT)
  Q_PROPERTY(nomely::PlayerScreen* player READ player CONSTANT)
  Q_PROPERTY(nomely::BannerScreen* banner READ banner CONSTANT)
  Q_PROPERTY(nomely::TrashScreen* trash READ trash CONSTANT)
  Q_PROPERTY(nomely::HistoryScreen* history READ history CONSTANT)
  Q_PROPERTY(nomely::SettingsScreen* settings READ settings CONSTANT)
  Q_PROPERTY(nomely::CardActions* cards READ cards CONSTANT)
  Q_PROPERTY(nomely::SidebarScreen* sidebar READ sidebar CONSTANT)
  Q_PROPERTY(nomely::TagsScreen* tags READ tags CONSTANT)
  Q_PROPERTY(nomely::SearchScreen* search READ search CONSTANT)
  // The one that floats over any page.
  Q_PROPERTY(nomely::SearchScreen* floatingSearch READ floatingSearch CONSTANT)
  Q_PROPERTY(nomely::OverviewScreen* overview READ overview CONSTANT)

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
  [[nodiscard]] QuickInputScreen* quickInput() { return quickInput_.get(); }
  [[nodiscard]] FocusEditorScreen* focusEditor() { return focusEditor_.get(); }
  [[nodiscard]] MediaScreen* media() { return media_.get(); }
  [[nodiscard]] ViewerScreen* viewer() { return viewer_.get(); }
  [[nodiscard]] PlayerScreen* player() { return player_.get(); }
  [[nodiscard]] BannerScreen* banner() { return banner_.get(); }
  [[nodiscard]] TrashScreen* trash() { return trash_.get(); }
  [[nodiscard]] HistoryScreen* history() { return history_.get(); }
  [[nodiscard]] SettingsScreen* settings() { return settings_.get(); }
  [[nodiscard]] CardActions* cards() { return cards_.get(); }
  [[nodiscard]] SidebarScreen* sidebar() { return sidebar_.get(); }
  [[nodiscard]] TagsScreen* tags() { return tags_.get(); }
  [[nodiscard]] SearchScreen* search() { return search_.get(); }
  [[nodiscard]] SearchScreen* floatingSearch() { return floatingSearch_.get(); }
  [[nodiscard]] OverviewScreen* overview() { return overview_.get(); }

  // Puts on the disk what is typed and not saved. Returns whether all of it is there. Blocking.
  [[nodiscard]] bool flush();

 private:
  Application& application_;
  Navigation navigation_;
  std::unique_ptr<TimelineScreen> timeline_;
  std::unique_ptr<QuickInputScreen> quickInput_;
  std::unique_ptr<FocusEditorScreen> focusEditor_;
  std::unique_ptr<MediaScreen> media_;
  std::unique_ptr<ViewerScreen> viewer_;
  std::unique_ptr<PlayerScreen> player_;
  std::unique_ptr<BannerScreen> banner_;
  std::unique_ptr<TrashScreen> trash_;
  std::unique_ptr<HistoryScreen> history_;
  std::unique_ptr<SettingsScreen> settings_;
  std::unique_ptr<CardActions> cards_;
  std::unique_ptr<SidebarScreen> sidebar_;
  std::unique_ptr<TagsScreen> tags_;
  std::unique_ptr<SearchScreen> search_;
  std::unique_ptr<SearchScreen> floatingSearch_;
  std::unique_ptr<OverviewScreen> overview_;
};

}  // namespace nomely
