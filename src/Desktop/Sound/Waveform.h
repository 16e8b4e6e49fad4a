#pragma once

#include <QColor>
#include <QPointer>
#include <QQuickPaintedItem>
#include <QString>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Sound/PlayerScreen.h"
#include "Platform/Concurrency/Lifetime.h"

namespace nomely {

// How loud a sound is over its time, in bars, those that were heard in another colour; a line where
// that isn't known.
class Waveform : public QQuickPaintedItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(nomely::PlayerScreen* player READ player WRITE setPlayer NOTIFY playerChanged REQUIRED)
  Q_PROPERTY(QString path READ path WRITE setPath NOTIFY pathChanged REQUIRED)
  Q_PROPERTY(double heard READ heard WRITE setHeard NOTIFY heardChanged)
  Q_PROPERTY(QColor tint READ tint WRITE setTint NOTIFY colorsChanged)
  Q_PROPERTY(QColor rest READ rest WRITE setRest NOTIFY colorsChanged)
  Q_PROPERTY(double seconds READ seconds NOTIFY secondsChanged)

 public:
  explicit Waveform(QQuickItem* parent = nullptr);

  [[nodiscard]] PlayerScreen* player() const { return player_; }
  void setPlayer(PlayerScreen* player);
  [[nodiscard]] QString path() const { return path_; }
  void setPath(const QString& path);
  // Of the sound, 0 to 1.
  [[nodiscard]] double heard() const { return heard_; }
  void setHeard(double heard);
  [[nodiscard]] QColor tint() const { return tint_; }
  void setTint(const QColor& tint);
  [[nodiscard]] QColor rest() const { return rest_; }
  void setRest(const QColor& rest);
  // The sound's duration; 0 until it is known.
  [[nodiscard]] double seconds() const { return seconds_; }

  void paint(QPainter* painter) override;

 signals:
  void playerChanged();
  void pathChanged();
  void heardChanged();
  void colorsChanged();
  void secondsChanged();

 private:
  void ask();
  [[nodiscard]] double peakOf(int bar, int bars) const;

  QPointer<PlayerScreen> player_;
  QString path_;
  double heard_ = 0;
  QColor tint_;
  QColor rest_;
  double seconds_ = 0;
  std::vector<double> peaks_;
  Lifetime lifetime_;
};

}  // namespace nomely
