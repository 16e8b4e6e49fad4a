#include "Core/Lifecycle/RootInspector.h"

#include <algorithm>

#include "Core/Lifecycle/StartupCoordinator.h"
#include "Core/Lifecycle/TemporaryFileSweep.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

constexpr auto oddName = "文件名不是标准编号（如 007.md），不会显示";

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
    if (stop.stop_requested()) throw CancellationError();
    inspectDay(days[i], report);
    progress(static_cast<double>(i + 1) / static_cast<double>(days.size()));
  }
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
