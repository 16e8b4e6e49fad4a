#include "Desktop/App/DesktopScreens.h"

#include "App/Application.h"
#include "Editor/Timeline/DayViewModel.h"

namespace nomely {
namespace {

constexpr std::size_t searchResults = 50;
constexpr std::size_t floatingSearchResults = 30;

}  // namespace

DesktopScreens::DesktopScreens(const Context& context) : application_(context.application) {
  const ScreenContext screens{context.application, navigation_,    context.executor,  context.jobs,
                              context.clock,       context.timers, context.fileSystem};
  timeline_ = std::make_unique<TimelineScreen>(screens);
  // Whoever chooses a list, wherever that is, wants to see it.
  connect(timeline_.get(), &TimelineScreen::listChanged, &navigation_,
          [this] { navigation_.show(Navigation::Timeline); });
  quickInput_ = std::make_unique<QuickInputScreen>(screens);
  connect(quickInput_.get(), &QuickInputScreen::submitted, timeline_.get(),
          &TimelineScreen::follow);
  focusEditor_ = std::make_unique<FocusEditorScreen>(screens);
  media_ = std::make_unique<MediaScreen>(screens);
  viewer_ = std::make_unique<ViewerScreen>(*media_);
  player_ = std::make_unique<PlayerScreen>(screens);
  // A list that is read again because another program wrote plays on.
  connect(timeline_.get(), &TimelineScreen::listChanged, player_.get(), &PlayerScreen::stop);
  banner_ = std::make_unique<BannerScreen>(screens);
  trash_ = std::make_unique<TrashScreen>(screens, *banner_);
  history_ = std::make_unique<HistoryScreen>(screens, *banner_);
  settings_ = std::make_unique<SettingsScreen>(screens, *banner_);
  QObject::connect(banner_.get(), &BannerScreen::historyAsked, history_.get(),
                   &HistoryScreen::openIdentity);
  cards_ = std::make_unique<CardActions>(screens);
  sidebar_ = std::make_unique<SidebarScreen>(screens, *timeline_);
  tags_ = std::make_unique<TagsScreen>(screens, *sidebar_, *timeline_);
  search_ = std::make_unique<SearchScreen>(screens, *timeline_, searchResults);
  floatingSearch_ = std::make_unique<SearchScreen>(screens, *timeline_, floatingSearchResults);
  overview_ = std::make_unique<OverviewScreen>(screens, *timeline_);
}

DesktopScreens::~DesktopScreens() = default;

bool DesktopScreens::flush() {
  quickInput_->flush();
  focusEditor_->flush();
  return application_.dayViewModel().draftStore().keepAll();
}

}  // namespace nomely
