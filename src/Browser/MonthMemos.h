#pragma once

#include <chrono>
#include <cstddef>
#include <map>
#include <stop_token>
#include <vector>

#include "Core/Query/MemoEntry.h"
#include "Core/Query/SearchIndex.h"
#include "Core/Storage/DayStore.h"

namespace nomely {

// The memos of a month in the timeline's order, read from the month's own folders: an index of all
// years would take longer. A day without a folder has no memos. Throws FileError for a day that
// can't be listed, and CancellationError when asked to stop.
[[nodiscard]] std::vector<MemoEntry> memosOfMonth(std::chrono::year_month month,
                                                  const DayStore& store,
                                                  const std::stop_token& stop);
// The same from an index, for whoever keeps one.
[[nodiscard]] std::vector<MemoEntry> memosOfMonth(std::chrono::year_month month,
                                                  SearchIndex& index);

// How many memos each day of the month has, by day of the month; days without memos are absent.
// Names of files are read, none of the files: a memo that can't be read counts too. A day that
// can't be listed counts as empty. Throws CancellationError.
[[nodiscard]] std::map<unsigned, std::size_t> memoCountsOfMonth(std::chrono::year_month month,
                                                                const DayStore& store,
                                                                const std::stop_token& stop);

}  // namespace nomely
