#pragma once

#include <QObject>
#include <QString>
#include <memory>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Core/Markdown/Blocks/MarkdownBlock.h"

namespace nomely {

// A part of a body that a card shows as one item: a run of text, or one block of another kind.
// Shared, never changed.
struct BodySegment {
  Q_GADGET
  QML_VALUE_TYPE(bodySegment)
  Q_PROPERTY(QString code READ code)
  Q_PROPERTY(QString language READ language)
  Q_PROPERTY(QString title READ title)
  Q_PROPERTY(QString calloutKind READ calloutKind)

 public:
  enum Kind { Run, Code, Callout, Table, Diagram, Rule };

  Kind kind = Run;
  std::shared_ptr<const MarkdownBlocks> blocks;  // of a run one or more, else one
  bool standsClose = false;                      // to the segment above

  // Empty where the segment has none.
  [[nodiscard]] QString code() const;         // of code and of a diagram
  [[nodiscard]] QString language() const;     // as written
  [[nodiscard]] QString title() const;        // of a callout; empty where it goes on after a cut
  [[nodiscard]] QString calloutKind() const;  // "note", "tip", ...

  // Whether a view that shows the other has nothing to do.
  [[nodiscard]] bool isSameAs(const BodySegment& other) const;

  // The very same blocks.
  friend bool operator==(const BodySegment&, const BodySegment&) = default;
};

// The segments of a body. Blocks too long to be laid out in one piece are cut: text goes on as more
// text, and a table as another with the same headers. Linear in the blocks. Pure.
[[nodiscard]] std::vector<BodySegment> bodySegments(const MarkdownBlocks& blocks);

// The longest beginning of `text` of at most `most` bytes that ends with a line, else with a word,
// else with a character.
[[nodiscard]] std::size_t fittingLength(std::string_view text, std::size_t most);

}  // namespace nomely
