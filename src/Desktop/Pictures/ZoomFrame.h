#pragma once

#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <QtQml/qqmlregistration.h>

namespace nomely {

// Where a picture lies in a view that can be brought closer and moved about.
class ZoomFrame : public QObject {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QSizeF view READ view WRITE setView NOTIFY frameChanged)
  Q_PROPERTY(QSizeF picture READ picture WRITE setPicture NOTIFY frameChanged)
  Q_PROPERTY(QRectF frame READ frame NOTIFY frameChanged)
  Q_PROPERTY(double zoom READ zoom NOTIFY frameChanged)

 public:
  static constexpr double largest = 8;

  [[nodiscard]] QSizeF view() const { return view_; }
  void setView(const QSizeF& view);
  // As it lies wholly in the view. Another one begins anew.
  [[nodiscard]] QSizeF picture() const { return picture_; }
  void setPicture(const QSizeF& picture);
  // In the view. A side that the view holds lies in its middle, of another no edge comes inside.
  [[nodiscard]] QRectF frame() const { return frame_; }
  // 1: wholly in the view.
  [[nodiscard]] double zoom() const { return zoom_; }

  // What lies at `place` stays there.
  Q_INVOKABLE void zoomBy(double factor, const QPointF& place);
  // Around the middle of the view.
  Q_INVOKABLE void zoomBy(double factor);
  Q_INVOKABLE void moveBy(double right, double down);
  Q_INVOKABLE void fit();

 signals:
  void frameChanged();

 private:
  void place(QRectF frame);

  QSizeF view_;
  QSizeF picture_;
  QRectF frame_;
  double zoom_ = 1;
};

}  // namespace nomely
