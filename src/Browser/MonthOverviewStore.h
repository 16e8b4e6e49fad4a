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

// Memos that open like another one of their day, and memos that begin with a date that is not the
// one they are filed under.
[[nodiscard]] std::vector<OverviewAnomaly> detectAnomalies(std::span<const MemoEntry> entries);

// The first line that says something: no heading, list item, quote, rule or comment. At most 40
// characters and "…".
[[nodiscard]] std::string previewLine(std::string_view body);

}  // namespace MonthOverviewStore

}  // namespace nomely
