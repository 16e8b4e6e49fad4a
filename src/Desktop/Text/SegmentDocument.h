#pragma once

#include <QObject>
#include <QPointer>
#include <QQmlParserStatus>
#include <QQuickTextDocument>
#include <QString>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Text/BodyLook.h"
#include "Desktop/Text/BodyMarks.h"
#include "Desktop/Text/BodySegment.h"

class QTextDocument;

namespace nomely {

// Fills the document of a TextEdit with a segment of a body, and says where marks beside it belong.
// What is selected stays so while colours, sizes or hits change. Main thread.
class SegmentDocument : public QObject, public QQmlParserStatus {
  Q_OBJECT
  QML_ANONYMOUS
  Q_INTERFACES(QQmlParserStatus)
  Q_PROPERTY(QQuickTextDocument* document READ document WRITE setDocument NOTIFY inputChanged)
  Q_PROPERTY(nomely::BodySegment segment READ segment WRITE setSegment NOTIFY inputChanged)
  Q_PROPERTY(nomely::BodyLook* look READ look WRITE setLook NOTIFY inputChanged)
  Q_PROPERTY(QString keyword READ keyword WRITE setKeyword NOTIFY inputChanged)
  Q_PROPERTY(nomely::BodyMarks* marks READ marks CONSTANT)
  Q_PROPERTY(QString plainText READ plainText NOTIFY filled)

 public:
  [[nodiscard]] QQuickTextDocument* document() const { return quickDocument_; }
  void setDocument(QQuickTextDocument* document);
  [[nodiscard]] const BodySegment& segment() const { return segment_; }
  void setSegment(const BodySegment& segment);
  [[nodiscard]] BodyLook* look() const { return look_; }
  void setLook(BodyLook* look);
  [[nodiscard]] const QString& keyword() const { return keyword_; }
  void setKeyword(const QString& keyword);
  [[nodiscard]] BodyMarks* marks() { return &marks_; }
  [[nodiscard]] QString plainText() const;

  void classBegin() override {}
  void componentComplete() override;

 signals:
  void inputChanged();
  void filled();

 protected:
  using QObject::QObject;

  // Makes the document hold segment(); it holds what the last call left there, or nothing.
  virtual void fill(QTextDocument& document) = 0;
  // Gives what fill() left there the looks of now. The text stays.
  virtual void restyle(QTextDocument& document) = 0;
  [[nodiscard]] virtual std::vector<BodyMarks::Mark> placedMarks(QTextDocument& document) const = 0;

  [[nodiscard]] bool isReady() const { return isComplete_ && look_ && textDocument_; }

 private:
  void refill();
  void restyleLater();
  void restyleNow();
  void placeMarks();

  QPointer<QQuickTextDocument> quickDocument_;
  QPointer<QTextDocument> textDocument_;
  QPointer<BodyLook> look_;
  BodySegment segment_;
  QString keyword_;
  BodyMarks marks_;
  bool isComplete_ = false;
  bool isRestyleDue_ = false;
};

}  // namespace nomely
