#pragma once

#include <chrono>
#include <stop_token>
#include <vector>

#include "Core/Query/MemoEntry.h"
#include "Core/Storage/DayStore.h"

namespace nomely {

// The memos of a month in the timeline's order, read from the month's own folders: an index of all
// years would take longer. A day without a folder has no memos. Throws FileError for a day that
// can't be listed, and CancellationError when asked to stop.
[[nodiscard]] std::vector<MemoEntry> memosOfMonth(std::chrono::year_month month,
                                                  const DayStore& store,
                                                  const std::stop_token& stop);

}  // namespace nomely
