#pragma once

#include "Core/Storage/Drafts.h"

namespace nomely {

// One draft that holds what either of two holds which stand for the same place and don't know of
// each other. `standing`'s text comes first; a text that the other one contains isn't repeated.
// Pure.
namespace DraftMerging {

[[nodiscard]] QuickInputDraft merged(QuickInputDraft standing, const QuickInputDraft& other);
[[nodiscard]] FocusMemoDraft merged(FocusMemoDraft standing, const FocusMemoDraft& other);

}  // namespace DraftMerging

}  // namespace nomely
