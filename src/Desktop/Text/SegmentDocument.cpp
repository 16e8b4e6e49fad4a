#include "Desktop/Text/SegmentDocument.h"

#include <QAbstractTextDocumentLayout>
#include <QTextDocument>

namespace nomely {

void SegmentDocument::setDocument(QQuickTextDocument* document) {
  if (document == quickDocument_) return;
  quickDocument_ = document;
  textDocument_ = document != nullptr ? document->textDocument() : nullptr;
  if (textDocument_) {
    textDocument_->setUndoRedoEnabled(false);
    connect(textDocument_->documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged,
            this, &SegmentDocument::placeMarks);
  }
  refill();
  emit inputChanged();
}

void SegmentDocument::setSegment(const BodySegment& segment) {
  if (segment_ == segment) return;
  segment_ = segment;
  refill();
  emit inputChanged();
}

void SegmentDocument::setLook(BodyLook* look) {
  if (look == look_) return;
  if (look_) look_->disconnect(this);
  look_ = look;
  if (look != nullptr) connect(look, &BodyLook::changed, this, &SegmentDocument::restyleLater);
  refill();
  emit inputChanged();
}

void SegmentDocument::setKeyword(const QString& keyword) {
  if (keyword == keyword_) return;
  keyword_ = keyword;
  restyleNow();
  emit inputChanged();
}

QString SegmentDocument::plainText() const {
  return textDocument_ ? textDocument_->toPlainText() : QString();
}

void SegmentDocument::componentComplete() {
  isComplete_ = true;
  refill();
}

void SegmentDocument::refill() {
  if (!isReady()) return;
  fill(*textDocument_);
  placeMarks();
  emit filled();
}

// A change of theme changes one property after the other.
void SegmentDocument::restyleLater() {
  if (isRestyleDue_) return;
  isRestyleDue_ = true;
  QMetaObject::invokeMethod(this, &SegmentDocument::restyleNow, Qt::QueuedConnection);
}

void SegmentDocument::restyleNow() {
  isRestyleDue_ = false;
  if (!isReady()) return;
  restyle(*textDocument_);
  placeMarks();
}

void SegmentDocument::placeMarks() {
  if (isReady()) marks_.show(placedMarks(*textDocument_));
}

}  // namespace nomely
