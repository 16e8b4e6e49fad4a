#pragma once

#include <cstddef>
#include <functional>
#include <stop_token>
#include <vector>

#include "Core/Lifecycle/Settling/RootSettling.h"
#include "Core/Service/MemoService.h"
#include "Platform/Settings/UserDefaults.h"

namespace nomely {

// The one pass that touches stored data at every start of the program that stays: takes away what
// writers that died have left, settles what sync engines have left, brings in the oldest layout,
// cleans old colour markup, upgrades headers, and makes memos of recordings that lost theirs. Each
// step is idempotent, so a pass that was cut off is simply run again; one that finds nothing to do
// is cheap. For a background thread.
class StartupMaintenance {
 public:
  struct Result {
    bool changed = false;  // whether memos did
    std::size_t restoredAudio = 0;
    SettlingResult settled;  // of what another machine wrote
  };
  // What is done by rooms above this one.
  struct Helpers {
    // Backs the root up, or throws. Absent: what needs a backup first waits for a pass that can.
    std::function<void(const std::stop_token&)> backup = {};
    // See RootSettling.
    MemoCensus census = {};
    // Makes memos of recordings that nobody writes and returns how many. Throws FileError,
    // WriteError, CancellationError.
    std::function<std::size_t(const std::stop_token&)> rescueRecordings = {};
  };

  // `service` and `defaults` must outlive it.
  StartupMaintenance(const MemoService& service, UserDefaults& defaults, Helpers helpers)
      : service_(service),
        context_(service.context()),
        defaults_(defaults),
        helpers_(std::move(helpers)) {}

  // What fails is logged, and the pass goes on; a root that can't be written ends it with one line
  // in the log. Throws CancellationError between two steps when asked to stop, FileError when the
  // root can't be listed, WriteError when it is frozen.
  [[nodiscard]] Result run(const std::stop_token& stop) const;

 private:
  // What listing the whole root shows.
  struct Listed {
    std::vector<Day> daysWithAudio;                // ascending
    std::vector<std::filesystem::path> histories;  // for RootSettling::run
  };
  // Takes away leftovers of writers that died.
  [[nodiscard]] Listed sweep(const std::stop_token& stop) const;
  void runSteps(Result& result, const std::stop_token& stop) const;
  void settle(const Listed& listed, Result& result, const std::stop_token& stop) const;
  void migrateLegacyData(Result& result, const std::stop_token& stop) const;
  void cleanColorSpans(Result& result, const std::stop_token& stop) const;
  void migrateSchema(Result& result, const std::stop_token& stop) const;
  void restoreOrphanedAudio(const std::vector<Day>& days, Result& result,
                            const std::stop_token& stop) const;
  void rescueRecordings(Result& result, const std::stop_token& stop) const;
  void removeRetiredKeys() const;

  const MemoService& service_;
  const StoreContext& context_;
  UserDefaults& defaults_;
  Helpers helpers_;
};

}  // namespace nomely
