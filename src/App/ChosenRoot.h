#pragma once

#include <filesystem>
#include <string_view>

#include "Platform/Files/FileManager.h"
#include "Platform/System/Environment.h"

namespace nomely {

// Which data root a start works on: one rule for all faces, so that none of them shows another
// diary than the others.
namespace ChosenRoot {

// The one that the start names (`--root`; empty: none), else NOMELY_ROOT, else the one that the
// user has settled on, else the usual one. Absolute, and not looked at. Never throws.
[[nodiscard]] std::filesystem::path of(std::string_view named, const Environment& environment,
                                       const FileManager& files);
// Settles on a folder for all later starts. Throws FileError.
void settleOn(const std::filesystem::path& root, const Environment& environment,
              const FileManager& files);
// What makes later starts work on another root than the one settled on; empty when nothing does.
[[nodiscard]] std::string overruledBy(const Environment& environment);

// The root for a user who points at `folder`: that itself when it is a root, empty, or not there,
// else a folder in it, so that notes don't lie among other files. Throws FileError.
[[nodiscard]] std::filesystem::path within(const std::filesystem::path& folder,
                                           const FileManager& files);

}  // namespace ChosenRoot

}  // namespace nomely
