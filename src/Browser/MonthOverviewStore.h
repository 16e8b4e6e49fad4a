#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Browser/MonthOverview.h"
#include "Core/Query/MemoEntry.h"

namespace nomely {

// Makes the digest of a month from memos that the caller has at hand. Pure; any thread.
namespace MonthOverviewStore {

// `entries` may come in any order and from other months too. Imported and generated memos count.
[[nodiscard]] MonthOverview compute(int year, unsigned month, std::span<const MemoEntry> entries);

// Two kinds: duplicate, a memo that begins with the same text as another of its day, and
// dateMismatch, a memo whose text begins with a date other than its day.
[[nodiscard]] std::vector<OverviewAnomaly> detectAnomalies(std::span<const MemoEntry> entries);

// The first line that is no heading, list item, quote, rule or comment; beyond 40 characters it is
// cut and ends in "…".
[[nodiscard]] std::string previewLine(std::string_view body);

}  // namespace MonthOverviewStore

}  // namespace nomely
