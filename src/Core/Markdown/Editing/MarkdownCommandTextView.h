#pragma once

#include <string>
#include <string_view>

#include "Core/Markdown/Editing/MarkdownEditingEngine.h"

namespace nomely {

// What this system needs of a toolkit's text view with several lines.
class EditableTextView {
 public:
  virtual ~EditableTextView() = default;

  [[nodiscard]] virtual std::u16string text() const = 0;
  [[nodiscard]] virtual TextSelection selectedRange() const = 0;
  virtual void setSelectedRange(TextSelection selection) = 0;
  // Whether the view lets `range` be replaced now.
  [[nodiscard]] virtual bool shouldChangeText(TextRange range, std::u16string_view replacement) = 0;
  virtual void replaceText(TextRange range, std::u16string_view replacement) = 0;
  // Tells those who watch the view that a change is finished.
  virtual void didChangeText() = 0;
  // Ends the undo step: later changes are undone separately from earlier ones.
  virtual void endUndoGroup() = 0;
};

struct KeyPress {
  bool primary = false;  // the platform's key for commands
  bool option = false;
  bool otherModifier = false;  // any further one that is held
  std::u16string characters;   // what the key gives without modifiers
};

// The layer between a text view and the editing engine: routes keys and commands to the engine and
// its results back, each as one undo step. On the view's thread; the view has to outlive it.
class MarkdownCommandTextView {
 public:
  explicit MarkdownCommandTextView(EditableTextView& view) : view_(view) {}

  // Whether handleKey takes that key.
  [[nodiscard]] static bool takes(const KeyPress& key);
  // To be called with each key press before the view handles it. False: the view has to handle it.
  [[nodiscard]] bool handleKey(const KeyPress& key);
  // Return. False: the view inserts its own line break.
  [[nodiscard]] bool insertNewline();
  void insertTab();
  void insertBacktab();

  void apply(const MarkdownEditCommand& command);
  void apply(const MarkdownEditResult& result);

  // Replaces the selection by `snippet` and puts the caret after it.
  void insertSnippet(std::u16string_view snippet);

 private:
  void indent(MarkdownEditingEngine::Indentation indentation);

  EditableTextView& view_;
};

}  // namespace nomely
