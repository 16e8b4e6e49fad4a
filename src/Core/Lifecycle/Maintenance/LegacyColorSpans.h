#pragma once

#include <cstddef>
#include <stop_token>
#include <string>
#include <string_view>

#include "Core/Service/MemoService.h"

namespace nomely {

// The colour markup that an old program wrote by itself into every note. Today the same markup is
// what a person chose, so it is only taken away on roots that this program didn't make.
namespace LegacyColorSpans {

// `body` without colour spans, nested ones included; what they enclose stays:
// `a <span style="color: #FF0000">b</span>` → `a b`.
[[nodiscard]] std::string unwrapped(std::string_view body);

// Unwraps them in all memos and returns in how many. The older text is kept in the history;
// `updatedAt` stays. What can't be read or written is logged and passed over. Throws
// CancellationError when asked to stop, FileError when the root can't be listed or written,
// WriteError when it is frozen.
std::size_t clean(const MemoService& service, const std::stop_token& stop);

}  // namespace LegacyColorSpans

}  // namespace nomely
