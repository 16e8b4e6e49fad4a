#include <algorithm>
#include <cerrno>
#include <functional>
#include <limits>

#include <fmt/format.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/TextNumbers.h"
#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/DayStore.h"
#include "Core/Storage/VersionStore.h"
#include "Core/Storage/WriteError.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/System/Uuid.h"
#include "Platform/Text/Unicode.h"

namespace nomely {

std::optional<DayStore::TrashOrigin> DayStore::parseTrashMeta(std::string_view text) {
  const std::size_t comma = text.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const auto date = Day::parse(text.substr(0, comma));
  const auto number = parseDecimal(text.substr(comma + 1));
  if (!date || !number) return std::nullopt;
  return TrashOrigin{*date, *number};
}

std::filesystem::path DayStore::makeTrashFolder(Day day, std::int64_t seqNumber) const {
  const std::filesystem::path trash = context_.paths.trashFolder();
  const std::string name = fmt::format("{}_{:03}", day.string(), seqNumber);
  const std::string now = DateFormatters::preciseTimestamp.format(context_.clock.now());
  constexpr int mostAttempts = 100;
  std::string candidate = name;
  for (int attempt = 1; context_.files.exists(trash / candidate); ++attempt)
    candidate = attempt <= mostAttempts ? fmt::format("{}_{}_{}", name, now, attempt)
                                        : fmt::format("{}_{}", name, Uuid::random().string());
  writes_.prepareFolder(trash / candidate, context_.files);
  return trash / candidate;
}

std::string DayStore::trashMemo(Day day, const Memo& memo) const {
  return writes_.write([&] {
    validateUnchanged(memo, day);
    const std::filesystem::path folder = makeTrashFolder(day, memo.seqNumber);
    context_.files.moveFile(context_.paths.memoFile(day, memo.seqNumber),
                            folder / TrashEntry::memoFileName);
    if (!memo.attachments.empty())
      writes_.prepareFolder(folder / TrashEntry::attachmentsName, context_.files);
    for (const std::string& name : memo.attachments) {
      const std::filesystem::path file = context_.paths.dayFolder(day) / name;
      try {
        if (AttachmentManager::isSafeName(name) && context_.files.exists(file))
          context_.files.moveFile(file, folder / TrashEntry::attachmentsName / name);
      } catch (const FileError& error) {
        Log::error(LogChannel::storage, "⚠️ DayStore.trashMemo: {}", error.what());
      }
    }
    context_.files.writeAtomically(folder / TrashEntry::metaFileName,
                                   fmt::format("{},{}", day.string(), memo.seqNumber));
    return folder.filename().string();
  });
}

void DayStore::restoreMemo(const TrashEntry& entry) const {
  writes_.write([&] {
    const std::filesystem::path folder = trashFolderOf(entry);
    if (!context_.files.exists(folder)) throw WriteError(WriteError::Kind::missingMemo);
    if (context_.files.exists(folder / TrashEntry::memoFileName)) restoreMemoFile(entry, folder);
    if (context_.files.isDirectory(folder / TrashEntry::attachmentsName))
      restoreAttachments(entry, folder / TrashEntry::attachmentsName);
    try {
      context_.files.removeTree(folder);
    } catch (const FileError& error) {
      // The memo is back; what is left of its folder shows no entry without its memo file.
      Log::error(LogChannel::storage, "⚠️ DayStore.restoreMemo: {}", error.what());
    }
  });
}

// The file moves as it is, to the next number that nobody has when its own was given away: written
// anew it would lose what we don't read, and a damaged one would lose everything. A forged number
// below 1 is nobody's either, because no list shows it.
void DayStore::restoreMemoFile(const TrashEntry& entry, const std::filesystem::path& folder) const {
  const Day date = entry.originalDate;
  writes_.prepareFolder(context_.paths.dayFolder(date), context_.files);
  std::int64_t number = entry.memo.seqNumber >= 1 ? entry.memo.seqNumber : nextSeqNumber(date);
  for (;;) {
    const std::filesystem::path place = context_.paths.memoFile(date, number);
    try {
      return context_.files.moveFile(folder / TrashEntry::memoFileName, place);
    } catch (const FileError& error) {
      if (error.kind() != FileError::Kind::alreadyExists) throw;
    }
    if (number == std::numeric_limits<std::int64_t>::max())
      throw FileError("编号", place, EOVERFLOW);
    number = std::max(number + 1, nextSeqNumber(date));
  }
}

void DayStore::restoreAttachments(const TrashEntry& entry,
                                  const std::filesystem::path& folder) const {
  const std::filesystem::path dayFolder = context_.paths.dayFolder(entry.originalDate);
  writes_.prepareFolder(dayFolder, context_.files);
  for (const DirectoryEntry& file : context_.files.listAll(folder)) {
    if (FileManager::isTemporaryName(file.name)) continue;
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

std::filesystem::path DayStore::trashFolderOf(const TrashEntry& entry) const {
  // A forged name must not reach outside the trash, nor take all of it.
  if (!VersionStore::isSafeFilename(entry.trashSubdir))
    throw WriteError(WriteError::Kind::missingMemo);
  return context_.paths.trashFolder() / entry.trashSubdir;
}

void DayStore::deleteVersions(const TrashEntry& entry) const {
  // Without an identity it has none, and its number may be another memo's by now.
  if (!entry.memo.memoId) return;
  VersionStore(context_).deleteAllVersions(entry.originalDate, entry.memo.seqNumber,
                                           entry.memo.memoId);
}

std::vector<DayStore::TrashEntry> DayStore::listTrash() const {
  std::vector<TrashEntry> entries;
  std::vector<DirectoryEntry> folders;
  try {
    if (!context_.files.exists(context_.paths.trashFolder())) return {};
    folders = context_.files.listAll(context_.paths.trashFolder());
  } catch (const FileError&) {
    return {};
  }
  for (const DirectoryEntry& folder : folders) {
    if (folder.type != FileType::directory) continue;
    try {
      const std::filesystem::path path = context_.paths.trashFolder() / folder.name;
      const auto meta = context_.files.read(path / TrashEntry::metaFileName);
      const auto origin = meta ? parseTrashMeta(*meta) : std::nullopt;
      const auto content = context_.files.read(path / TrashEntry::memoFileName);
      if (!origin || !content || !isValidUtf8(*content)) continue;
      entries.push_back({origin->date,
                         MemoStore::parseMemoFile(*content, origin->seqNumber, context_.clock),
                         folder.name});
    } catch (const FileError&) {
      // Not an entry, or not now.
    }
  }
  std::ranges::stable_sort(entries, std::greater(),
                           [](const TrashEntry& entry) { return entry.memo.time; });
  return entries;
}

void DayStore::deleteTrashEntries(const std::vector<TrashEntry>& entries) const {
  writes_.write([&] {
    for (const TrashEntry& entry : entries) {
      deleteVersions(entry);
      context_.files.removeTree(trashFolderOf(entry));
    }
  });
}

void DayStore::restoreTrashEntries(const std::vector<TrashEntry>& entries) const {
  writes_.write([&] {
    for (const TrashEntry& entry : entries) restoreMemo(entry);
  });
}

void DayStore::emptyTrash() const {
  writes_.write([&] {
    if (!context_.files.exists(context_.paths.trashFolder())) return;
    for (const TrashEntry& entry : listTrash()) deleteVersions(entry);
    context_.files.removeTree(context_.paths.trashFolder());
  });
}

}  // namespace nomely
