#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

#include "Core/Query/MemoEntry.h"

namespace nomely {

// Called with each piece of what is exported, in order.
using ExportSink = std::function<void(std::string_view piece)>;

// The memos that are exported, in the order in which the reader gets them.
struct ExportSelection {
  std::size_t count = 0;
  // Calls `visit` with each of them; `visit` does not keep the entry.
  std::function<void(const std::function<void(const MemoEntry&)>& visit)> forEach;
};

}  // namespace nomely
