#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Query/SearchIndex.h"
#include "Core/Storage/DayStore.h"

namespace nomely {

// A section of the sidebar: its tags, the one most used first and equals by name, and how many
// memos it has, which is not the sum of theirs. `latestDate` of a tag is the day alone.
struct SidebarTagSummary {
  std::vector<TagUse> tags;
  std::int64_t count = 0;

  friend bool operator==(const SidebarTagSummary&, const SidebarTagSummary&) = default;
};

// Rewrites a tag in all memos of all days. For background jobs; no call throws. A memo that can't
// be written is told to `onError` and the others go on; what is done stays done. Between reading a
// memo and writing it another writer's change is overwritten. Both stores must outlive this one.
class TagManagementStore {
 public:
  using OnError = std::function<void(const std::string& message)>;

  TagManagementStore(const DayStore& dayStore, SearchIndex& searchIndex, OnError onError = {});

  void renameTag(std::string_view from, std::string_view to) const;
  void mergeTag(std::string_view from, std::string_view into) const;
  void deleteTag(std::string_view tag) const;
  // Moves the memos to the trash. What can't be moved stays, untold.
  void deleteTagWithMemos(std::string_view tag) const;
  // Memos that have the tag; one that only names it in its body does not count.
  [[nodiscard]] std::int64_t countNotesWithTag(std::string_view tag) const;

  // Hidden tags are left out. These ask the index and not the disk.
  [[nodiscard]] std::vector<TagUse> loadAllTags() const;
  [[nodiscard]] SidebarTagSummary sidebarNotesSummary() const;
  [[nodiscard]] SidebarTagSummary sidebarPersonalColumnSummary() const;
  [[nodiscard]] SidebarTagSummary sidebarDedaoSummary() const;

 private:
  enum class Reporting { on, off };
  using Visit = std::function<void(Day, Memo&)>;
  using Listed = std::function<std::optional<std::vector<std::string>>(const EntryTags&)>;

  void report(const std::string& message) const;
  void forEachMemo(Reporting reporting, const Visit& visit) const;
  // Writes each memo that `rewrite` changes; `verb` begins the message of a failure.
  void rewriteAll(std::string_view verb, const std::function<bool(Memo&)>& rewrite) const;
  [[nodiscard]] SidebarTagSummary summary(const Listed& listed) const;
  [[nodiscard]] SidebarTagSummary sectionSummary(std::string_view root) const;

  const DayStore& dayStore_;
  SearchIndex& searchIndex_;
  OnError onError_;
};

}  // namespace nomely
