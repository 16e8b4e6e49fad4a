#pragma once

#include "Desktop/Text/SegmentDocument.h"

namespace nomely {

// A table in one document, so that a drag selects across its cells. Its rows are marks.
class TableDocument : public nomely::SegmentDocument {
  Q_OBJECT
  QML_ELEMENT
  // Of the place for the table; pixels.
  Q_PROPERTY(qreal containerWidth MEMBER containerWidth_ WRITE setContainerWidth NOTIFY laidOut)
  // Of the table, which may be more.
  Q_PROPERTY(qreal tableWidth READ tableWidth NOTIFY laidOut)
  // Columns that are not shown, as nobody could look through so many.
  Q_PROPERTY(int hiddenColumns READ hiddenColumns NOTIFY filled)

 public:
  explicit TableDocument(QObject* parent = nullptr) : SegmentDocument(parent) {}

  void setContainerWidth(qreal width);
  [[nodiscard]] qreal tableWidth() const { return tableWidth_; }
  [[nodiscard]] int hiddenColumns() const { return hiddenColumns_; }

 signals:
  void laidOut();

 protected:
  void fill(QTextDocument& document) override;
  void restyle(QTextDocument& document) override;
  [[nodiscard]] std::vector<BodyMarks::Mark> placedMarks(QTextDocument& document) const override;

 private:
  void layOut(QTextDocument& document);
  [[nodiscard]] const MarkdownTable* shownTable() const;

  qreal containerWidth_ = 0;
  qreal tableWidth_ = 0;
  int hiddenColumns_ = 0;
};

}  // namespace nomely
