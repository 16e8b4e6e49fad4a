#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Core/Markdown/Clipboard/Pasteboard.h"

namespace nomely {

// Rich clipboard content as Markdown that reads well as a note. HTML goes through a fixed row of
// replacements, not a parser: what is on a clipboard is fragments of any quality. Each step takes
// time linear in the text. Pure; safe on any thread.
namespace ClipboardMarkdownImporter {

// Absent when nothing is left to be pasted.
[[nodiscard]] std::optional<std::string> markdown(const Pasteboard& pasteboard);
[[nodiscard]] std::optional<std::string> markdown(std::string_view fromHTML);

}  // namespace ClipboardMarkdownImporter

// What pasting into a text view of memos does.
struct PasteDecision {
  enum class Action {
    takeImages,     // hand the clipboard's images on, and nothing else
    insertText,     // put `text` in place of the selection
    ordinaryPaste,  // what the text view does by itself
  };

  Action action = Action::ordinaryPaste;
  std::string text;

  friend bool operator==(const PasteDecision&, const PasteDecision&) = default;
};
[[nodiscard]] PasteDecision decidePaste(const Pasteboard& pasteboard);

}  // namespace nomely
