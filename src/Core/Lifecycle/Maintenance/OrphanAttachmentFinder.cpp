#include "Core/Lifecycle/Maintenance/OrphanAttachmentFinder.h"

#include <algorithm>
#include <array>

#include "Core/Extensions/EngineNames.h"
#include "Core/Extensions/PathNames.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/DraftStore.h"
#include "Core/Storage/MemoFile.h"
#include "Core/Storage/SyncedFolder.h"
#include "Platform/Files/FileError.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using Kind = OrphanAttachmentFinder::Kind;

// More than a player has to know: what an old program or another one may have put there.
constexpr std::array<std::string_view, 6> audio{"mp3", "m4a", "aac", "caf", "wav", "aiff"};
constexpr std::array<std::string_view, 7> image{"jpg",  "jpeg", "png", "gif",
                                                "heic", "webp", "tiff"};

}  // namespace

Kind OrphanAttachmentFinder::kindOf(std::string_view name) {
  const std::string extension = lowerCaseExtension(name);
  if (std::ranges::find(audio, extension) != audio.end()) return Kind::audio;
  if (std::ranges::find(image, extension) != image.end()) return Kind::image;
  return Kind::other;
}

bool OrphanAttachmentFinder::isAttachment(const DirectoryEntry& entry) {
  constexpr std::string_view settingsOfDay = "day.yaml";
  return entry.type == FileType::regular && !entry.name.starts_with('.') &&
         pathExtension(entry.name) != "md" && entry.name != settingsOfDay &&
         !EngineNames::isTemporary(entry.name);
}

std::vector<OrphanAttachmentFinder::OrphanReport> OrphanAttachmentFinder::scan(
    std::optional<Kind> kindFilter) {
  try {
    return scan(days_.dayFolders(), kindFilter);
  } catch (const FileError&) {
    return {};
  }
}

std::vector<OrphanAttachmentFinder::OrphanReport> OrphanAttachmentFinder::scan(
    const std::vector<Day>& days, std::optional<Kind> kindFilter) {
  std::vector<OrphanReport> reports;
  const auto needed = DraftStore(context_).pendingAttachmentReferences();
  if (!needed) return reports;
  for (const Day day : days) {
    try {
      scanDay(day, kindFilter, *needed, reports);
    } catch (const FileError&) {
      // A day that can't be listed shows no orphans.
    }
  }
  return reports;
}

void OrphanAttachmentFinder::scanDay(Day day, std::optional<Kind> kindFilter,
                                     const std::set<std::string>& needed,
                                     std::vector<OrphanReport>& reports) {
  const std::filesystem::path folder = context_.paths.dayFolder(day);
  const std::vector<DirectoryEntry> entries = context_.files.listVisible(folder);
  std::set<std::string> files;
  for (const DirectoryEntry& entry : entries)
    if (isAttachment(entry) && (!kindFilter || kindOf(entry.name) == *kindFilter) &&
        !needed.contains(entry.name))
      files.insert(entry.name);
  if (!files.empty()) eraseNamed(folder, entries, files);
  if (files.empty()) return;
  const auto named = filesNamed(day);
  if (!named) return;
  for (const std::string& name : files) {
    if (named->contains(name)) continue;
    try {
      const auto attributes = context_.files.attributes(folder / name, LinkPolicy::noFollow);
      if (!attributes) continue;
      reports.push_back({day, day.string(), name, kindOf(name), folder / name, attributes->size,
                         attributes->modified});
    } catch (const FileError&) {
      // Nothing can be done about a file that can't even be looked at.
    }
  }
}

// Most files are named by the memo beside them, in its header, letter by letter. Only where one is
// not found like that all memos of the day have to be read as memos.
void OrphanAttachmentFinder::eraseNamed(const std::filesystem::path& folder,
                                        const std::vector<DirectoryEntry>& entries,
                                        std::set<std::string>& files) {
  const std::unique_ptr<OpenFolder> opened = context_.files.openFolder(folder);
  for (const DirectoryEntry& entry : entries) {
    if (files.empty()) return;
    if (!DiskPaths::seqNumber(entry.name)) continue;
    try {
      const auto content = opened->read(entry.name, buffer_, MemoFile::maxSize);
      const auto isSaid = [&](const std::string& name) {
        return content && content->bytes.find(name) != std::string_view::npos;
      };
      if (std::ranges::none_of(files, isSaid) || !isValidUtf8(content->bytes)) continue;
      for (const std::string& name : MemoFrontmatterParser::parseHeader(content->bytes).attachments)
        files.erase(name);
    } catch (const Error&) {
      // A memo that can't be read names none; whether that matters is decided later.
    }
  }
}

std::optional<std::set<std::string>> OrphanAttachmentFinder::filesNamed(Day day) const {
  try {
    return days_.filesNamed(day);
  } catch (const FileError&) {
    return std::nullopt;
  }
}

bool OrphanAttachmentFinder::mayBeAwaited(const OrphanReport& report) const {
  return SyncedFolder::isNewHere(context_, report.fileURL) && SyncedFolder(context_).isSynced();
}

bool OrphanAttachmentFinder::isStillOrphan(const OrphanReport& report) const {
  if (!context_.files.exists(report.fileURL)) return false;
  const auto needed = DraftStore(context_).pendingAttachmentReferences();
  if (!needed || needed->contains(report.filename)) return false;
  const auto named = filesNamed(report.date);
  return named && !named->contains(report.filename);
}

}  // namespace nomely
