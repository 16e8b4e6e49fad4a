#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Platform/System/Uuid.h"
#include "Platform/Time/Day.h"

namespace nomely {

// A memo in a thread.
struct ThreadEntry {
  std::string id;  // "2026-03-05-7"
  Day date;
  unsigned day = 0;  // of the month
  std::string time;
  std::int64_t seqNumber = 0;
  std::string preview;

  friend bool operator==(const ThreadEntry&, const ThreadEntry&) = default;
};

// A topic that ran through the month: a tag used on more than one day.
struct TagThread {
  std::string tag;  // its identity
  std::string displayName;
  std::set<unsigned> days;
  unsigned firstDay = 0;
  unsigned lastDay = 0;
  std::size_t count = 0;
  std::vector<ThreadEntry> entries;  // by day

  friend bool operator==(const TagThread&, const TagThread&) = default;
};

// A memo that looks wrong.
struct OverviewAnomaly {
  enum class Kind { duplicate, dateMismatch };

  Uuid id = Uuid::random();
  Kind kind = Kind::duplicate;
  unsigned day = 0;
  std::optional<Day> date;
  std::string time;
  std::int64_t seqNumber = 0;
  std::string label;
  std::string preview;
};

// A month on one page.
struct MonthOverview {
  int year = 0;
  unsigned month = 0;
  std::map<unsigned, std::size_t> dailyCounts;  // by day of the month; days without memos absent
  std::size_t totalMemos = 0;
  std::size_t totalDays = 0;  // with at least one memo
  std::size_t totalWords = 0;
  std::size_t totalAttachments = 0;
  std::size_t audioAttachments = 0;
  std::vector<TagThread> threads;          // the longest first
  std::vector<OverviewAnomaly> anomalies;  // by day
};

}  // namespace nomely
