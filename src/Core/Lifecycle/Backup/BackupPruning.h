#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// Which archives are kept. Goes by names alone, so that a copied or touched file stays in its
// place. Pure.
namespace BackupPruning {

// Whether the program made the archive by itself: "nomely-auto-2026-03-05_093000-<UUID>.zip".
[[nodiscard]] bool isAutomatic(std::string_view name);

// Of the automatic ones among `names` those to be removed: not the `most` greatest, not the
// greatest of each of the last three days that have one, and none of `kept`.
[[nodiscard]] std::vector<std::string> superfluous(std::vector<std::string> names, std::size_t most,
                                                   const std::vector<std::string>& kept);

}  // namespace BackupPruning

}  // namespace nomely
