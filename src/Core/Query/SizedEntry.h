#pragma once

#include <cstdint>

#include "Core/Query/MemoEntry.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

// A memo of a list that is sorted by the size of its recordings.
struct SizedEntry {
  std::uint64_t bytes = 0;
  MemoEntry entry;
};

// The total size of its audio files. One whose size can't be read counts as 0 bytes.
[[nodiscard]] std::uint64_t audioBytes(const MemoEntry& entry, const StoreContext& context);

// Whether `left` comes before `right`: the larger first, then in the order of lists.
[[nodiscard]] bool isLarger(const SizedEntry& left, const SizedEntry& right);

}  // namespace nomely
