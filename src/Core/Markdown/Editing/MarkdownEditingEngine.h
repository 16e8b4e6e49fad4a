#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Core/Markdown/Editing/MarkdownEditCommand.h"
#include "Core/Markdown/Editing/TextSelection.h"

namespace nomely {

// What an edit leaves: the whole new text and what is selected in it.
struct MarkdownEditResult {
  std::u16string text;
  TextSelection selectedRange;

  friend bool operator==(const MarkdownEditResult&, const MarkdownEditResult&) = default;
};

// How commands and keys change a body that is edited as plain Markdown. Selections are normalized
// first; lines end at line feeds alone. Pure; safe on any thread.
namespace MarkdownEditingEngine {

// Throws std::invalid_argument for a font size that is no 64-bit number.
[[nodiscard]] MarkdownEditResult apply(const MarkdownEditCommand& command, std::u16string_view text,
                                       TextSelection selectedRange);

// Return in a list: after an item with text the next item begins ("- a" → "- a\n- "); an empty item
// is removed, which ends the list ("- a\n- " → "- a\n"). Absent when an ordinary line break is
// wanted.
[[nodiscard]] std::optional<MarkdownEditResult> applyNewline(std::u16string_view text,
                                                             TextSelection selectedRange);

enum class Indentation { indent, outdent };
[[nodiscard]] MarkdownEditResult indentSelection(std::u16string_view text,
                                                 TextSelection selectedRange,
                                                 Indentation indentation);

}  // namespace MarkdownEditingEngine

}  // namespace nomely
