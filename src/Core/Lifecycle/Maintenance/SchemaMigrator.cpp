#include "Core/Lifecycle/Maintenance/SchemaMigrator.h"

#include <optional>
#include <utility>

#include <fmt/format.h>

#include "Core/Storage/MaintenanceWork.h"
#include "Core/Storage/RootMarkers.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

constexpr std::int64_t current = MemoFrontmatter::currentSchemaVersion;

std::int64_t versionOf(const Memo& memo) {
  return memo.schemaVersion.value_or(0);
}

}  // namespace

SchemaMigrator::SchemaMigrator(const MemoService& service) : service_(service) {
  migrations_.push_back(std::make_unique<IdentityBackfillMigration>(
      [this](const Memo& memo, const MigrationContext& context) {
        return service_.identityOfNameless(context.directoryDate, memo.seqNumber);
      }));
  migrations_.push_back(std::make_unique<NoOpMigration>());
}

SchemaMigrator::MigrationStats SchemaMigrator::runAllMigrations(const std::stop_token& stop) const {
  const StoreContext& context = service_.context();
  const RootMarkers markers(context.paths, context.files);
  MigrationStats stats;
  if (markers.migratedSchemaVersion() >= current) return stats;
  // A day that can't be listed must not be taken for one without memos.
  bool areAllRead = true;
  for (const Day day : service_.days().dayFolders()) {
    throwIfStopped(stop);
    try {
      for (const std::int64_t number : service_.days().listNumbers(day))
        areAllRead = migrate(day, number, stats) && areAllRead;
    } catch (const Error&) {
      MaintenanceWork::logOrRethrow("⚠️ SchemaMigrator.runAllMigrations");
      areAllRead = false;
    }
  }
  throwIfStopped(stop);
  if (areAllRead && stats.failed == 0)
    context.write([&] { markers.setMigratedSchemaVersion(current); });
  return stats;
}

bool SchemaMigrator::migrate(Day day, std::int64_t number, MigrationStats& stats) const {
  std::optional<Memo> memo;
  try {
    memo = service_.days().memoStore().read(day, number);
  } catch (const FileError&) {
    MaintenanceWork::logOrRethrow("⚠️ SchemaMigrator.runAllMigrations");
    return false;
  } catch (const Error&) {
    return true;  // no memo until a person mends it
  }
  if (!memo) return true;
  if (versionOf(*memo) >= current) {
    ++stats.skipped;
    return true;
  }
  try {
    service_.upgrade(day, *memo, upgraded(*memo, day));
    ++stats.upgraded;
  } catch (const Error&) {
    MaintenanceWork::logOrRethrow(
        fmt::format("SchemaMigrator: 写回失败 {} #{}", day.string(), number));
    ++stats.failed;
  }
  return true;
}

Memo SchemaMigrator::upgraded(Memo memo, Day day) const {
  const std::int64_t version = versionOf(memo);
  for (const auto& migration : migrations_)
    if (migration->fromVersion() >= version) memo = migration->apply(std::move(memo), {day});
  // A number from a header that was made elsewhere says nothing of its identity.
  if (memo.memoId.value_or("").empty())
    memo.memoId = service_.identityOfNameless(day, memo.seqNumber);
  memo.schemaVersion = current;
  return memo;
}

}  // namespace nomely
