#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <stop_token>
#include <vector>

#include "Core/Storage/StoreContext.h"

namespace nomely {

// How deep data lies below the root: days one folder, snapshots with their attachments four.
inline constexpr int deepestDataFolder = 4;

// Removes the temporary files that writers which died left anywhere under the root, one folder a
// write of the gate, and returns how many went. Folders of engines (EngineNames) are left alone,
// and those that can't be listed are logged and passed over. `visit` is called with each folder
// that was listed, for who would list them all, too. Takes time with the size of the root. Throws
// CancellationError when asked to stop, WriteError when frozen.
using FolderVisitor = std::function<void(const std::filesystem::path& folder,
                                         const std::vector<DirectoryEntry>& entries)>;
std::size_t sweepTemporaryFiles(const StoreContext& context, const std::stop_token& stop,
                                const FolderVisitor& visit = {});

}  // namespace nomely
