#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "Platform/Time/Day.h"

namespace nomely {

// What an import would do, to be shown before it is done.
struct ImportPreviewSummary {
  std::string sourceName;
  std::size_t totalItems = 0;
  std::size_t newItems = 0;
  std::size_t skippedItems =
      0;  // their text is there already, on their day or earlier in the source
  std::size_t repairedItems = 0;  // of those, the ones whose memo gets the files that it lacks
  std::size_t undatedItems = 0;   // of the new ones, those of today for want of a readable time
  std::size_t daysAffected = 0;
  std::string dateRange;  // see dateRangeText
  std::size_t imageCount = 0;
  std::size_t audioCount = 0;
  std::size_t missingAttachments = 0;
  std::vector<std::string> tags;
  std::size_t emptyBodyCount = 0;

  // Whether there is anything to import.
  [[nodiscard]] bool isWorthwhile() const { return newItems > 0 || repairedItems > 0; }
  // What a user is asked with.
  [[nodiscard]] std::string confirmationText() const;
  // What a user is told when nothing is to be imported.
  [[nodiscard]] std::string nothingNewText() const;

  // "无", "2026-03-01", "2026-03-01 ~ 2026-03-05".
  [[nodiscard]] static std::string dateRangeText(const std::set<Day>& dates);
};

}  // namespace nomely
