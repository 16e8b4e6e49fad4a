#include "Desktop/Sound/PlayerScreen.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "Desktop/Base/Qt.h"

namespace nomely {

PlayerScreen::PlayerScreen(const ScreenContext& context)
    : context_(context), shapes_(context.executor) {}

PlayerScreen::~PlayerScreen() {
  lifetime_.end();
}

void PlayerScreen::toggle(const QString& path) {
  if (path != path_ || !session_) return play(path, 0);
  setPlaying(!isPlaying_);
  session_->setPaused(!isPlaying_);
}

void PlayerScreen::seek(const QString& path, double seconds) {
  seconds = std::max(seconds, 0.0);
  if (path != path_ || !session_) return play(path, seconds);
  sought_ = seconds;
  setPosition(seconds);
  session_->seek(seconds);
}

void PlayerScreen::changeSpeed() {
  static constexpr std::array speeds{1.0, 1.25, 1.5, 2.0, 0.75};
  const auto* const now = std::ranges::find(speeds, speed_);
  speed_ = now == speeds.end() || now + 1 == speeds.end() ? speeds.front() : *(now + 1);
  emit speedChanged();
  if (session_) session_->setSpeed(speed_);
}

void PlayerScreen::stop() {
  ++generation_;
  session_.reset();
  setPlaying(false);
  setPosition(0);
  setFailure({});
  if (!std::exchange(path_, {}).isEmpty()) emit pathChanged();
}

QString PlayerScreen::clock(double seconds) {
  constexpr int minute = 60;
  const int whole = static_cast<int>(seconds);
  const auto twoDigits = [](int number) { return QString::number(number).rightJustified(2, u'0'); };
  const int minutes = whole / minute;
  const QString end = u':' + twoDigits(whole % minute);
  if (minutes < minute) return QString::number(minutes) + end;
  return QString::number(minutes / minute) + u':' + twoDigits(minutes % minute) + end;
}

void PlayerScreen::play(const QString& path, double from) {
  stop();
  path_ = path;
  sought_.reset();
  emit pathChanged();
  setPosition(from);
  setPlaying(true);
  session_ = playback_->start(
      {.file = utf8(path), .from = from, .speed = speed_},
      [&executor = context_.executor,
       taken = lifetime_.guard([this, generation = generation_](const PlaybackStatus& status) {
         if (generation == generation_) take(status);
       })](const PlaybackStatus& status) { executor.post([taken, status] { taken(status); }); });
}

void PlayerScreen::take(const PlaybackStatus& status) {
  if (status.hasEnded) {
    session_.reset();
    setPlaying(false);
    setPosition(0);
    return setFailure(qt(status.failure));
  }
  // What was told before it got there.
  constexpr double exact = 0.01;
  if (sought_ && std::abs(status.position - *sought_) > exact) return;
  sought_.reset();
  setPosition(status.position);
}

void PlayerScreen::setPosition(double position) {
  if (std::exchange(position_, position) != position) emit positionChanged();
}

void PlayerScreen::setPlaying(bool isPlaying) {
  if (std::exchange(isPlaying_, isPlaying) != isPlaying) emit playingChanged();
}

void PlayerScreen::setFailure(const QString& failure) {
  if (std::exchange(failure_, failure) != failure) emit failureChanged();
}

}  // namespace nomely
