#pragma once

#include <QObject>
#include <QQmlParserStatus>
#include <QSizeF>
#include <QString>
#include <QUrl>
#include <memory>

#include <QtQml/qqmlregistration.h>

namespace nomely {

class DiagramDrawing;

// A diagram that a card shows: from its source to where its picture is. Main thread.
class Diagram : public QObject, public QQmlParserStatus {
  Q_OBJECT
  QML_ELEMENT
  Q_INTERFACES(QQmlParserStatus)
  Q_PROPERTY(QString code READ code WRITE setCode NOTIFY wishChanged)
  Q_PROPERTY(bool dark READ isDark WRITE setDark NOTIFY wishChanged)
  Q_PROPERTY(double pixelRatio READ pixelRatio WRITE setPixelRatio NOTIFY wishChanged)
  Q_PROPERTY(Status status READ status NOTIFY drawn)
  Q_PROPERTY(QUrl picture READ picture NOTIFY drawn)
  Q_PROPERTY(QSizeF size READ size NOTIFY drawn)
  Q_PROPERTY(QString message READ message NOTIFY drawn)

 public:
  enum Status { Waiting, Drawn, Failed, Missing };
  Q_ENUM(Status)

  explicit Diagram(QObject* parent = nullptr);
  ~Diagram() override;

  [[nodiscard]] QString code() const { return code_; }
  void setCode(const QString& code);
  [[nodiscard]] bool isDark() const { return isDark_; }
  void setDark(bool isDark);
  // Pixels a point of the screen.
  [[nodiscard]] double pixelRatio() const { return pixelRatio_; }
  void setPixelRatio(double ratio);

  [[nodiscard]] Status status() const;
  // Empty while there is none. Stays while another look of the same source is drawn.
  [[nodiscard]] QUrl picture() const;
  // In points; while there is no picture its width is 0 and its height what the source took last.
  [[nodiscard]] QSizeF size() const;
  // Why there is no picture and will be none.
  [[nodiscard]] QString message() const;

  void classBegin() override {}
  void componentComplete() override;

 signals:
  void wishChanged();
  void drawn();

 private:
  void draw();
  void show();

  QString code_;
  bool isDark_ = false;
  double pixelRatio_ = 1;
  bool isComplete_ = false;
  double knownHeight_ = 0;
  std::shared_ptr<DiagramDrawing> wanted_;
  std::shared_ptr<DiagramDrawing> shown_;  // what was finished last for this source
};

}  // namespace nomely
