#include "Core/Lifecycle/RootInspector.h"

#include <algorithm>

#include <fmt/format.h>

#include "Core/Extensions/PathNames.h"
#include "Core/Lifecycle/TemporaryFileSweep.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/MemoFile.h"
#include "Core/Storage/TrashStore.h"
#include "Core/Storage/VersionStore.h"
#include "Platform/Cancellation.h"
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

}  // namespace

RootInspector::Report RootInspector::inspect(const std::function<void(double)>& progress,
                                             const std::stop_token& stop) const {
  const DiskPaths& paths = store_.paths();
  const FileManager& files = store_.context().files;
  Report report;
  if (!files.exists(paths.rootURL)) return report;
  std::vector<Day> days;
  for (const DirectoryEntry& entry : files.listVisible(paths.rootURL))
    if (const auto day = Day::parse(entry.name);
        day && files.isDirectory(paths.rootURL / entry.name))
      days.push_back(*day);
  Identities identities;
  for (std::size_t i = 0; i < days.size(); ++i) {
    throwIfStopped(stop);
    inspectDay(days[i], report, identities);
    progress(static_cast<double>(i + 1) / static_cast<double>(days.size()));
  }
  inspectVersions(report, stop);
  inspectTrash(report, identities, stop);
  inspectIdentities(identities, report);
  inspectTree(paths.rootURL, 0, report);
  return report;
}

void RootInspector::inspectDay(Day day, Report& report, Identities& identities) const {
  try {
    bool holdsMemos = false;
    for (const DirectoryEntry& entry :
         store_.context().files.listVisible(store_.paths().dayFolder(day))) {
      const auto number = DiskPaths::seqNumber(entry.name);
      if (!number) continue;
      holdsMemos = true;
      if (*number >= 1 && entry.name == DiskPaths::memoFileName(*number))
        inspectMemo(day, entry.name, report, identities);
      else
        report.unreadableMemos.push_back(
            {{std::filesystem::path(day.string()) / entry.name, oddName}, day, *number, {}});
    }
    report.days += holdsMemos ? 1 : 0;
  } catch (const FileError&) {
    report.unreadableFolders.emplace_back(day.string());
  }
}

void RootInspector::inspectMemo(Day day, const std::string& fileName, Report& report,
                                Identities& identities) const {
  const std::int64_t number = *DiskPaths::seqNumber(fileName);
  const std::filesystem::path place = std::filesystem::path(day.string()) / fileName;
  try {
    const FileManager& files = store_.context().files;
    const auto text = MemoFile::text(files, store_.paths().memoFile(day, number));
    if (!text) return;  // gone since the folder was listed
    const Memo memo = MemoFile::parsed(*text, number);
    ++report.memos;
    if (MemoFrontmatterParser::losesOnRewrite(*text)) ++report.foreignMemos;
    if (memo.memoId) identities[*memo.memoId].push_back(place);
    for (const std::string& name : memo.attachments)
      if (!files.exists(store_.paths().dayFolder(day) / name))
        report.missingAttachments.push_back({day, number, memo.memoId, name});
  } catch (const Error& error) {
    report.unreadableMemos.push_back(
        {{place, error.what()}, day, number, service_.mendsOf(day, number)});
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

void RootInspector::inspectVersions(Report& report, const std::stop_token& stop) const {
  const DiskPaths& paths = store_.paths();
  const FileManager& files = store_.context().files;
  for (const DirectoryEntry& folder : entriesOf(files, paths.versionsFolder())) {
    throwIfStopped(stop);
    if (folder.type == FileType::directory && folder.name != paths.versionsByIdFolder().filename())
      inspectVersionFolder(paths.versionsFolder() / folder.name, Layout::former, report);
  }
  for (const DirectoryEntry& folder : entriesOf(files, paths.versionsByIdFolder())) {
    throwIfStopped(stop);
    if (folder.type == FileType::directory)
      inspectVersionFolder(paths.versionsByIdFolder() / folder.name, Layout::byIdentity, report);
  }
}

void RootInspector::inspectVersionFolder(const std::filesystem::path& folder, Layout layout,
                                         Report& report) const {
  const VersionStore versions(store_.context());
  for (const DirectoryEntry& entry : entriesOf(store_.context().files, folder)) {
    if (pathExtension(entry.name) != "md") continue;
    const auto tell = [&](const std::string& reason) {
      report.unreadableVersions.push_back(
          {(folder / entry.name).lexically_relative(store_.paths().rootURL), reason});
    };
    try {
      const auto version = MemoFile::read(store_.context().files, folder / entry.name, 0);
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

void RootInspector::inspectTrash(Report& report, Identities& identities,
                                 const std::stop_token& stop) const {
  const DiskPaths& paths = store_.paths();
  const FileManager& files = store_.context().files;
  const auto trash = files.attributes(paths.trashFolder(), LinkPolicy::noFollow);
  if (trash && trash->type == FileType::symbolicLink) {
    report.unreadableTrash.push_back({paths.trashFolder().filename(), linkedTrash});
    return;
  }
  for (const DirectoryEntry& entry : entriesOf(files, paths.trashFolder())) {
    throwIfStopped(stop);
    const std::filesystem::path folder = paths.trashFolder() / entry.name;
    if (entry.type != FileType::directory || folder == paths.attachmentTrashFolder()) continue;
    if (std::string fault = faultOfTrashFolder(entry.name, identities); !fault.empty())
      report.unreadableTrash.push_back(
          {folder.lexically_relative(paths.rootURL), std::move(fault)});
  }
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
  const auto relative = [&](const std::filesystem::path& path) {
    return path.lexically_relative(store_.paths().rootURL);
  };
  try {
    for (const DirectoryEntry& entry : store_.context().files.listAll(folder)) {
      if (entry.type == FileType::regular && FileManager::isTemporaryName(entry.name))
        report.staleTemporaryFiles.push_back(relative(folder / entry.name));
      if (entry.type == FileType::directory && depth < deepestDataFolder)
        inspectTree(folder / entry.name, depth + 1, report);
      if (entry.type == FileType::symbolicLink &&
          !store_.context().files.attributes(folder / entry.name))
        report.danglingLinks.push_back(relative(folder / entry.name));
    }
  } catch (const FileError&) {
    const std::filesystem::path name = relative(folder);
    if (std::ranges::find(report.unreadableFolders, name) == report.unreadableFolders.end())
      report.unreadableFolders.push_back(name);
  }
}

}  // namespace nomely
