#pragma once

#include <optional>
#include <string>
#include <vector>

#include "CLI/ReportLines.h"
#include "CLI/Session.h"
#include "Core/Lifecycle/Backup/BackupLeftovers.h"
#include "Core/Lifecycle/Backup/BackupManager.h"

namespace nomely {

// What `doctor` finds of backups, of what backups and restores have left, and of secrets where they
// don't belong.
struct KeepingReport {
  struct Newest {
    BackupFile file;
    std::string fault;        // why it could not be restored; empty: it could
    std::uint64_t notes = 0;  // that it holds
  };

  bool hasRoot = false;
  Moment now;
  std::optional<Newest> newest;
  std::vector<BackupObstacles::Obstacle> obstacles;
  BackupLeftovers leftovers;
  std::vector<std::string> filesWithSecrets;

  // Reads the newest archive from end to end.
  [[nodiscard]] static KeepingReport of(Session& session);

  // Whether there is nothing to be done.
  [[nodiscard]] bool isFine() const;
  [[nodiscard]] Json json() const;
  void addTo(ReportLines& lines) const;
  // How old the newest backup is.
  void addAge(ReportLines& lines) const;
};

}  // namespace nomely
