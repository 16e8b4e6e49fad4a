#pragma once

#include <QString>
#include <string>
#include <string_view>

#include "Core/Markdown/Editing/MarkdownCommandTextView.h"

class QQuickItem;
class QTextDocument;

namespace nomely {

// A TextArea of plain text as the editing engine sees it. Each replacement is one undo step of its
// own, and changes no more of the document than differs. Main thread; the item has to outlive it.
class QuickTextView final : public EditableTextView {
 public:
  explicit QuickTextView(QQuickItem& area);

  [[nodiscard]] QTextDocument& document() const { return *document_; }
  // The text as it will be stored: lines end at line feeds, and every other character is as it was
  // typed.
  [[nodiscard]] QString content() const;
  // Puts `text` in place of everything, in lines as high as the area's `lineHeight` says, with
  // nothing to undo.
  void reset(const QString& text);

  [[nodiscard]] std::u16string text() const override;
  [[nodiscard]] TextSelection selectedRange() const override;
  void setSelectedRange(TextSelection selection) override;
  [[nodiscard]] bool shouldChangeText(TextRange range, std::u16string_view replacement) override;
  void replaceText(TextRange range, std::u16string_view replacement) override;
  void didChangeText() override {}
  // Every edit is a step of its own already.
  void endUndoGroup() override {}

 private:
  void wrap(bool anywhere);

  QQuickItem& area_;
  QTextDocument* document_;
};

}  // namespace nomely
