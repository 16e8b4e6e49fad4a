#include <algorithm>
#include <cerrno>
#include <functional>

#include "Core/Extensions/TextNumbers.h"
#include "Core/Storage/MemoFile.h"
#include "Core/Storage/TrashStore.h"
#include "Core/Storage/VersionStore.h"
#include "Platform/Files/FileError.h"

namespace nomely {

std::optional<MemoPlace> TrashStore::parseFolderName(std::string_view name) {
  const std::size_t end = name.find('_');
  if (end == std::string_view::npos) return std::nullopt;
  const auto date = Day::parse(name.substr(0, end));
  name.remove_prefix(end + 1);
  const auto number = parseDecimal(name.substr(0, name.find('_')));
  if (!date || !number || *number < 1) return std::nullopt;
  return MemoPlace{*date, *number};
}

std::vector<DirectoryEntry> TrashStore::foldersOfTrash() const {
  const std::filesystem::path trash = context_.paths.trashFolder();
  const auto attributes = context_.files.attributes(trash, LinkPolicy::noFollow);
  if (!attributes) return {};
  // What it leads to may be anything, and nobody asked to have that listed or removed.
  if (attributes->type == FileType::symbolicLink) throw FileError("打开回收站", trash, ELOOP);
  std::vector<DirectoryEntry> entries = context_.files.listAll(trash);
  std::erase_if(entries, [&](const DirectoryEntry& entry) {
    return entry.type != FileType::directory ||
           entry.name == context_.paths.attachmentTrashFolder().filename();
  });
  return entries;
}

std::optional<TrashEntry> TrashStore::readEntry(const std::string& name) const {
  try {
    const std::filesystem::path folder = context_.paths.trashFolder() / name;
    const auto meta = context_.files.read(folder / metaFileName, MemoFile::maxSize);
    const auto origin = meta ? MemoPlace::parse(*meta) : std::nullopt;
    const auto content = MemoFile::text(context_.files, folder / memoFileName);
    if (!origin || !content) return std::nullopt;
    return TrashEntry{origin->day,
                      MemoStore::parseMemoFile(*content, origin->seqNumber, context_.clock), name};
  } catch (const Error&) {
    return std::nullopt;  // not an entry, or not now
  }
}

std::vector<TrashEntry> TrashStore::listTrash() const {
  std::vector<TrashEntry> entries;
  try {
    for (const DirectoryEntry& folder : foldersOfTrash())
      if (auto entry = readEntry(folder.name)) entries.push_back(*std::move(entry));
  } catch (const FileError&) {
    return {};
  }
  std::ranges::stable_sort(entries, std::greater(),
                           [](const TrashEntry& entry) { return entry.memo.time; });
  return entries;
}

TrashContents TrashStore::contents() const {
  (void)foldersOfTrash();
  TrashContents contents{.entries = listTrash()};
  const std::filesystem::path trash = context_.paths.trashFolder();
  if (!context_.files.exists(trash)) return contents;
  for (const DirectoryEntry& entry : context_.files.listAll(trash)) {
    const bool isEntry = std::ranges::find(contents.entries, entry.name,
                                           &TrashEntry::trashSubdir) != contents.entries.end();
    if (!isEntry && entry.name != context_.paths.attachmentTrashFolder().filename())
      contents.others.push_back(entry.name);
  }
  const std::filesystem::path attachments = context_.paths.attachmentTrashFolder();
  if (context_.files.isDirectory(attachments))
    for (const DirectoryEntry& folder : context_.files.listAll(attachments))
      contents.attachmentFiles += folder.type == FileType::directory
                                      ? context_.files.listAll(attachments / folder.name).size()
                                      : 1;
  return contents;
}

std::optional<TrashEntry> TrashStore::entryNamed(const std::string& name) const {
  if (auto listed = readEntry(name)) return listed;
  if (!VersionStore::isSafeFilename(name)) return std::nullopt;
  try {
    auto memo =
        MemoFile::read(context_.files, context_.paths.trashFolder() / name / memoFileName, 0);
    if (!memo) return std::nullopt;
    const Day made = memo->dayMade().value_or(context_.clock.today());
    const MemoPlace origin = parseFolderName(name).value_or(MemoPlace{.day = made});
    memo->seqNumber = origin.seqNumber;
    return TrashEntry{origin.day, *std::move(memo), name};
  } catch (const Error&) {
    return std::nullopt;
  }
}

}  // namespace nomely
