#pragma once

#include <cstdint>
#include <functional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Query/SearchIndex.h"
#include "Core/Service/MemoService.h"

namespace nomely {

// A section of the sidebar: its tags sorted by falling `count`, then by name, and the number of its
// memos, each counted once however many tags it has. `latestDate` of a tag is a day alone:
// "2026-03-05".
struct SidebarTagSummary {
  std::vector<TagUse> tags;
  std::int64_t count = 0;

  friend bool operator==(const SidebarTagSummary&, const SidebarTagSummary&) = default;
};

// What a change of a tag in all memos did, or would do.
struct TagChange {
  std::size_t memos = 0;   // changed
  std::size_t bodies = 0;  // of those, the ones whose text changed too
  std::size_t failed = 0;  // memos, and days that can't be listed, that should have been changed

  friend bool operator==(const TagChange&, const TagChange&) = default;
};

// How to go through all memos. A requested stop throws CancellationError before the next memo;
// every other failure is counted and the run goes on.
struct TagRun {
  bool isDry = false;  // counts what would change and writes nothing
  std::stop_token stop = {};
  std::function<void(double share)> progress = {};
  // Is told of each memo that went to the trash, by its entry's name there.
  std::function<void(const std::string& trashed)> trashed = {};
};

// Rewrites a tag in all memos of all days. For background jobs. For a memo that can't be written
// `onError` is called, and the run goes on with the others; what is done stays done. Each memo is
// read and written in one write of the gate, so a change made elsewhere meanwhile is kept. Service
// and index must outlive the store.
class TagManagementStore {
 public:
  using OnError = std::function<void(const std::string& message)>;

  TagManagementStore(const MemoService& service, SearchIndex& searchIndex, OnError onError = {});

  TagChange renameTag(std::string_view from, std::string_view to, const TagRun& run = {}) const;
  TagChange mergeTag(std::string_view from, std::string_view into, const TagRun& run = {}) const;
  TagChange deleteTag(std::string_view tag, const TagRun& run = {}) const;
  // Moves the memos to the trash. One that can't be moved stays and counts as failed, without a
  // call of `onError`.
  TagChange deleteTagWithMemos(std::string_view tag, const TagRun& run = {}) const;
  // Brings back what that moved: the entries of those names. One that can't be brought back counts
  // as failed.
  TagChange restoreMemos(const std::vector<std::string>& trashed, const TagRun& run = {}) const;
  // How many memos have the tag or one below it among their tags; "#tag" in the body alone does not
  // count.
  [[nodiscard]] std::int64_t countNotesWithTag(std::string_view tag) const;

  // These read the index, not the disk. Hidden tags are left out.
  [[nodiscard]] std::vector<TagUse> loadAllTags() const;
  [[nodiscard]] SidebarTagSummary sidebarNotesSummary() const;
  [[nodiscard]] SidebarTagSummary sidebarPersonalColumnSummary() const;
  [[nodiscard]] SidebarTagSummary sidebarDedaoSummary() const;

 private:
  enum class Reporting { on, off };
  using Visit = std::function<void(Day, Memo&)>;
  using Listed = std::function<std::optional<std::vector<std::string>>(const EntryTags&)>;

  void report(const std::string& message) const;
  // Returns how many listings failed.
  std::size_t forEachMemo(Reporting reporting, const TagRun& run, const Visit& visit) const;
  // Writes each memo that `rewrite` changes; `verb` begins the message of a failure.
  TagChange rewriteAll(std::string_view verb, const TagRun& run,
                       const std::function<bool(Memo&)>& rewrite) const;
  [[nodiscard]] SidebarTagSummary summary(const Listed& listed) const;
  [[nodiscard]] SidebarTagSummary sectionSummary(std::string_view root) const;

  const MemoService& service_;
  SearchIndex& searchIndex_;
  OnError onError_;
};

}  // namespace nomely
