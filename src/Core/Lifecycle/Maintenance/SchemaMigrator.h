#pragma once

#include <cstddef>
#include <memory>
#include <stop_token>
#include <vector>

#include "Core/Lifecycle/Maintenance/MemoSchemaMigration.h"
#include "Core/Service/MemoService.h"

namespace nomely {

// Brings memo files of an older schema to the current one, in place, once a root. What our writing
// would drop of a file is kept beside its history. `service` must outlive it.
class SchemaMigrator {
 public:
  struct MigrationStats {
    std::size_t upgraded = 0;
    std::size_t skipped = 0;  // of the current schema already
    std::size_t failed = 0;   // that could not be written, or had changed since they were read
  };

  explicit SchemaMigrator(const MemoService& service);

  // Goes through all days, one memo in memory at a time. When nothing failed the root is
  // marked, and later calls return zeros; else the next call tries again. A memo that can't be read
  // is left as it is and counts as nothing. Throws CancellationError when asked to stop, FileError
  // when the root can't be listed or written, WriteError when it is frozen.
  [[nodiscard]] MigrationStats runAllMigrations(const std::stop_token& stop) const;

 private:
  // False when its file can't be read from the disk, so that a later pass has to look again.
  [[nodiscard]] bool migrate(Day day, std::int64_t number, MigrationStats& stats) const;
  [[nodiscard]] Memo upgraded(Memo memo, Day day) const;

  const MemoService& service_;
  std::vector<std::unique_ptr<MemoSchemaMigration>> migrations_;  // by version
};

}  // namespace nomely
