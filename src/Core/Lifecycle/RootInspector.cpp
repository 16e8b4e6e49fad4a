#include "Core/Lifecycle/RootInspector.h"

#include <algorithm>

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
constexpr auto noMeta = "缺少 meta.txt，不会显示";
constexpr auto forgedMeta = "meta.txt 不是原来的日期和编号，不会显示";
constexpr auto noMemo = "缺少 memo.md，不会显示";

// A folder that can't be listed is told of with all the others.
std::vector<DirectoryEntry> entriesOf(const FileManager& files,
                                      const std::filesystem::path& folder) {
  try {
    return files.exists(folder) ? files.listAll(folder) : std::vector<DirectoryEntry>();
  } catch (const FileError&) {
    return {};
  }
}

// Absent when there is no such file.
std::optional<MemoFrontmatterParser::ParsedMemo> parsed(const FileManager& files,
                                                        const std::filesystem::path& file) {
  const std::optional<std::string> content = files.read(file);
  if (!content) return std::nullopt;
  if (!isValidUtf8(*content)) throw EncodingError(file);
  return MemoFrontmatterParser::parse(*content);
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
  for (std::size_t i = 0; i < days.size(); ++i) {
    throwIfStopped(stop);
    inspectDay(days[i], report);
    progress(static_cast<double>(i + 1) / static_cast<double>(days.size()));
  }
  inspectVersions(report, stop);
  inspectTrash(report, stop);
  collectTemporaries(paths.rootURL, 0, report);
  return report;
}

void RootInspector::inspectDay(Day day, Report& report) const {
  try {
    bool holdsMemos = false;
    for (const DirectoryEntry& entry :
         store_.context().files.listVisible(store_.paths().dayFolder(day))) {
      const auto number = DiskPaths::seqNumber(entry.name);
      if (!number) continue;
      holdsMemos = true;
      if (*number >= 1 && entry.name == DiskPaths::memoFileName(*number))
        inspectMemo(day, entry.name, report);
      else
        report.unreadableMemos.push_back(
            {std::filesystem::path(day.string()) / entry.name, oddName});
    }
    report.days += holdsMemos ? 1 : 0;
  } catch (const FileError&) {
    report.unreadableFolders.emplace_back(day.string());
  }
}

void RootInspector::inspectMemo(Day day, const std::string& fileName, Report& report) const {
  const std::int64_t number = *DiskPaths::seqNumber(fileName);
  try {
    const std::optional<Memo> memo = store_.memoStore().read(day, number);
    if (!memo) return;  // gone since the folder was listed
    ++report.memos;
    for (const std::string& name : memo->attachments)
      if (!store_.context().files.exists(store_.paths().dayFolder(day) / name))
        report.missingAttachments.push_back({day, number, memo->memoId, name});
  } catch (const Error& error) {
    report.unreadableMemos.push_back(
        {std::filesystem::path(day.string()) / fileName, error.what()});
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
      const auto version = parsed(store_.context().files, folder / entry.name);
      if (!version) continue;  // gone since the folder was listed
      const auto& memoId = version->frontmatter.memoId;
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

void RootInspector::inspectTrash(Report& report, const std::stop_token& stop) const {
  const DiskPaths& paths = store_.paths();
  for (const DirectoryEntry& entry : entriesOf(store_.context().files, paths.trashFolder())) {
    throwIfStopped(stop);
    const std::filesystem::path folder = paths.trashFolder() / entry.name;
    if (entry.type != FileType::directory || folder == paths.attachmentTrashFolder()) continue;
    if (std::string fault = faultOfTrashFolder(folder); !fault.empty())
      report.unreadableTrash.push_back(
          {folder.lexically_relative(paths.rootURL), std::move(fault)});
  }
}

std::string RootInspector::faultOfTrashFolder(const std::filesystem::path& folder) const {
  const FileManager& files = store_.context().files;
  try {
    if (!parsed(files, folder / TrashStore::memoFileName)) return noMemo;
    const std::optional<std::string> meta = files.read(folder / TrashStore::metaFileName);
    if (!meta) return noMeta;
    const auto origin = TrashStore::parseMeta(*meta);
    return origin && origin->seqNumber >= 1 ? "" : forgedMeta;
  } catch (const Error& error) {
    return error.what();
  }
}

void RootInspector::collectTemporaries(const std::filesystem::path& folder, int depth,
                                       Report& report) const {
  const auto relative = [&](const std::filesystem::path& path) {
    return path.lexically_relative(store_.paths().rootURL);
  };
  try {
    for (const DirectoryEntry& entry : store_.context().files.listAll(folder)) {
      if (entry.type == FileType::regular && FileManager::isTemporaryName(entry.name))
        report.staleTemporaryFiles.push_back(relative(folder / entry.name));
      if (entry.type == FileType::directory && depth < deepestDataFolder)
        collectTemporaries(folder / entry.name, depth + 1, report);
    }
  } catch (const FileError&) {
    const std::filesystem::path name = relative(folder);
    if (std::ranges::find(report.unreadableFolders, name) == report.unreadableFolders.end())
      report.unreadableFolders.push_back(name);
  }
}

}  // namespace nomely
