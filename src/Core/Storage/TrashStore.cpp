#include "Core/Storage/TrashStore.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <functional>
#include <limits>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/MemoFile.h"
#include "Core/Storage/SyncedFolder.h"
#include "Core/Storage/VersionStore.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/System/Uuid.h"

namespace nomely {
namespace {

void logFailure(std::string_view operation, const std::exception& error) {
  Log::error(LogChannel::storage, "⚠️ TrashStore.{}: {}", operation, error.what());
}

}  // namespace

std::filesystem::path TrashStore::makeFolder(Day day, std::int64_t seqNumber) const {
  const std::filesystem::path trash = context_.paths.trashFolder();
  const std::string name = fmt::format("{}_{:03}", day.string(), seqNumber);
  const std::string now = DateFormatters::preciseTimestamp.format(context_.clock.now());
  constexpr int mostAttempts = 100;
  std::string candidate = name;
  for (int attempt = 1; context_.files.exists(trash / candidate); ++attempt)
    candidate = attempt <= mostAttempts ? fmt::format("{}_{}_{}", name, now, attempt)
                                        : fmt::format("{}_{}", name, Uuid::random().string());
  context_.prepareFolder(trash / candidate);
  return trash / candidate;
}

void TrashStore::writeMeta(const std::filesystem::path& folder, const MemoPlace& origin) const {
  context_.files.writeAtomically(folder / metaFileName, origin.string());
}

std::string TrashStore::trashMemo(Day day, const Memo& memo) const {
  return context_.write([&] {
    days_.memoStore().validateUnchanged(memo, day);
    const std::filesystem::path folder = makeFolder(day, memo.seqNumber);
    try {
      days_.memoStore().moveOut(day, memo.seqNumber, folder / memoFileName);
      if (!memo.attachments.empty()) moveAttachments(memo, day, folder / attachmentsName);
      writeMeta(folder, {day, memo.seqNumber});
    } catch (...) {
      undoTrashing(memo, day, folder);
      throw;
    }
    return folder.filename().string();
  });
}

void TrashStore::moveAttachments(const Memo& memo, Day day,
                                 const std::filesystem::path& folder) const {
  context_.prepareFolder(folder);
  for (const std::string& name : memo.attachments) {
    const std::filesystem::path file = context_.paths.dayFolder(day) / name;
    try {
      if (AttachmentManager::isSafeName(name) && context_.files.exists(file))
        context_.files.moveFile(file, folder / name);
    } catch (const FileError& error) {
      logFailure("trashMemo", error);
    }
  }
}

// What can't be undone now is taken for a trashing that was cut off by the next operation.
void TrashStore::undoTrashing(const Memo& memo, Day day,
                              const std::filesystem::path& folder) const noexcept {
  try {
    if (context_.files.exists(folder / memoFileName))
      days_.memoStore().moveIn(folder / memoFileName, day, memo.seqNumber);
    if (context_.files.exists(folder / attachmentsName))
      restoreAttachments(day, folder / attachmentsName);
    // One by one: whatever else came to lie there is kept.
    context_.files.removeFile(folder / attachmentsName);
    context_.files.removeFile(folder / metaFileName);
    context_.files.removeFile(folder);
  } catch (const std::exception& error) {
    logFailure("trashMemo", error);
  }
}

std::int64_t TrashStore::restoreMemo(const TrashEntry& entry) const {
  return context_.write([&] {
    const std::filesystem::path folder = pathOf(entry.trashSubdir);
    if (!context_.files.exists(folder)) throw WriteError(WriteError::Kind::missingMemo);
    const std::int64_t number = context_.files.exists(folder / memoFileName)
                                    ? restoreMemoFile(entry, folder)
                                    : entry.memo.seqNumber;
    if (context_.files.isDirectory(folder / attachmentsName))
      restoreAttachments(entry.originalDate, folder / attachmentsName,
                         holdsOthers(folder) ? &entry.memo : nullptr);
    try {
      removeEntry(folder);
    } catch (const FileError& error) {
      // The memo is back; what is left of its folder shows no entry without its memo file.
      logFailure("restoreMemo", error);
    }
    return number;
  });
}

// The file moves as it is, to the next number that nobody has when its own was given away: written
// anew it would lose what we don't read, and a damaged one would lose everything. A forged number
// below 1 is nobody's either, because no list shows it.
std::int64_t TrashStore::restoreMemoFile(const TrashEntry& entry,
                                         const std::filesystem::path& folder) const {
  const Day date = entry.originalDate;
  context_.prepareFolder(context_.paths.dayFolder(date));
  std::int64_t number =
      entry.memo.seqNumber >= 1 ? entry.memo.seqNumber : days_.nextSeqNumber(date);
  for (;;) {
    try {
      days_.memoStore().moveIn(folder / memoFileName, date, number);
      return number;
    } catch (const FileError& error) {
      if (error.kind() != FileError::Kind::alreadyExists) throw;
    }
    if (number == std::numeric_limits<std::int64_t>::max())
      throw FileError("编号", context_.paths.memoFile(date, number), EOVERFLOW);
    number = std::max(number + 1, days_.nextSeqNumber(date));
  }
}

void TrashStore::restoreAttachments(Day day, const std::filesystem::path& folder,
                                    const Memo* only) const {
  const std::filesystem::path dayFolder = context_.paths.dayFolder(day);
  context_.prepareFolder(dayFolder);
  for (const DirectoryEntry& file : context_.files.listAll(folder)) {
    if (FileManager::isTemporaryName(file.name)) continue;
    if (only && std::ranges::find(only->attachments, file.name) == only->attachments.end())
      continue;
    if (!context_.files.exists(dayFolder / file.name)) {
      context_.files.moveFile(folder / file.name, dayFolder / file.name);
      continue;
    }
    Log::error(LogChannel::storage,
               "⚠️ DayStore.restoreMemo: 附件 {} 在目标位置已存在，跳过恢复",
               file.name);
    // The entry's folder goes with what is left in it; this is not to be lost with it.
    AttachmentManager(context_).discard(folder / file.name);
  }
}

bool TrashStore::holdsOthers(const std::filesystem::path& folder) const {
  return std::ranges::any_of(context_.files.listVisible(folder), [](const DirectoryEntry& entry) {
    return entry.name != memoFileName && entry.name != metaFileName &&
           entry.name != attachmentsName && !FileManager::isTemporaryName(entry.name);
  });
}

// Another machine may have given another memo the same folder, which a program that synchronises
// the two has put beside this one.
void TrashStore::removeEntry(const std::filesystem::path& folder) const {
  if (context_.files.isDirectory(folder) && holdsOthers(folder))
    context_.files.removeFile(folder / memoFileName);
  else
    context_.files.removeTree(folder);
}

std::filesystem::path TrashStore::pathOf(const std::string& trashSubdir) const {
  // A forged name must not reach outside the trash, nor take all of it.
  if (!VersionStore::isSafeFilename(trashSubdir)) throw WriteError(WriteError::Kind::missingMemo);
  return context_.paths.trashFolder() / trashSubdir;
}

void TrashStore::finishInterrupted() const {
  try {
    for (const DirectoryEntry& entry : foldersOfTrash()) {
      const std::filesystem::path folder = context_.paths.trashFolder() / entry.name;
      const auto isInterrupted = [&] {
        return !context_.files.exists(folder / metaFileName) ||
               !context_.files.exists(folder / memoFileName);
      };
      if (!parseFolderName(entry.name) || !isInterrupted() || mayBeOnItsWay(folder)) continue;
      // Outside the gate it might be another process's, and under way.
      context_.write([&] {
        if (context_.files.isDirectory(folder) && isInterrupted()) finish(folder);
      });
    }
  } catch (const Error& error) {
    logFailure("finishInterrupted", error);
  }
}

bool TrashStore::mayBeOnItsWay(const std::filesystem::path& folder) const {
  constexpr std::chrono::days longest{1};
  const auto attributes = context_.files.attributes(folder);
  return attributes && context_.clock.now() - attributes->modified < longest &&
         SyncedFolder(context_).isSynced();
}

// A memo that was moved out stays trashed. One that never was, or is back, has its files back too.
void TrashStore::finish(const std::filesystem::path& folder) const {
  const MemoPlace origin = parseFolderName(folder.filename().native()).value();
  if (context_.files.exists(folder / memoFileName)) return writeMeta(folder, origin);
  if (context_.files.isDirectory(folder / attachmentsName)) {
    restoreAttachments(origin.day, folder / attachmentsName);
    context_.files.sweepTemporaries(folder / attachmentsName);
    context_.files.removeFile(folder / attachmentsName);
  }
  context_.files.removeFile(folder / metaFileName);
  context_.files.sweepTemporaries(folder);
  context_.files.removeFile(folder);
}

void TrashStore::deleteVersions(const TrashEntry& entry) const {
  // Without an identity it has none, and its number may be another memo's by now.
  if (!entry.memo.memoId || standsAgain(entry)) return;
  VersionStore(context_).deleteAllVersions(entry.originalDate, entry.memo.seqNumber,
                                           entry.memo.memoId);
}

// Where one machine threw a note away and another one went on writing it, the history is that of
// the note which stands. Both have had one place, so it is looked for there and where it stood
// last.
bool TrashStore::standsAgain(const TrashEntry& entry) const {
  const std::string& memoId = *entry.memo.memoId;
  const auto isOn = [&](Day day) {
    return std::ranges::any_of(days_.listMemos(day),
                               [&](const Memo& memo) { return memo.memoId == memoId; });
  };
  const auto last = VersionStore(context_).lastPlaceOf(memoId);
  return isOn(entry.originalDate) || (last && last->day != entry.originalDate && isOn(last->day));
}

void TrashStore::deleteTrashEntries(const std::vector<TrashEntry>& entries) const {
  context_.write([&] {
    for (const TrashEntry& entry : entries) {
      deleteVersions(entry);
      removeEntry(pathOf(entry.trashSubdir));
    }
  });
}

void TrashStore::restoreTrashEntries(const std::vector<TrashEntry>& entries) const {
  context_.write([&] {
    for (const TrashEntry& entry : entries) restoreMemo(entry);
  });
}

void TrashStore::emptyTrash() const {
  context_.write([&] {
    (void)foldersOfTrash();
    for (const TrashEntry& entry : listTrash()) deleteVersions(entry);
    context_.files.removeTree(context_.paths.trashFolder());
  });
}

}  // namespace nomely
