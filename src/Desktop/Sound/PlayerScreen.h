#pragma once

#include <QObject>
#include <QString>
#include <memory>
#include <optional>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Sound/SoundShapes.h"
#include "Platform/Audio/AudioPlayback.h"
#include "Platform/Concurrency/Lifetime.h"

namespace nomely {

// The one player of the window: one file at a time. Main thread.
class PlayerScreen : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(QString path READ path NOTIFY pathChanged)
  Q_PROPERTY(double position READ position NOTIFY positionChanged)
  Q_PROPERTY(bool playing READ isPlaying NOTIFY playingChanged)
  Q_PROPERTY(double speed READ speed NOTIFY speedChanged)
  Q_PROPERTY(QString failure READ failure NOTIFY failureChanged)

 public:
  explicit PlayerScreen(const ScreenContext& context);
  ~PlayerScreen() override;

  // The file that is played or paused, or that ended last; empty for none.
  [[nodiscard]] QString path() const { return path_; }
  // Seconds.
  [[nodiscard]] double position() const { return position_; }
  [[nodiscard]] bool isPlaying() const { return isPlaying_; }
  [[nodiscard]] double speed() const { return speed_; }
  // Why that file can't be played.
  [[nodiscard]] QString failure() const { return failure_; }
  [[nodiscard]] SoundShapes& shapes() { return shapes_; }

  // Plays the file from its beginning, or pauses it and goes on.
  Q_INVOKABLE void toggle(const QString& path);
  // Plays it from there; one that is paused stays so.
  Q_INVOKABLE void seek(const QString& path, double seconds);
  // The next of 1, 1.25, 1.5, 2, 0.75.
  Q_INVOKABLE void changeSpeed();
  Q_INVOKABLE void stop();
  // 107.4 → "1:47".
  Q_INVOKABLE [[nodiscard]] static QString clock(double seconds);

 signals:
  void pathChanged();
  void positionChanged();
  void playingChanged();
  void speedChanged();
  void failureChanged();

 private:
  void play(const QString& path, double from);
  void take(const PlaybackStatus& status);
  void setPosition(double position);
  void setPlaying(bool isPlaying);
  void setFailure(const QString& failure);

  const ScreenContext context_;
  std::unique_ptr<AudioPlayback> playback_ = makeAudioPlayback();
  std::unique_ptr<AudioPlayback::Session> session_;  // none after its end
  unsigned generation_ = 0;                          // of sessions
  QString path_;
  double position_ = 0;
  std::optional<double> sought_;  // where it is to go, until it has
  bool isPlaying_ = false;
  double speed_ = 1;
  QString failure_;
  SoundShapes shapes_;
  Lifetime lifetime_;
};

}  // namespace nomely
