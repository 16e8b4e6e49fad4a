#include "CLI/KeepingReport.h"

#include <fmt/format.h>

#include "App/BackupAge.h"
#include "CLI/ByteCount.h"
#include "CLI/Progress.h"
#include "Core/Extensions/DateFormatters.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

std::optional<KeepingReport::Newest> newestOf(Session& session) {
  const BackupManager& backups = session.application().backups();
  auto file = backups.newestBackup();
  if (!file) return std::nullopt;
  KeepingReport::Newest newest{.file = *std::move(file), .fault = {}};
  session.host([&](const std::stop_token& stop) {
    Progress progress(session, "检验备份");
    try {
      newest.notes =
          backups
              .verify(backups.backupsFolder() / newest.file.name,
                      {.stop = stop, .progress = [&](double share) { progress.show(share); }})
              .notes;
    } catch (const CancellationError&) {
      throw;
    } catch (const Error& error) {
      newest.fault = error.what();
    }
  });
  return newest;
}

}  // namespace

KeepingReport KeepingReport::of(Session& session) {
  const Application& application = session.application();
  KeepingReport report;
  report.hasRoot = session.hasRoot();
  report.now = session.clock().now();
  report.filesWithSecrets = session.settings().filesWithSecrets();
  try {
    report.leftovers = BackupLeftovers::find(application.storage());
  } catch (const FileError&) {
    // A folder that can't be listed shows none.
  }
  if (!report.hasRoot) return report;
  report.newest = newestOf(session);
  session.host([&](const std::stop_token& stop) {
    report.obstacles = application.backups().obstacles(stop);
  });
  return report;
}

bool KeepingReport::isFine() const {
  const bool isRootLost = !hasRoot && !leftovers.rescues.empty();
  return !isRootLost && obstacles.empty() && leftovers.abandoned.empty() &&
         filesWithSecrets.empty() && (!newest || newest->fault.empty());
}

Json KeepingReport::json() const {
  const auto jsonOf = [](const BackupLeftovers::Item& item) {
    return Json{{"path", item.path.string()}, {"bytes", item.bytes}};
  };
  Json json{{"obstacles", Json::array()},
            {"rescueFolders", Json::array()},
            {"abandonedWork", Json::array()},
            {"filesWithSecrets", filesWithSecrets}};
  if (newest)
    json["newestBackup"] = {{"name", newest->file.name},
                            {"date", DateFormatters::utcTimestamp(newest->file.date)},
                            {"notes", newest->notes},
                            {"fault", newest->fault}};
  for (const auto& [path, reason] : obstacles)
    json["obstacles"].push_back({{"path", path.string()}, {"reason", reason}});
  for (const auto& rescue : leftovers.rescues) {
    Json item = jsonOf(rescue);
    item["wayBack"] = rescue.wayBack;
    json["rescueFolders"].push_back(std::move(item));
  }
  for (const auto& item : leftovers.abandoned) json["abandonedWork"].push_back(jsonOf(item));
  return json;
}

void KeepingReport::addTo(ReportLines& lines) const {
  for (const auto& [path, reason] : obstacles)
    lines.add("妨碍备份", fmt::format("{}：{}", path.string(), reason));
  if (newest && !newest->fault.empty())
    lines.add("不能恢复的备份",
              fmt::format("{}：{}。重新做一份：nomely backup", newest->file.name, newest->fault));
  for (const std::string& file : filesWithSecrets)
    lines.add("设置文件里的密钥", fmt::format("_config/{}。把它移进密钥环：nomely config", file));
  for (const auto& item : leftovers.abandoned)
    lines.add("中断的备份或恢复",
              fmt::format("{}（{}），可以删除", item.path.string(), byteCount(item.bytes)));
  for (const auto& rescue : leftovers.rescues) {
    const std::string path = rescue.path.string();
    lines.add("恢复前的数据",
              fmt::format("{}（{}），不再需要就删除。要换回来，先移开现在的数据目录，再执行：{}",
                          path, byteCount(rescue.bytes), rescue.wayBack));
    if (rescue.holdsBackups)
      lines.add("没有搬完的备份", path + "/.backups。nomely run 启动时会把它们搬回数据目录");
  }
}

void KeepingReport::addAge(ReportLines& lines) const {
  if (!newest && hasRoot) {
    lines.say("还没有备份。做一份：nomely backup");
  } else if (newest && newest->fault.empty()) {
    const auto age = now - newest->file.date;
    lines.say(fmt::format(
        "最近的备份：{}，{} 条笔记，验过，能恢复{}", BackupAge::text(age), newest->notes,
        BackupAge::isTooOld(age) ? "。已经很久了，做一份新的：nomely backup" : ""));
  }
}

}  // namespace nomely
