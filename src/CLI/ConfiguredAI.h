#pragma once

#include "AI/Vendor/AIConfig.h"
#include "CLI/Session.h"

namespace nomely {

// The settings of a model, with its key. Where that is missing it says how to give one and throws
// AIError::notConfigured; throws SecretError when it can't be known.
[[nodiscard]] AIConfig configuredAI(Session& session);

}  // namespace nomely
