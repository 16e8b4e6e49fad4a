#include "Core/Query/EntryDateIndex.h"

namespace nomely {

void EntryDateIndex::refresh() {
  jobs_.submit([store = dayStore_, number = ++begun_, weakDates = std::weak_ptr(dates_),
                shown = shown_, &executor = executor_](const std::stop_token& stop) {
    if (stop.stop_requested()) return;
    executor.post([dates = store.listAllDates(), number, weakDates, shown] {
      const auto target = weakDates.lock();
      if (!target || number < *shown) return;
      *shown = number;
      target->set(dates);
    });
  });
}

}  // namespace nomely
