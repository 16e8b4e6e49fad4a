#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Files/FileManager.h"

namespace nomely {

// What a root held before a restore lies beside it, in ".nomely-rescue-<UUID>", until the user
// removes it. `root` is a path without symbolic links. Stateless; any thread.
class RescueFolders {
 public:
  static constexpr std::string_view prefix = ".nomely-rescue-";

  // Those that are `root`'s or don't tell whose they are, the newest first. None where nothing can
  // be listed. Throws FileError.
  [[nodiscard]] static std::vector<std::filesystem::path> of(const std::filesystem::path& root,
                                                             const FileManager& files);
  // Throws Error (root.rescue), which tells the way back, when there is one. For a missing root: an
  // empty one made in its place would hide that the notes lie next door.
  static void throwIfAny(const std::filesystem::path& root, const FileManager& files);
  // The shell's command that puts `rescue` in the place of a missing `root`.
  [[nodiscard]] static std::string wayBack(const std::filesystem::path& rescue,
                                           const std::filesystem::path& root);
  // Notes in `rescue` whose it is, so that it keeps no other root beside it from being made. Never
  // throws: without the note it counts as anybody's.
  static void mark(const std::filesystem::path& rescue, const std::filesystem::path& root,
                   const FileManager& files) noexcept;
};

}  // namespace nomely
