#include "Desktop/App/DesktopScreens.h"

#include "App/Application.h"

namespace nomely {
namespace {

constexpr std::size_t searchResults = 50;
constexpr std::size_t floatingSearchResults = 30;

}  // namespace

DesktopScreens::DesktopScreens(const Context& context) {
  const ScreenContext screens{context.application, navigation_,    context.executor,  context.jobs,
                              context.clock,       context.timers, context.fileSystem};
  timeline_ = std::make_unique<TimelineScreen>(screens);
  sidebar_ = std::make_unique<SidebarScreen>(screens, *timeline_);
  tags_ = std::make_unique<TagsScreen>(screens, *sidebar_, *timeline_);
  search_ = std::make_unique<SearchScreen>(screens, *timeline_, searchResults);
  floatingSearch_ = std::make_unique<SearchScreen>(screens, *timeline_, floatingSearchResults);
  overview_ = std::make_unique<OverviewScreen>(screens, *timeline_);
}

DesktopScreens::~DesktopScreens() = default;

void DesktopScreens::flush() {}

}  // namespace nomely
