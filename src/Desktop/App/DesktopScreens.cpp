#include "Desktop/App/DesktopScreens.h"

#include "App/Application.h"

namespace nomely {

DesktopScreens::DesktopScreens(const Context& context) {
  const ScreenContext screens{context.application, navigation_,    context.executor,  context.jobs,
                              context.clock,       context.timers, context.fileSystem};
  timeline_ = std::make_unique<TimelineScreen>(screens);
  quickInput_ = std::make_unique<QuickInputScreen>(screens);
  focusEditor_ = std::make_unique<FocusEditorScreen>(screens);
  media_ = std::make_unique<MediaScreen>(screens);
  viewer_ = std::make_unique<ViewerScreen>(*media_);
  player_ = std::make_unique<PlayerScreen>(screens);
  banner_ = std::make_unique<BannerScreen>(screens);
  trash_ = std::make_unique<TrashScreen>(screens, *banner_);
  history_ = std::make_unique<HistoryScreen>(screens, *banner_);
  settings_ = std::make_unique<SettingsScreen>(screens, *banner_);
  QObject::connect(banner_.get(), &BannerScreen::historyAsked, history_.get(),
                   &HistoryScreen::openIdentity);
  cards_ = std::make_unique<CardActions>(screens);
}

DesktopScreens::~DesktopScreens() = default;

void DesktopScreens::flush() {
  quickInput_->flush();
  focusEditor_->flush();
}

}  // namespace nomely
