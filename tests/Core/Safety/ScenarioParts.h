#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "Core/Safety/Scenario.h"

namespace nomely::test {

// What several scenarios are put together from.

[[nodiscard]] std::vector<Scenario> historyScenarios(const Diary& diary);
[[nodiscard]] std::vector<Scenario> trashScenarios(const Diary& diary);
[[nodiscard]] std::vector<Scenario> tagScenarios(const Diary& diary);

// The memos of a day that are `state`, whatever their numbers.
[[nodiscard]] std::vector<Memo> found(const StoreContext& context, Day day, const Memo& state);
// Paths below the root.
[[nodiscard]] std::string belowRoot(Day day, const std::string& name);
[[nodiscard]] std::string memoBelowRoot(Day day, const Memo& memo);
// How many files below the folder have that content; none when there is no such folder.
[[nodiscard]] std::size_t filesWith(const std::filesystem::path& folder,
                                    const std::string& content);

// Expects the memo's file in its day or as an entry of the trash, and its attachments in either.
void expectKept(const StoreContext& context, const Diary& diary, Day day, const Memo& memo);

// Where a memo's versions lie, below the root.
[[nodiscard]] std::filesystem::path versionsBelowRoot(const Diary& diary, const Memo& memo);
// What becomes of `changed` where it is edited: it lets go of "own.png".
[[nodiscard]] Memo edited(const Diary& diary);
[[nodiscard]] std::filesystem::path versionsOfChanged(const StoreContext& context,
                                                      const Diary& diary);
// Expects a snapshot of the memo that is being changed, and the file that it lets go of beside it.
void expectSnapshotOfOld(const StoreContext& context, const Diary& diary);
// Gives it more snapshots than are kept, oldest of which may go.
void allowPruning(Scenario& scenario, const Diary& diary);
void expectPruned(const StoreContext& context, const Diary& diary);

}  // namespace nomely::test
