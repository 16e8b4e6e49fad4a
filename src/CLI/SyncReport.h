#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "CLI/ReportLines.h"
#include "CLI/Session.h"
#include "Core/Lifecycle/Settling/SettlingResult.h"
#include "Core/Storage/SyncedFolder.h"

namespace nomely {

// By what a root is synchronised, whether that has been told all it has to know, and what it has
// left to be settled.
struct SyncReport {
  std::vector<SyncedFolder::Place> places;
  std::vector<SyncedFolder::Gap> gaps;
  std::vector<std::string> remedies;  // the command for each of these
  std::vector<Stray> strays;

  // Of a root in a synchronised folder reads every memo.
  [[nodiscard]] static SyncReport of(Session& session);
  // How a command line calls an engine.
  [[nodiscard]] static std::string codeOf(SyncedFolder::Engine engine);
  // How a person does.
  [[nodiscard]] static std::string nameOf(SyncedFolder::Engine engine);

  // Whether there is nothing to be done.
  [[nodiscard]] bool isFine() const { return gaps.empty() && strays.empty(); }
  // That the next pass settles.
  [[nodiscard]] std::size_t settled() const;
  [[nodiscard]] Json json() const;
  void addGaps(ReportLines& lines) const;
  void addStrays(ReportLines& lines) const;
};

}  // namespace nomely
