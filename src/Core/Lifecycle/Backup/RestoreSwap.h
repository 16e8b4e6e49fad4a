#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "Core/Lifecycle/Backup/RestoreResult.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

// Puts a finished folder in the root's place, in the gate (DataWriteCoordinator::replaceRoot). What
// is in no archive comes over: `.backups`, and what engines (EngineNames) have put into the root. A
// kill at any moment leaves the old root or the new one under its name; where folders can't change
// places in one step, maybe neither, and the old one as `rescue`.
class RestoreSwap {
 public:
  struct Places {
    std::filesystem::path staging;  // becomes the root
    // Gets what the root held, less what it keeps; free before.
    std::filesystem::path rescue;
  };
  RestoreSwap(const StoreContext& context, Places places, bool canExchange,
              std::function<void(RestoreStep)> beforeStep);

  // Returns whether there was a root. On failure the root is as it was, or the gate is frozen.
  // Throws BackupError (restoreFailed), which tells which of the two.
  bool perform();

  // Moves those from the newest rescue folder to the root where a restore was ended before it came
  // to that. In the gate. Throws FileError.
  static void finishInterrupted(const StoreContext& context);

 private:
  enum class Owner { nobody, former, restored };

  void swap();
  void exchange();
  void replace();
  void keep();
  void giveBack();
  void takeBack();
  void before(RestoreStep step) const;
  [[nodiscard]] Owner ownerOf(const std::filesystem::path& folder) const;
  void move(const std::filesystem::path& from, const std::filesystem::path& to) const;
  void sync(const std::filesystem::path& folder) const;

  const FileManager& files_;
  DataWriteCoordinator& gate_;
  std::filesystem::path root_;
  Places places_;
  bool canExchange_;
  std::function<void(RestoreStep)> beforeStep_;
  std::optional<std::uint64_t> former_;  // file numbers of the two folders, wherever they lie
  std::optional<std::uint64_t> restored_;
};

}  // namespace nomely
