#pragma once

#include <string>
#include <string_view>

#include "Platform/System/Environment.h"

namespace nomely {

// Where a vendor's interface begins that no setting moves: `usual`, or what the environment's
// `variable` says, which may lead to https or to this machine alone. Throws HttpError.
[[nodiscard]] std::string vendorRoot(const Environment& environment, std::string_view variable,
                                     std::string_view usual);

}  // namespace nomely
