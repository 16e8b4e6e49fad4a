#include "Core/Lifecycle/Backup/BackupNotes.h"

#include <ranges>
#include <string_view>

#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/DiskPaths.h"
#include "Core/Storage/MemoFile.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// Of "2026-03-01/007.md". A name that no memo of ours would be filed under, such as
// "2026-03-01/+7.md", is one all the same where its number is told.
std::optional<std::pair<Day, std::int64_t>> placeNamed(std::string_view name) {
  const std::size_t slash = name.find('/');
  if (slash == std::string_view::npos || name.find('/', slash + 1) != std::string_view::npos)
    return std::nullopt;
  const auto day = Day::parse(name.substr(0, slash));
  const auto number = DiskPaths::seqNumber(name.substr(slash + 1));
  return day && number ? std::optional(std::pair(*day, *number)) : std::nullopt;
}

}  // namespace

BackupNotes::BackupNotes(const BackupArchive& archive) : zip_(archive.zip()) {
  for (const ZipEntry& entry : zip_.entries())
    if (const auto place = placeNamed(entry.name)) notes_.try_emplace(*place, &entry);
}

Memo BackupNotes::read(const ZipEntry& entry, std::int64_t seqNumber) const {
  const std::string text = zip_.contents(entry, MemoFile::maxSize);
  if (!isValidUtf8(text)) throw EncodingError(entry.name);
  return MemoFile::parsed(text, seqNumber);
}

std::optional<Memo> BackupNotes::read(const MemoPlace& place) const {
  const auto found = notes_.find({place.day, place.seqNumber});
  if (found == notes_.end()) return std::nullopt;
  return read(*found->second, place.seqNumber);
}

std::size_t BackupNotes::forEach(
    const std::function<bool(const MemoPlace& place, Memo memo)>& visit) const {
  std::size_t unreadable = 0;
  for (const auto& [place, entry] : notes_ | std::views::reverse) {
    std::optional<Memo> memo;
    try {
      memo = read(*entry, place.second);
    } catch (const Error&) {
      ++unreadable;
      continue;
    }
    if (!visit({place.first, place.second}, *std::move(memo))) break;
  }
  return unreadable;
}

std::map<std::string, std::filesystem::path> BackupNotes::unpackAttachments(
    Day day, const Memo& memo, const std::filesystem::path& folder,
    const FileManager& files) const {
  std::map<std::string, std::filesystem::path> unpacked;
  for (const std::string& name : memo.attachments) {
    if (!AttachmentManager::isSafeName(name) || unpacked.contains(name)) continue;
    const ZipEntry* const entry = zip_.find(day.string() + "/" + name);
    if (entry == nullptr) continue;
    const std::filesystem::path copy = folder / name;
    files.writeAtomically(copy, [&](const FileManager::Sink& sink) { zip_.read(*entry, sink); });
    unpacked.emplace(name, copy);
  }
  return unpacked;
}

}  // namespace nomely
