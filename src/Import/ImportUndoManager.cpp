#include "Import/ImportUndoManager.h"

#include <algorithm>

#include "Core/Query/RootScan.h"
#include "Import/ImportTags.h"
#include "Platform/Cancellation.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

bool hasTag(const Memo& memo, std::string_view tag) {
  return std::ranges::find(memo.tags, tag) != memo.tags.end();
}

void forEachTagged(const StoreContext& context, std::string_view tag, const ImportRun& run,
                   const std::function<void(const MemoEntry&)>& visit) {
  RootScan scan(context, run.stop);
  scan.forEachTagged(std::string(tag), [&](const MemoEntry& entry) {
    // One with a tag below it, which a person may have made, is no mark of ours.
    if (hasTag(*entry.memo, tag)) visit(entry);
    return true;
  });
}

}  // namespace

ImportUndoManager::Count ImportUndoManager::countMemos(const std::string& tag,
                                                       const ImportRun& run) const {
  Count count;
  forEachTagged(service_.context(), tag, run, [&](const MemoEntry& entry) {
    ++count.memos;
    // An import gives both the same moment; what is no one's edit keeps them.
    if (entry.memo->updatedAt != entry.memo->createdAt) ++count.edited;
  });
  return count;
}

ImportUndoManager::Places ImportUndoManager::trashMemosDetailed(const std::string& tag,
                                                                const ImportRun& run) const {
  const StoreContext& context = service_.context();
  Places found;
  forEachTagged(context, tag, run, [&](const MemoEntry& entry) {
    found.push_back({entry.date, entry.memo->seqNumber});
  });
  Places moved;
  if (found.empty()) return moved;
  const MemoChanges::Bulk bulk(context.gate.changes());
  service_.trashStore().finishInterrupted();
  for (std::size_t i = 0; i < found.size(); ++i) {
    throwIfStopped(run.stop);
    const auto& [day, number] = found[i];
    try {
      context.write([&] {
        // As it is by now: another one may have taken its place.
        const auto memo = service_.days().memoStore().read(day, number);
        if (!memo || !hasTag(*memo, tag)) return;
        (void)service_.trashStore().trashMemo(day, *memo);
        moved.push_back(found[i]);
      });
    } catch (const Error& error) {
      Log::error(LogChannel::importer, "⚠️ ImportUndoManager.trashMemosDetailed: {}",
                 error.what());
    }
    if (run.progress) run.progress(static_cast<double>(i + 1) / static_cast<double>(found.size()));
  }
  return moved;
}

ImportUndoManager::Count ImportUndoManager::countFlomoImports(const ImportRun& run) const {
  return countMemos(std::string(ImportTags::flomo), run);
}

std::size_t ImportUndoManager::undoFlomoImport(const ImportRun& run) const {
  return undoFlomoImportDetailed(run).size();
}

ImportUndoManager::Places ImportUndoManager::undoFlomoImportDetailed(const ImportRun& run) const {
  return trashMemosDetailed(std::string(ImportTags::flomo), run);
}

std::optional<std::string> ImportUndoManager::latestNotesImportBatchTag(
    const ImportRun& run) const {
  std::optional<std::string> latest;
  forEachTagged(service_.context(), ImportTags::notes, run, [&](const MemoEntry& entry) {
    for (const std::string& tag : entry.memo->tags)
      if (tag.starts_with(ImportTags::notesBatchPrefix) && tag > latest.value_or("")) latest = tag;
  });
  return latest;
}

ImportUndoManager::Count ImportUndoManager::countLatestNotesImport(const ImportRun& run) const {
  const auto batch = latestNotesImportBatchTag(run);
  return batch ? countMemos(*batch, run) : Count();
}

std::size_t ImportUndoManager::undoLatestNotesImport(const ImportRun& run) const {
  return undoLatestNotesImportDetailed(run).size();
}

ImportUndoManager::Places ImportUndoManager::undoLatestNotesImportDetailed(
    const ImportRun& run) const {
  const auto batch = latestNotesImportBatchTag(run);
  return batch ? trashMemosDetailed(*batch, run) : Places();
}

}  // namespace nomely
