#include "Editor/DayViewModel.h"

#include <fmt/format.h>

namespace nomely {

DayViewModel::DayViewModel(const Context& context)
    : selectedDate(context.service.context().clock.today()),
      service_(context.service),
      dayStore_(context.service.days()),
      searchIndex_(context.searchIndex),
      executor_(context.executor),
      attachmentManager_(context.service.context()),
      timelineQueryStore_(dayStore_, context.searchIndex),
      trashManager_(context.service.trashStore()),
      displayLimit_(displayStep),
      jobs_(context.jobs) {}

DayViewModel::~DayViewModel() {
  alive_.reset();
  cancelLoad();
}

void DayViewModel::onMain(std::function<void()> body) {
  executor_.post([alive = watch_, body = std::move(body)] {
    if (alive.lock()) body();
  });
}

std::string DayViewModel::memoKey(Day date, std::int64_t seqNumber) {
  return fmt::format("{}-{}", date.string(), seqNumber);
}

}  // namespace nomely
