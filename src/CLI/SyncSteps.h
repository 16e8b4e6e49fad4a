#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Core/Storage/SyncedFolder.h"

namespace nomely {

// What a person who has never done it does to have one diary on two computers. Pure.
namespace SyncSteps {

// In order, a paragraph each; commands stand on lines of their own.
[[nodiscard]] std::vector<std::string> of(SyncedFolder::Engine engine,
                                          const std::filesystem::path& root);

}  // namespace SyncSteps

}  // namespace nomely
