#pragma once

#include <cstddef>
#include <stop_token>

#include "Core/Storage/StoreContext.h"

namespace nomely {

// How deep data lies below the root: days one folder, snapshots with their attachments four.
inline constexpr int deepestDataFolder = 4;

// Removes the temporary files that writers which died left anywhere under the root, one folder a
// write of the gate, and returns how many went. Folders that can't be listed are logged and passed
// over. Takes time with the size of the root. Throws CancellationError when asked to stop,
// WriteError when frozen.
std::size_t sweepTemporaryFiles(const StoreContext& context, const std::stop_token& stop);

}  // namespace nomely
