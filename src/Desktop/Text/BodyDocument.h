#pragma once

#include <QTextBlockFormat>

#include "Desktop/Text/SegmentDocument.h"

namespace nomely {

// The text of a run, of a callout's body or of code. Each block of the segment is one of the
// document; an edit changes no other block than its own.
class BodyDocument : public nomely::SegmentDocument {
  Q_OBJECT
  QML_ELEMENT
  // Whether a line is so long that it has to be broken: one item can't lay it out at its width.
  Q_PROPERTY(bool hasLongLine READ hasLongLine NOTIFY filled)

 public:
  explicit BodyDocument(QObject* parent = nullptr) : SegmentDocument(parent) {}

  [[nodiscard]] bool hasLongLine() const { return hasLongLine_; }
  // Copies the code of the segment.
  Q_INVOKABLE void copyCode() const;

 protected:
  void fill(QTextDocument& document) override;
  void restyle(QTextDocument& document) override;
  [[nodiscard]] std::vector<BodyMarks::Mark> placedMarks(QTextDocument& document) const override;

 private:
  void setFormats(QTextDocument& document) const;

  bool hasLongLine_ = false;
  std::vector<QTextBlockFormat> formats_;  // of each block shown, but for the margin above
  std::shared_ptr<const MarkdownBlocks> shown_ = std::make_shared<const MarkdownBlocks>();
};

}  // namespace nomely
