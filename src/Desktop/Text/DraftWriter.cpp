#include "Desktop/Text/DraftWriter.h"

#include <chrono>
#include <utility>

namespace nomely {

DraftWriter::DraftWriter(std::function<Write()> snapshot) : snapshot_(std::move(snapshot)) {
  constexpr std::chrono::milliseconds delay{200};
  timer_.setSingleShot(true);
  timer_.setInterval(delay);
  constexpr std::chrono::seconds patience{1};
  again_.setSingleShot(true);
  again_.setInterval(patience);
  QObject::connect(&again_, &QTimer::timeout, &again_, [this] { changed(); });
  QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { take(); });
}

// A change while the timer runs doesn't put it off: who types without a pause is safe as well.
void DraftWriter::changed() {
  if (!timer_.isActive()) timer_.start();
}

void DraftWriter::take() {
  {
    const std::lock_guard lock(mutex_);
    newest_ = snapshot_();
  }
  queue_.async([this] { writeNewest(); });
}

void DraftWriter::writeNewest() {
  std::optional<Write> write;
  {
    const std::lock_guard lock(mutex_);
    write = std::exchange(newest_, std::nullopt);
  }
  if (write) run(*write);
}

void DraftWriter::run(const Write& write) {
  if (write()) return;
  QMetaObject::invokeMethod(
      &again_, [this] { again_.start(); }, Qt::QueuedConnection);
}

void DraftWriter::push() {
  std::optional<Write> waiting;
  {
    const std::lock_guard lock(mutex_);
    waiting = std::exchange(newest_, std::nullopt);
  }
  if (waiting) queue_.async([this, write = *std::move(waiting)] { run(write); });
  if (!timer_.isActive()) return;
  timer_.stop();
  queue_.async([this, write = snapshot_()] { run(write); });
}

void DraftWriter::flush() {
  push();
  queue_.sync([] {});
}

}  // namespace nomely
