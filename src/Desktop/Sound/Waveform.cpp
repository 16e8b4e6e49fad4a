#include "Desktop/Sound/Waveform.h"

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <utility>

#include "Desktop/Sound/SoundShapes.h"

namespace nomely {
namespace {

constexpr int barStep = 5;  // pixels, three of which are the bar
constexpr int barWidth = 3;
constexpr double lowest = 4;

}  // namespace

Waveform::Waveform(QQuickItem* parent) : QQuickPaintedItem(parent) {
  setAntialiasing(true);
}

void Waveform::setPlayer(PlayerScreen* player) {
  if (std::exchange(player_, player) == player) return;
  emit playerChanged();
  ask();
}

void Waveform::setPath(const QString& path) {
  if (std::exchange(path_, path) == path) return;
  emit pathChanged();
  ask();
}

// Only what moves a bar is drawn anew.
void Waveform::setHeard(double heard) {
  const double bars = std::max(width() / barStep, 1.0);
  const bool isSeen = std::floor(heard * bars) != std::floor(heard_ * bars);
  if (std::exchange(heard_, heard) == heard) return;
  emit heardChanged();
  if (isSeen) update();
}

void Waveform::setTint(const QColor& tint) {
  if (std::exchange(tint_, tint) == tint) return;
  emit colorsChanged();
  update();
}

void Waveform::setRest(const QColor& rest) {
  if (std::exchange(rest_, rest) == rest) return;
  emit colorsChanged();
  update();
}

void Waveform::ask() {
  seconds_ = 0;
  peaks_.clear();
  emit secondsChanged();
  update();
  if (!player_ || path_.isEmpty()) return;
  player_->shapes().ask(path_,
                        lifetime_.guard([this, path = path_](const SoundShapes::Shape& shape) {
                          if (path != path_) return;
                          seconds_ = shape.seconds;
                          peaks_ = shape.peaks;
                          emit secondsChanged();
                          update();
                        }));
}

double Waveform::peakOf(int bar, int bars) const {
  if (peaks_.empty()) return 0;
  const auto count = peaks_.size();
  const auto first =
      std::min(static_cast<std::size_t>(bar) * count / static_cast<std::size_t>(bars), count - 1);
  const auto end = std::clamp(
      static_cast<std::size_t>(bar + 1) * count / static_cast<std::size_t>(bars), first + 1, count);
  return *std::max_element(peaks_.begin() + static_cast<std::ptrdiff_t>(first),
                           peaks_.begin() + static_cast<std::ptrdiff_t>(end));
}

void Waveform::paint(QPainter* painter) {
  painter->setPen(Qt::NoPen);
  const double middle = height() / 2;
  if (peaks_.empty()) {
    const QRectF line(0, middle - 1.5, width(), 3);
    painter->setBrush(rest_);
    painter->drawRoundedRect(line, 1.5, 1.5);
    painter->setBrush(tint_);
    painter->drawRoundedRect(QRectF(line.topLeft(), QSizeF(width() * heard_, 3)), 1.5, 1.5);
    return;
  }
  const int bars = std::max(static_cast<int>(width()) / barStep, 1);
  for (int bar = 0; bar < bars; ++bar) {
    // Nearer to loudness as it is felt: one loud word leaves the others to be seen.
    const double size = std::max(lowest, std::pow(peakOf(bar, bars), 0.75) * (height() - 4));
    painter->setBrush(bar < heard_ * bars ? tint_ : rest_);
    painter->drawRoundedRect(QRectF(bar * barStep, middle - size / 2, barWidth, size), 1.5, 1.5);
  }
}

}  // namespace nomely
