#include "Core/Lifecycle/Maintenance/StartupMaintenance.h"

#include <algorithm>
#include <optional>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Lifecycle/Maintenance/DataMigrator.h"
#include "Core/Lifecycle/Maintenance/LegacyColorSpans.h"
#include "Core/Lifecycle/Maintenance/OrphanAttachmentFinder.h"
#include "Core/Lifecycle/Maintenance/SchemaMigrator.h"
#include "Core/Lifecycle/Maintenance/TemporaryFileSweep.h"
#include "Core/Lifecycle/Settling/HistorySettling.h"
#include "Core/Storage/MaintenanceWork.h"
#include "Core/Storage/RootMarkers.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {

StartupMaintenance::Result StartupMaintenance::run(const std::stop_token& stop) const {
  Result result;
  if (!context_.files.exists(context_.paths.rootURL)) return result;
  try {
    MaintenanceWork::requireWritable(context_);
  } catch (const FileError& error) {
    Log::error(LogChannel::storage, "数据目录无法写入，本次不做维护：{}", error.what());
    return result;
  }
  try {
    runSteps(result, stop);
  } catch (const FileError& error) {
    if (!MaintenanceWork::concernsWholeRoot(error)) throw;
    Log::error(LogChannel::storage, "数据目录无法写入，维护中止：{}", error.what());
  }
  return result;
}

void StartupMaintenance::runSteps(Result& result, const std::stop_token& stop) const {
  service_.trashStore().finishInterrupted();
  const Listed listed = sweep(stop);
  settle(listed, result, stop);
  migrateLegacyData(result, stop);
  throwIfStopped(stop);
  cleanColorSpans(result, stop);
  throwIfStopped(stop);
  migrateSchema(result, stop);
  throwIfStopped(stop);
  restoreOrphanedAudio(listed.daysWithAudio, result, stop);
  throwIfStopped(stop);
  rescueRecordings(result, stop);
  throwIfStopped(stop);
  removeRetiredKeys();
}

// Listing the whole root is most of what a pass does that finds nothing to do, so it is done once.
StartupMaintenance::Listed StartupMaintenance::sweep(const std::stop_token& stop) const {
  const auto isAudio = [](const DirectoryEntry& entry) {
    return OrphanAttachmentFinder::isAttachment(entry) &&
           OrphanAttachmentFinder::kindOf(entry.name) == OrphanAttachmentFinder::Kind::audio;
  };
  Listed listed;
  const std::filesystem::path versions = context_.paths.versionsFolder();
  const auto visit = [&](const std::filesystem::path& folder,
                         const std::vector<DirectoryEntry>& entries) {
    const auto day = Day::parse(folder.filename().native());
    if (day && folder == context_.paths.dayFolder(*day) && std::ranges::any_of(entries, isAudio))
      listed.daysWithAudio.push_back(*day);
    if (folder.native().starts_with(versions.native()) && HistorySettling::concerns(entries))
      listed.histories.push_back(folder);
  };
  sweepTemporaryFiles(context_, stop, visit);
  return listed;
}

void StartupMaintenance::settle(const Listed& listed, Result& result,
                                const std::stop_token& stop) const {
  result.settled = RootSettling(service_, helpers_.census).run(stop, listed.histories);
  result.changed = result.changed || result.settled.changedMemos;
}

void StartupMaintenance::migrateLegacyData(Result& result, const std::stop_token& stop) const {
  const auto migrated = DataMigrator(context_).migrate(stop);
  if (migrated.days > 0)
    Log::information(LogChannel::storage, "数据迁移完成：{} 天，{} 条 memo", migrated.days,
                     migrated.memos);
  for (const std::string& error : migrated.errors)
    Log::error(LogChannel::storage, "⚠️ DataMigrator.migrate: {}", error);
  result.changed = result.changed || migrated.memos > 0;
}

void StartupMaintenance::cleanColorSpans(Result& result, const std::stop_token& stop) const {
  const RootMarkers markers(context_.paths, context_.files);
  if (!helpers_.backup || markers.areColorSpansCleaned() || markers.isMadeHere()) return;
  try {
    helpers_.backup(stop);
  } catch (const CancellationError&) {
    throw;
  } catch (const std::exception& error) {
    Log::error(LogChannel::storage, "清理前备份失败，跳过颜色标记清理：{}", error.what());
    return;
  }
  const std::size_t cleaned = LegacyColorSpans::clean(service_, stop);
  result.changed = result.changed || cleaned > 0;
  context_.write([&] { markers.setColorSpansCleaned(); });
  if (cleaned > 0) Log::information(LogChannel::storage, "清理颜色标记：{} 条 memo", cleaned);
}

void StartupMaintenance::migrateSchema(Result& result, const std::stop_token& stop) const {
  const auto [upgraded, skipped, failed] = SchemaMigrator(service_).runAllMigrations(stop);
  if (upgraded + skipped + failed > 0)
    Log::information(LogChannel::storage, "Schema 迁移：{} 条升级，{} 条跳过，{} 条失败", upgraded,
                     skipped, failed);
  result.changed = result.changed || upgraded > 0;
}

void StartupMaintenance::restoreOrphanedAudio(const std::vector<Day>& days, Result& result,
                                              const std::stop_token& stop) const {
  OrphanAttachmentFinder finder(context_);
  for (const auto& report : finder.scan(days, OrphanAttachmentFinder::Kind::audio)) {
    throwIfStopped(stop);
    try {
      context_.write([&] {
        if (!finder.isStillOrphan(report) || finder.mayBeAwaited(report)) return;
        (void)service_.days().createMemo(
            report.date, {.body = report.dateKey,
                          .tags = {MemoService::recordingTag},
                          .attachments = {report.filename},
                          .time = DateFormatters::timeOnly.format(report.modifiedDate),
                          .source = MemoService::typedHere,
                          .memoId = service_.identityFor(report.date, "recording",
                                                         {report.dateKey, report.filename})});
        ++result.restoredAudio;
        result.changed = true;
      });
    } catch (const Error&) {
      MaintenanceWork::logOrRethrow("录音恢复失败");
    }
  }
}

void StartupMaintenance::rescueRecordings(Result& result, const std::stop_token& stop) const {
  if (!helpers_.rescueRecordings) return;
  try {
    const std::size_t rescued = helpers_.rescueRecordings(stop);
    result.restoredAudio += rescued;
    result.changed = result.changed || rescued > 0;
  } catch (const Error&) {
    MaintenanceWork::logOrRethrow("录音恢复失败");
  }
}

void StartupMaintenance::removeRetiredKeys() const {
  try {
    for (const auto* key : {"nomely.experienceMode", "nomely.animalMode",
                            "nomely.personalized.lastScene", "nomely.personalized.showSceneTiles"})
      defaults_.remove(key);
  } catch (const FileError& error) {
    // They are in nobody's way.
    Log::error(LogChannel::app, "⚠️ StartupMaintenance.run: {}", error.what());
  }
}

}  // namespace nomely
