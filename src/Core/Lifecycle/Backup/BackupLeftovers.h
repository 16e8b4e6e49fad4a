#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "Core/Storage/StoreContext.h"

namespace nomely {

// What backups and restores have left on the disk beside a root and in its `.backups`. Only looks.
struct BackupLeftovers {
  struct Item {
    std::filesystem::path path;
    std::uint64_t bytes = 0;  // of all files in it
    Moment modified;
  };
  struct Rescue : Item {
    std::string wayBack;        // the shell's command, for when the root is not there
    bool holdsBackups = false;  // the restore was ended before these came over: see
                                // RestoreSwap::finishInterrupted
  };

  // Former roots, the newest first: the user's, to be kept as long as they like.
  std::vector<Rescue> rescues;
  // Work that was cut off more than a day ago, by name: serves nobody.
  std::vector<Item> abandoned;

  // What can't be read counts as empty. Throws FileError when the folders can't be listed.
  [[nodiscard]] static BackupLeftovers find(const StoreContext& context);
};

}  // namespace nomely
