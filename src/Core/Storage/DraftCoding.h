#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Core/Storage/Drafts.h"

namespace nomely {

// Drafts as the bytes of their files: JSON with the fields' names as keys, moments in UTC, a day as
// its local noon, which is the same day also when the clocks changed meanwhile. Decoding gives
// nothing for what is no draft. Pure.
namespace DraftCoding {

[[nodiscard]] std::string encoded(const QuickInputDraft& draft);
[[nodiscard]] std::string encoded(const FocusMemoDraft& draft);

[[nodiscard]] std::optional<QuickInputDraft> quickInput(std::string_view bytes);
[[nodiscard]] std::optional<FocusMemoDraft> focus(std::string_view bytes);

}  // namespace DraftCoding

}  // namespace nomely
