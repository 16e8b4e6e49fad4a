#include "Core/Lifecycle/Settling/VanishedNotes.h"

#include <algorithm>

#include <fmt/format.h>

#include "Core/Lifecycle/Settling/TrashSettling.h"
#include "Core/Storage/MemoFile.h"
#include "Core/Storage/SyncedFolder.h"

namespace nomely {

void VanishedNotes::settle(const std::string& memoId) const {
  if (notes_.hasStood(memoId)) return;
  const std::filesystem::path history = service_.versions().identityDirectory(memoId);
  if (SyncedFolder::isNewHere(context_, history)) return;
  context_.write([&] {
    const auto last = lastRemoved(memoId);
    if (!last || TrashSettling::textOf(service_, memoId)) return;
    const auto [day, memo] = service_.restoreVanished(*last);
    // Should somebody delete the file by hand, the note doesn't come again.
    context_.files.removeFile(context_.paths.versionsFolder() / last->filename);
    ++result_.notes;
    result_.changedMemos = true;
    result_.told.push_back({history.lexically_relative(context_.paths.rootURL),
                            fmt::format("不在日记里，也不在回收站里，已放回 {}/{}", day.string(),
                                        DiskPaths::memoFileName(memo.seqNumber))});
  });
}

std::optional<VersionEntry> VanishedNotes::lastRemoved(const std::string& memoId) const {
  const std::vector<DirectoryEntry> files =
      context_.files.listVisible(service_.versions().identityDirectory(memoId));
  if (std::ranges::none_of(files, VersionStore::isOfRemoval, &DirectoryEntry::name))
    return std::nullopt;
  const auto textOf = [](const VersionEntry& version) {
    return MemoText{MemoFile::contentOf(version.memo), version.memo, 0, {}};
  };
  std::optional<VersionEntry> last;
  for (VersionEntry& version :
       service_.versions().listVersions(context_.clock.today(), 0, memoId)) {
    const std::string name = std::filesystem::path(version.filename).filename().string();
    if (VersionStore::isOfRemoval(name) && (!last || textOf(version).staysBefore(textOf(*last))))
      last = std::move(version);
  }
  return last;
}

}  // namespace nomely
