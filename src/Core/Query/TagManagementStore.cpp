#include "Core/Query/TagManagementStore.h"

#include <algorithm>
#include <map>

#include <fmt/format.h>

#include "Core/Extensions/TagNames.h"
#include "Core/Query/TagRewriting.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Cancellation.h"
#include "Platform/System/Log.h"

namespace nomely {

TagManagementStore::TagManagementStore(const MemoService& service, SearchIndex& searchIndex,
                                       OnError onError)
    : service_(service), searchIndex_(searchIndex), onError_(std::move(onError)) {}

void TagManagementStore::report(const std::string& message) const {
  if (onError_) onError_(message);
}

std::size_t TagManagementStore::forEachMemo(Reporting reporting, const TagRun& run,
                                            const Visit& visit) const {
  std::size_t failed = 0;
  const DayStore& store = service_.days();
  std::vector<Day> days;
  try {
    days = store.listAllDates();
  } catch (const std::exception& error) {
    ++failed;
    if (reporting == Reporting::on) report(fmt::format("读取笔记失败：{}", error.what()));
  }
  for (std::size_t i = 0; i < days.size(); ++i) {
    std::vector<Memo> memos;
    try {
      memos = store.listMemos(days[i]);
    } catch (const std::exception& error) {
      ++failed;
      if (reporting == Reporting::on)
        report(fmt::format("读取 {} 的笔记失败：{}", days[i].string(), error.what()));
    }
    for (Memo& memo : memos) {
      throwIfStopped(run.stop);
      visit(days[i], memo);
    }
    if (run.progress) run.progress(static_cast<double>(i + 1) / static_cast<double>(days.size()));
  }
  return failed;
}

TagChange TagManagementStore::rewriteAll(std::string_view verb, const TagRun& run,
                                         const std::function<bool(Memo&)>& rewrite) const {
  TagChange done;
  const auto counting = [&](Memo& memo, TagChange& counts) {
    const std::string body = memo.body;
    if (!rewrite(memo)) return false;
    ++counts.memos;
    if (memo.body != body) ++counts.bodies;
    return true;
  };
  const auto apply = [&](Day day, std::int64_t seqNumber) {
    TagChange counts;
    (void)service_.rewrite(day, seqNumber, [&](Memo& memo) { return counting(memo, counts); });
    done.memos += counts.memos;
    done.bodies += counts.bodies;
  };
  const MemoChanges::Bulk bulk(service_.context().gate.changes());
  const std::size_t unlisted = forEachMemo(Reporting::on, run, [&](Day day, Memo& memo) {
    const std::int64_t number = memo.seqNumber;
    if (run.isDry) return (void)counting(memo, done);
    if (!rewrite(memo)) return;
    try {
      apply(day, number);
    } catch (const std::exception& error) {
      ++done.failed;
      report(fmt::format("{}标签时更新笔记失败（第{}条）：{}", verb, number, error.what()));
    }
  });
  done.failed += unlisted;
  return done;
}

TagChange TagManagementStore::renameTag(std::string_view from, std::string_view to,
                                        const TagRun& run) const {
  return rewriteAll("重命名", run,
                    [&](Memo& memo) { return TagRewriting::rename(memo, from, to); });
}

TagChange TagManagementStore::mergeTag(std::string_view from, std::string_view into,
                                       const TagRun& run) const {
  return rewriteAll("合并", run, [&](Memo& memo) { return TagRewriting::merge(memo, from, into); });
}

TagChange TagManagementStore::deleteTag(std::string_view tag, const TagRun& run) const {
  return rewriteAll("删除", run, [&](Memo& memo) { return TagRewriting::remove(memo, tag); });
}

TagChange TagManagementStore::deleteTagWithMemos(std::string_view tag, const TagRun& run) const {
  TagChange done;
  const MemoChanges::Bulk bulk(service_.context().gate.changes());
  if (!run.isDry) service_.trashStore().finishInterrupted();
  const std::size_t unlisted = forEachMemo(Reporting::off, run, [&](Day day, const Memo& memo) {
    if (!TagRewriting::goesWith(memo, tag)) return;
    try {
      if (!run.isDry) {
        const std::string name = service_.trashStore().trashMemo(day, memo);
        if (run.trashed) run.trashed(name);
      }
      ++done.memos;
    } catch (const std::exception& error) {
      ++done.failed;
      Log::error(LogChannel::storage, "⚠️ TagManagementStore.deleteTagWithMemos: {}",
                 error.what());
    }
  });
  done.failed += unlisted;
  return done;
}

TagChange TagManagementStore::restoreMemos(const std::vector<std::string>& trashed,
                                           const TagRun& run) const {
  TagChange done;
  const MemoChanges::Bulk bulk(service_.context().gate.changes());
  for (std::size_t i = 0; i < trashed.size(); ++i) {
    throwIfStopped(run.stop);
    try {
      const std::optional<TrashEntry> entry = service_.trashStore().entryNamed(trashed[i]);
      if (!entry) throw WriteError(WriteError::Kind::missingMemo);
      (void)service_.restore(*entry);
      ++done.memos;
    } catch (const std::exception& error) {
      ++done.failed;
      Log::error(LogChannel::storage, "⚠️ TagManagementStore.restoreMemos: {}", error.what());
    }
    if (run.progress)
      run.progress(static_cast<double>(i + 1) / static_cast<double>(trashed.size()));
  }
  return done;
}

std::int64_t TagManagementStore::countNotesWithTag(std::string_view tag) const {
  std::int64_t count = 0;
  (void)forEachMemo(Reporting::on, {}, [&](Day, const Memo& memo) {
    if (TagRewriting::hasTag(memo.tags, tag)) ++count;
  });
  return count;
}

std::vector<TagUse> TagManagementStore::loadAllTags() const {
  std::vector<TagUse> tags = searchIndex_.allTags();
  std::erase_if(tags, [](const TagUse& use) { return TagNames::isHidden(use.tag); });
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
  return sectionSummary(TagNames::personalColumnRoot);
}

SidebarTagSummary TagManagementStore::sidebarDedaoSummary() const {
  return sectionSummary(TagNames::dedaoRoot);
}

}  // namespace nomely
