#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "Core/Storage/DayStore.h"
#include "Support/ManualClock.h"

namespace nomely::test {

// A small diary that the safety tests change over and over, always made from the same values.
struct Diary {
  struct Entry {
    Day day;
    Memo memo;
  };

  Day first = day("2026-03-01");
  Day second = day("2026-03-02");
  Day missing = day("2026-03-03");  // no folder yet

  Memo plain;    // first/001
  Memo changed;  // first/002, names "shared.png" and "own.png"; most operations go for this one
  Memo sharing;  // first/003, names "shared.png" too
  Memo single;   // first/004, names "single.png", which no other memo does
  Memo distant;  // second/001, names "distant.bin"
  // `changed`, `sharing` and `distant` have the tag "旅行/海边".

  std::map<std::string, std::string> attachments;  // contents by name; "loose.bin" is named nowhere
  std::string photo;                               // of photoFile()
  ManualClock clock;

  Diary();

  [[nodiscard]] std::vector<Entry> entries() const;
  [[nodiscard]] StoreContext contextFor(const std::filesystem::path& folder,
                                        FileSystem& fileSystem) const;

  // The diary at folder/root, with a temporary that some writer left behind in each of two folders,
  // and photoFile() beside it.
  void writeTo(const std::filesystem::path& folder) const;
  [[nodiscard]] static std::filesystem::path photoFile(const StoreContext& context);

  // Old snapshots of `changed`, oldest first, as texts by path below the root; more than are kept.
  [[nodiscard]] std::map<std::string, std::string> snapshots() const;

  [[nodiscard]] static std::string textOf(const Memo& memo);
};

}  // namespace nomely::test
