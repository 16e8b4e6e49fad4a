#include "Desktop/Pictures/Diagram.h"

#include <QQmlEngine>

#include "Desktop/Pictures/DiagramClient.h"
#include "Desktop/Pictures/DiagramProvider.h"

namespace nomely {

Diagram::Diagram(QObject* parent) : QObject(parent) {}

Diagram::~Diagram() = default;

void Diagram::setCode(const QString& code) {
  if (code_ == code) return;
  code_ = code;
  shown_.reset();
  draw();
  emit wishChanged();
}

void Diagram::setDark(bool isDark) {
  if (isDark_ == isDark) return;
  isDark_ = isDark;
  draw();
  emit wishChanged();
}

void Diagram::setPixelRatio(double ratio) {
  if (pixelRatio_ == ratio) return;
  pixelRatio_ = ratio;
  draw();
  emit wishChanged();
}

Diagram::Status Diagram::status() const {
  if (!shown_) return Waiting;
  if (shown_->result().image) return Drawn;
  return shown_->result().isMissing ? Missing : Failed;
}

QUrl Diagram::picture() const {
  return status() == Drawn ? QUrl(QStringLiteral("image://diagram/") + shown_->key()) : QUrl();
}

QSizeF Diagram::size() const {
  return status() == Drawn ? shown_->result().size : QSizeF(0, knownHeight_);
}

QString Diagram::message() const {
  return shown_ ? shown_->result().failure : QString();
}

void Diagram::componentComplete() {
  isComplete_ = true;
  draw();
}

void Diagram::draw() {
  if (!isComplete_) return;
  const QQmlEngine* engine = qmlEngine(this);
  auto* provider =
      engine ? dynamic_cast<DiagramProvider*>(engine->imageProvider(QStringLiteral("diagram")))
             : nullptr;
  if (!provider) return;
  DiagramClient& client = provider->client();
  if (wanted_) wanted_->disconnect(this);
  knownHeight_ = client.knownHeight(code_);
  wanted_ = client.drawing(code_, isDark_ ? DiagramLook::dark : DiagramLook::light, pixelRatio_);
  if (wanted_->isFinished()) return show();
  connect(wanted_.get(), &DiagramDrawing::finished, this, &Diagram::show);
  emit drawn();
}

void Diagram::show() {
  shown_ = wanted_;
  emit drawn();
}

}  // namespace nomely
