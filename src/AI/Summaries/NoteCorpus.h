#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Platform/Time/Day.h"

namespace nomely {

// What a summary is told of one note.
struct NoteEntry {
  Day date;
  std::string body;
  std::vector<std::string> tags;

  friend bool operator==(const NoteEntry&, const NoteEntry&) = default;
};

// Notes in the words in which a model reads them. Hidden tags are left out everywhere. Pure.
namespace NoteCorpus {

// All notes, each below the heading of its day.
[[nodiscard]] std::string text(const std::vector<NoteEntry>& notes);
// Of `notes` in ascending order of days.
[[nodiscard]] std::size_t dayCount(const std::vector<NoteEntry>& notes);
// "1月、3月", of such notes of one year.
[[nodiscard]] std::string months(const std::vector<NoteEntry>& notes);
// "`工作`(3次) `运动`(1次)": the eight most frequent, of equals the one first met first.
[[nodiscard]] std::string tagFrequency(const std::vector<NoteEntry>& notes);

}  // namespace NoteCorpus

}  // namespace nomely
