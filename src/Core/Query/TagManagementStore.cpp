#include "Core/Query/TagManagementStore.h"

#include <algorithm>
#include <map>

#include <fmt/format.h>

#include "Core/Query/TagRewriting.h"
#include "Platform/System/Log.h"

namespace nomely {

TagManagementStore::TagManagementStore(const DayStore& dayStore, SearchIndex& searchIndex,
                                       OnError onError)
    : dayStore_(dayStore), searchIndex_(searchIndex), onError_(std::move(onError)) {}

void TagManagementStore::report(const std::string& message) const {
  if (onError_) onError_(message);
}

void TagManagementStore::forEachMemo(Reporting reporting, const Visit& visit) const {
  std::vector<Day> days;
  try {
    days = dayStore_.listAllDates();
  } catch (const std::exception& error) {
    Log::error(LogChannel::storage, "⚠️ TagManagementStore.forEachMemo: {}", error.what());
  }
  for (const Day day : days) {
    std::vector<Memo> memos;
    try {
      memos = dayStore_.listMemos(day);
    } catch (const std::exception& error) {
      if (reporting == Reporting::on)
        report(fmt::format("读取 {} 的笔记失败：{}", day.string(), error.what()));
    }
    for (Memo& memo : memos) visit(day, memo);
  }
}

void TagManagementStore::rewriteAll(std::string_view verb,
                                    const std::function<bool(Memo&)>& rewrite) const {
  forEachMemo(Reporting::on, [&](Day day, Memo& memo) {
    if (!rewrite(memo)) return;
    try {
      // With a snapshot: a word that merely begins like the tag is cut in the body too.
      dayStore_.commitMemo(memo, day, std::nullopt);
    } catch (const std::exception& error) {
      report(fmt::format("{}标签时更新笔记失败（第{}条）：{}", verb, memo.seqNumber, error.what()));
    }
  });
  searchIndex_.invalidateCache();
}

void TagManagementStore::renameTag(std::string_view from, std::string_view to) const {
  rewriteAll("重命名", [&](Memo& memo) { return TagRewriting::rename(memo, from, to); });
}

void TagManagementStore::mergeTag(std::string_view from, std::string_view into) const {
  rewriteAll("合并", [&](Memo& memo) { return TagRewriting::merge(memo, from, into); });
}

void TagManagementStore::deleteTag(std::string_view tag) const {
  rewriteAll("删除", [&](Memo& memo) { return TagRewriting::remove(memo, tag); });
}

void TagManagementStore::deleteTagWithMemos(std::string_view tag) const {
  forEachMemo(Reporting::off, [&](Day day, const Memo& memo) {
    if (!TagRewriting::goesWith(memo, tag)) return;
    try {
      (void)dayStore_.trashMemo(day, memo);
    } catch (const std::exception& error) {
      Log::error(LogChannel::storage, "⚠️ TagManagementStore.deleteTagWithMemos: {}",
                 error.what());
    }
  });
  searchIndex_.invalidateCache();
}

std::int64_t TagManagementStore::countNotesWithTag(std::string_view tag) const {
  std::int64_t count = 0;
  forEachMemo(Reporting::on, [&](Day, const Memo& memo) {
    if (TagRewriting::hasTag(memo.tags, tag)) ++count;
  });
  return count;
}

std::vector<TagUse> TagManagementStore::loadAllTags() const {
  std::vector<TagUse> tags = searchIndex_.allTags();
  std::erase_if(tags, [](const TagUse& use) { return TagRewriting::isHidden(use.tag); });
  return tags;
}

SidebarTagSummary TagManagementStore::summary(const Listed& listed) const {
  SidebarTagSummary summary;
  std::map<std::string, TagUse> rows;
  for (const EntryTags& entry : searchIndex_.allEntryTags()) {
    const auto tags = listed(entry);
    if (!tags) continue;
    ++summary.count;
    for (const std::string& tag : *tags) {
      TagUse& row = rows.try_emplace(tag, TagUse{tag, 0, ""}).first->second;
      ++row.count;
      row.latestDate = std::max(row.latestDate, entry.date.string());
    }
  }
  for (auto& [tag, row] : rows) summary.tags.push_back(std::move(row));
  std::ranges::stable_sort(summary.tags, std::ranges::greater(), &TagUse::count);
  return summary;
}

SidebarTagSummary TagManagementStore::sidebarNotesSummary() const {
  return summary([](const EntryTags& entry) { return TagRewriting::notesTags(entry.tags); });
}

SidebarTagSummary TagManagementStore::sectionSummary(std::string_view root) const {
  return summary(
      [&](const EntryTags& entry) { return TagRewriting::sectionTags(entry.tags, root); });
}

SidebarTagSummary TagManagementStore::sidebarPersonalColumnSummary() const {
  return sectionSummary(TagRewriting::personalColumnRoot);
}

SidebarTagSummary TagManagementStore::sidebarDedaoSummary() const {
  return sectionSummary(TagRewriting::dedaoRoot);
}

}  // namespace nomely
