#pragma once

#include <filesystem>

#include "Core/Lifecycle/Backup/BackupArchive.h"

namespace nomely {

// A step of putting restored data in the place of the root's.
enum class RestoreStep { saveOriginal, installRestored, preserveBackups };

// Of the root as it is before that.
enum class SafetyCopy { make, skip };

struct RestoreResult {
  std::filesystem::path rescue;      // where the former root lies; empty: there was none
  std::filesystem::path safetyCopy;  // the archive of it; empty: none was made
  BackupArchive::Contents contents;
};

}  // namespace nomely
