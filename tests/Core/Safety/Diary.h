#pragma once

#include <string>
#include <vector>

#include "Core/Storage/DayStore.h"
#include "Support/ManualClock.h"
#include "Support/MemoryFileSystem.h"

namespace nomely::test {

// A small diary that the safety tests change over and over, the same on every run.
struct Diary {
  struct Entry {
    Day day;
    Memo memo;
  };

  Day first = day("2026-03-01");
  Day second = day("2026-03-02");
  Day missing = day("2026-03-03");  // no folder yet

  Entry plain;    // first/001
  Entry changed;  // first/002, names "shared.png" and "own.png"; most operations go for this one
  Entry sharing;  // first/003, names "shared.png" too
  Entry single;   // first/004, names "single.png", which no other memo does
  Entry distant;  // second/001, names "distant.bin"
  // `sharing` and `distant` have the tag "旅行/海边". "loose.bin" is named nowhere.

  Tree tree;  // below a folder that holds "root/" and, beside it, "Photo.JPG"
  ManualClock clock;

  Diary();
  // With further files.
  [[nodiscard]] Tree with(const Tree& files) const;

  // Old snapshots of `changed`, all of one draft, more than are kept.
  [[nodiscard]] Tree manySnapshots() const;
  // One snapshot of a memo with another body, as it is now but for that.
  [[nodiscard]] static Tree snapshot(const Memo& memo, const std::string& seconds);
  // What is kept of a memo that stands nowhere.
  [[nodiscard]] static Tree stranded(const Entry& vanished);
  // A memo in the trash that was first/`number`, with one attachment and one snapshot.
  [[nodiscard]] Entry trashed(std::int64_t number, const std::string& attachment) const;
  [[nodiscard]] static Tree trash(const Entry& entry);
  [[nodiscard]] static std::string trashFolder(Day date, const Memo& memo);

  [[nodiscard]] static std::string textOf(const Memo& memo);
  [[nodiscard]] static std::string bytesOf(const std::string& attachment);
};

[[nodiscard]] const Diary& diary();

}  // namespace nomely::test
