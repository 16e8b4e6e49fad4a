#include "Core/Query/EntryDateIndex.h"

namespace nomely {

void EntryDateIndex::refresh() {
  const auto show = lifetime_.guard([this, number = ++begun_](const std::vector<Day>& dates) {
    if (number < shown_) return;
    shown_ = number;
    dates_.set(dates);
  });
  jobs_.submit([store = dayStore_, show, &executor = executor_](const std::stop_token& stop) {
    if (stop.stop_requested()) return;
    executor.post([show, dates = store.listAllDates()] { show(dates); });
  });
}

}  // namespace nomely
