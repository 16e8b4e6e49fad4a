#include "Core/Lifecycle/RootInspector.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <thread>

#include <fmt/format.h>

#include "Core/Extensions/EngineNames.h"
#include "Core/Extensions/PathNames.h"
#include "Core/Lifecycle/Maintenance/DataMigrator.h"
#include "Core/Lifecycle/Maintenance/OrphanAttachmentFinder.h"
#include "Core/Lifecycle/Maintenance/TemporaryFileSweep.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/DraftStore.h"
#include "Core/Storage/MemoFile.h"
#include "Core/Storage/TrashStore.h"
#include "Core/Storage/VersionStore.h"
#include "Platform/Cancellation.h"
#include "Platform/Concurrency/InOrder.h"
#include "Platform/Files/FileError.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr auto oddName = "文件名不是标准编号（如 007.md），不会显示";
constexpr auto noVersionName = "文件名不以时间开头，不会显示";
constexpr auto strangeVersion = "不是这条笔记的版本，不会显示";
constexpr auto noMeta = "缺少 meta.txt，不会显示。取回：nomely trash restore {}";
constexpr auto forgedMeta =
    "meta.txt 不是原来的日期和编号，不会显示。取回：nomely trash restore {}";
constexpr auto noMemo = "缺少 memo.md，不会显示";
constexpr auto linkedTrash = "回收站是一个符号链接，里面的内容不会显示，也不会被清空";

// A folder that can't be listed is told of with all the others.
std::vector<DirectoryEntry> entriesOf(const FileManager& files,
                                      const std::filesystem::path& folder) {
  try {
    return files.exists(folder) ? files.listAll(folder) : std::vector<DirectoryEntry>();
  } catch (const FileError&) {
    return {};
  }
}

// Attached as any file may be, or put there by somebody who took it for a memo.
bool isStrayMarkdown(const DirectoryEntry& entry) {
  return entry.type == FileType::regular && pathExtension(entry.name) == "md" &&
         !DiskPaths::seqNumber(entry.name);
}

template <typename Value>
void moveTo(std::vector<Value>& all, std::vector<Value>& more) {
  std::ranges::move(more, std::back_inserter(all));
}

}  // namespace

void RootInspector::Findings::append(Findings&& later) {
  Report& more = later.report;
  report.days += more.days;
  report.memos += more.memos;
  report.foreignMemos += more.foreignMemos;
  moveTo(report.unreadableMemos, more.unreadableMemos);
  moveTo(report.unreadableVersions, more.unreadableVersions);
  moveTo(report.unreadableTrash, more.unreadableTrash);
  moveTo(report.missingAttachments, more.missingAttachments);
  moveTo(report.orphanedAttachments, more.orphanedAttachments);
  moveTo(report.danglingLinks, more.danglingLinks);
  moveTo(report.staleTemporaryFiles, more.staleTemporaryFiles);
  // A day that can't be listed comes once more with the whole tree.
  for (std::filesystem::path& folder : more.unreadableFolders)
    if (std::ranges::find(report.unreadableFolders, folder) == report.unreadableFolders.end())
      report.unreadableFolders.push_back(std::move(folder));
  for (auto& [memoId, places] : later.identities) moveTo(identities[memoId], places);
}

// Goes through lists of things on all cores and puts together what they show, in their order.
class RootInspector::Round {
 public:
  Round(std::size_t things, const std::function<void(double)>& progress,
        const std::stop_token& stop)
      : things_(things), progress_(progress), stop_(stop) {}

  // `look(thing, findings)` runs on any thread.
  template <typename Thing, typename Look>
  void each(const std::vector<Thing>& things, const Look& look) {
    const auto newLook = [&] {
      return [&](std::size_t i) {
        Findings found;
        look(things[i], found);
        return found;
      };
    };
    const auto take = [&](std::size_t, Findings&& found) {
      throwIfStopped(stop_);
      all.append(std::move(found));
      progress_(static_cast<double>(++done_) / static_cast<double>(things_));
      return true;
    };
    InOrder(things.size(), newLook, take).run(jobs_, std::thread::hardware_concurrency());
  }

  Findings all;

 private:
  std::size_t things_;
  std::size_t done_ = 0;
  const std::function<void(double)>& progress_;
  const std::stop_token& stop_;
  JobPool jobs_;
};

RootInspector::Report RootInspector::inspect(const std::function<void(double)>& progress,
                                             const std::stop_token& stop) const {
  const std::filesystem::path& root = store_.paths().rootURL;
  if (!store_.context().files.exists(root)) return {};
  throwIfStopped(stop);
  Findings aside;
  const std::vector<Day> allDays = store_.dayFolders();
  const std::vector<VersionFolder> versions = versionFolders();
  const std::vector<std::string> trash = trashFolders(aside.report);
  const std::vector<DirectoryEntry> entries = store_.context().files.listAll(root);
  Round round(allDays.size() + versions.size() + trash.size() + entries.size(), progress, stop);
  round.each(allDays, [&](Day day, Findings& found) { inspectDay(day, found); });
  round.each(versions, [&](const VersionFolder& folder, Findings& found) {
    inspectVersionFolder(folder, found.report);
  });
  round.all.append(std::move(aside));
  round.each(trash,
             [&](const std::string& name, Findings& found) { inspectTrashFolder(name, found); });
  inspectDrafts(round.all.report);
  inspectOldTexts(round.all.report);
  inspectIdentities(round.all.identities, round.all.report);
  round.each(entries, [&](const DirectoryEntry& entry, Findings& found) {
    try {
      inspectEntry(root, entry, 0, found.report);
    } catch (const FileError&) {
      found.report.unreadableFolders.emplace_back(".");
    }
  });
  return std::move(round.all.report);
}

void RootInspector::inspectDay(Day day, Findings& found) const {
  try {
    const std::filesystem::path folder = day.string();
    bool holdsMemos = false;
    // The day's other files; one of them may be named by a memo that can't be read.
    std::set<std::string> unnamed;
    bool areAllRead = true;
    const auto entries = store_.context().files.listVisible(store_.paths().dayFolder(day));
    for (const DirectoryEntry& entry : entries)
      if (OrphanAttachmentFinder::isAttachment(entry) || isStrayMarkdown(entry))
        unnamed.insert(entry.name);
    for (const DirectoryEntry& entry : entries) {
      const auto number = DiskPaths::seqNumber(entry.name);
      if (!number) continue;
      holdsMemos = true;
      if (*number >= 1 && entry.name == DiskPaths::memoFileName(*number))
        areAllRead = inspectMemo(day, entry.name, unnamed, found) && areAllRead;
      else {
        found.report.unreadableMemos.push_back({{folder / entry.name, oddName}, day, *number, {}});
        areAllRead = false;
      }
    }
    found.report.days += holdsMemos ? 1 : 0;
    if (!areAllRead) return;
    for (const std::string& name : unnamed)
      found.report.orphanedAttachments.push_back(folder / name);
  } catch (const FileError&) {
    found.report.unreadableFolders.emplace_back(day.string());
  }
}

bool RootInspector::inspectMemo(Day day, const std::string& fileName,
                                std::set<std::string>& unnamed, Findings& found) const {
  const std::int64_t number = *DiskPaths::seqNumber(fileName);
  const std::filesystem::path place = std::filesystem::path(day.string()) / fileName;
  Report& report = found.report;
  try {
    const FileManager& files = store_.context().files;
    const auto text = MemoFile::text(files, store_.paths().memoFile(day, number));
    if (!text) return true;  // gone since the folder was listed
    const Memo memo = MemoFile::parsed(*text, number);
    ++report.memos;
    if (MemoFrontmatterParser::losesOnRewrite(*text)) ++report.foreignMemos;
    if (memo.memoId) found.identities[*memo.memoId].push_back(place);
    for (const std::string& name : memo.attachments) {
      unnamed.erase(name);
      if (!files.exists(store_.paths().dayFolder(day) / name))
        report.missingAttachments.push_back({day, number, memo.memoId, name});
    }
    return true;
  } catch (const Error& error) {
    report.unreadableMemos.push_back(
        {{place, error.what()}, day, number, service_.mendsOf(day, number)});
    return false;
  }
}

void RootInspector::inspectDrafts(Report& report) const {
  const DraftStore drafts(store_.context());
  const auto needed = drafts.pendingAttachmentReferences();
  std::erase_if(report.orphanedAttachments, [&](const std::filesystem::path& file) {
    return !needed || needed->contains(file.filename().string());
  });
  try {
    for (const std::filesystem::path& file : drafts.damagedDrafts())
      report.damagedDrafts.push_back(file.lexically_relative(store_.paths().rootURL));
  } catch (const FileError&) {
    // The tree's own inspection tells of a folder that can't be listed.
  }
}

void RootInspector::inspectOldTexts(Report& report) const {
  try {
    for (const Day day : DataMigrator(store_.context()).leftOut())
      report.leftOutTexts.push_back(DataMigrator::textOf(day));
  } catch (const FileError&) {
    // The tree's own inspection tells of a folder that can't be listed.
  }
}

void RootInspector::inspectIdentities(const Identities& identities, Report& report) const {
  for (const auto& [memoId, places] : identities)
    if (places.size() > 1) report.sharedIdentities.push_back({memoId, places});
  for (const std::string& memoId : service_.versions().identities("")) {
    if (identities.contains(memoId)) continue;
    const std::size_t count =
        service_.versions().listVersions(store_.context().clock.today(), 0, memoId).size();
    if (count > 0) report.strandedHistories.push_back({memoId, count});
  }
}

std::vector<RootInspector::VersionFolder> RootInspector::versionFolders() const {
  const DiskPaths& paths = store_.paths();
  const FileManager& files = store_.context().files;
  std::vector<VersionFolder> folders;
  const std::filesystem::path byId = paths.versionsByIdFolder();
  for (const DirectoryEntry& entry : entriesOf(files, paths.versionsFolder()))
    if (entry.type == FileType::directory && entry.name != byId.filename())
      folders.push_back({paths.versionsFolder() / entry.name, Layout::former});
  for (const DirectoryEntry& entry : entriesOf(files, byId))
    if (entry.type == FileType::directory)
      folders.push_back({byId / entry.name, Layout::byIdentity});
  return folders;
}

void RootInspector::inspectVersionFolder(const VersionFolder& versionFolder, Report& report) const {
  const auto& [folder, layout] = versionFolder;
  const VersionStore versions(store_.context());
  for (const DirectoryEntry& entry : entriesOf(store_.context().files, folder)) {
    if (pathExtension(entry.name) != "md") continue;
    const std::filesystem::path file = versionFolder.path / entry.name;
    const auto tell = [&](const std::string& reason) {
      report.unreadableVersions.push_back(
          {file.lexically_relative(store_.paths().rootURL), reason});
    };
    try {
      const auto version = MemoFile::read(store_.context().files, file, 0);
      if (!version) continue;  // gone since the folder was listed
      const auto& memoId = version->memoId;
      if (!VersionStore::timestampOf(entry.name))
        tell(noVersionName);
      else if (layout == Layout::byIdentity &&
               (!memoId || versions.identityDirectory(*memoId) != folder))
        tell(strangeVersion);
    } catch (const Error& error) {
      tell(error.what());
    }
  }
}

std::vector<std::string> RootInspector::trashFolders(Report& report) const {
  const DiskPaths& paths = store_.paths();
  const FileManager& files = store_.context().files;
  std::vector<std::string> folders;
  const auto trash = files.attributes(paths.trashFolder(), LinkPolicy::noFollow);
  if (trash && trash->type == FileType::symbolicLink) {
    report.unreadableTrash.push_back({paths.trashFolder().filename(), linkedTrash});
    return folders;
  }
  for (const DirectoryEntry& entry : entriesOf(files, paths.trashFolder()))
    if (entry.type == FileType::directory &&
        paths.trashFolder() / entry.name != paths.attachmentTrashFolder())
      folders.push_back(entry.name);
  return folders;
}

void RootInspector::inspectTrashFolder(const std::string& name, Findings& found) const {
  const DiskPaths& paths = store_.paths();
  if (std::string fault = faultOfTrashFolder(name, found.identities); !fault.empty())
    found.report.unreadableTrash.push_back(
        {(paths.trashFolder() / name).lexically_relative(paths.rootURL), std::move(fault)});
}

std::string RootInspector::faultOfTrashFolder(const std::string& name,
                                              Identities& identities) const {
  const FileManager& files = store_.context().files;
  const std::filesystem::path folder = store_.paths().trashFolder() / name;
  try {
    const auto memo = MemoFile::read(files, folder / TrashStore::memoFileName, 0);
    if (!memo) return noMemo;
    if (memo->memoId)
      identities[*memo->memoId].push_back(folder.lexically_relative(store_.paths().rootURL));
    const std::optional<std::string> meta = files.read(folder / TrashStore::metaFileName);
    if (!meta) return fmt::format(noMeta, name);
    const auto origin = MemoPlace::parse(*meta);
    return origin && origin->seqNumber >= 1 ? "" : fmt::format(forgedMeta, name);
  } catch (const Error& error) {
    return error.what();
  }
}

void RootInspector::inspectTree(const std::filesystem::path& folder, int depth,
                                Report& report) const {
  try {
    for (const DirectoryEntry& entry : store_.context().files.listAll(folder))
      inspectEntry(folder, entry, depth, report);
  } catch (const FileError&) {
    report.unreadableFolders.push_back(folder.lexically_relative(store_.paths().rootURL));
  }
}

void RootInspector::inspectEntry(const std::filesystem::path& folder, const DirectoryEntry& entry,
                                 int depth, Report& report) const {
  if (EngineNames::isAny(entry.name)) return;
  const std::filesystem::path path = folder / entry.name;
  const auto relative = [&] { return path.lexically_relative(store_.paths().rootURL); };
  if (entry.type == FileType::regular && FileManager::isTemporaryName(entry.name))
    report.staleTemporaryFiles.push_back(relative());
  if (entry.type == FileType::directory && depth < deepestDataFolder)
    inspectTree(path, depth + 1, report);
  if (entry.type == FileType::symbolicLink && !store_.context().files.attributes(path))
    report.danglingLinks.push_back(relative());
}

}  // namespace nomely
