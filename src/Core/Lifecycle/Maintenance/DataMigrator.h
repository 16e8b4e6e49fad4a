#pragma once

#include <cstddef>
#include <filesystem>
#include <stop_token>
#include <string>
#include <vector>

#include "Core/Lifecycle/Maintenance/LegacyDay.h"
#include "Core/Storage/DayStore.h"

namespace nomely {

// Makes day folders of the oldest layout: `<yyyy>/<mm>/<dd>.md` for the text of a date and
// `<yyyy>/<mm>/<dd>/` for its media. The old files stay. A day is built aside and renamed into its
// place, so that it is there whole or not at all; one that exists already is left alone.
//
// Media belongs to the memo whose text names it, else to the day's first. Stateless; any thread.
class DataMigrator {
 public:
  struct MigrationResult {
    std::size_t days = 0;
    std::size_t memos = 0;
    std::vector<std::string> errors;  // for people, one a date
  };

  explicit DataMigrator(StoreContext context) : context_(std::move(context)), days_(context_) {}

  // Each date is one write of the gate. A date that fails is told of, and the next one follows.
  // Throws CancellationError when asked to stop, FileError when the root can't be listed or
  // written, WriteError when it is frozen.
  [[nodiscard]] MigrationResult migrate(const std::stop_token& stop) const;

  // Dates whose old text is in no memo of this class's making, because their day folder was there
  // already. Throws FileError.
  [[nodiscard]] std::vector<Day> leftOut() const;

  // Below the root: "2009/03/01.md". What the memos made of it have as `sourceId`.
  [[nodiscard]] static std::filesystem::path textOf(Day day);

 private:
  struct Media {
    std::string name;     // in the old folder
    std::string newName;  // in the day's
  };

  // In ascending order.
  [[nodiscard]] std::vector<Day> oldDates() const;
  // Returns how many memos were written; none when the day is passed over. In the gate.
  std::size_t migrateDay(Day day) const;
  [[nodiscard]] std::vector<Memo> memosOf(Day day, LegacyDay old,
                                          const std::vector<Media>& media) const;
  [[nodiscard]] std::vector<Media> mediaOf(Day day) const;
  void build(const std::filesystem::path& folder, Day day, const std::vector<Memo>& memos,
             const std::vector<Media>& media) const;
  // Renames the day into its place. In the gate.
  void place(const std::filesystem::path& built, const std::filesystem::path& target) const;
  // Removes what is left of days that were not finished.
  void discardAside() const;
  [[nodiscard]] bool isMigrated(Day day) const;
  [[nodiscard]] std::filesystem::path mediaFolder(Day day) const;
  [[nodiscard]] std::filesystem::path asideFolder() const;

  StoreContext context_;
  DayStore days_;
};

}  // namespace nomely
