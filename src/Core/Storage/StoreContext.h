#pragma once

#include <filesystem>
#include <utility>

#include "Core/Storage/DataWriteCoordinator.h"
#include "Core/Storage/DiskPaths.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Time/Clock.h"

namespace nomely {

// What every store is built from. Cheap to copy; the clock and the file system must outlive the
// stores.
struct StoreContext {
  StoreContext(DiskPaths at, const FileManager& through, const Clock& by)
      : paths(std::move(at)),
        files(through),
        clock(by),
        gate(DataWriteCoordinator::shared(paths.rootURL)) {}

  // Runs `body` in the root's gate: see DataWriteCoordinator::write.
  template <typename Body>
  decltype(auto) write(Body&& body) const {
    return gate.write(files, std::forward<Body>(body));
  }
  // Inside a write: see DataWriteCoordinator::prepareFolder.
  void prepareFolder(const std::filesystem::path& folder) const {
    gate.prepareFolder(folder, files);
  }

  DiskPaths paths;
  FileManager files;
  const Clock& clock;
  DataWriteCoordinator& gate;
};

}  // namespace nomely
