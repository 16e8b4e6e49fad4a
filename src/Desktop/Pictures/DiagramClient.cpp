#include "Desktop/Pictures/DiagramClient.h"

#include <QCryptographicHash>
#include <utility>

#include "Desktop/Base/Qt.h"
#include "Platform/Cancellation.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

constexpr qsizetype mostHeights = 2000;

QString digest(const QString& code) {
  return QString::fromLatin1(
      QCryptographicHash::hash(code.toUtf8(), QCryptographicHash::Sha1).toHex());
}

}  // namespace

void DiagramDrawing::finish(Result result) {
  result_ = std::move(result);
  isFinished_ = true;
  emit finished();
}

DiagramClient::DiagramClient(MainExecutor& executor, Timers& timers,
                             DiagramHelper::Settings settings)
    : executor_(executor), helper_(timers, std::move(settings)) {}

DiagramClient::~DiagramClient() {
  lifetime_.end();
  ending_.request_stop();
}

std::shared_ptr<DiagramDrawing> DiagramClient::drawing(const QString& code, DiagramLook look,
                                                       double scale) {
  const QString source = digest(code);
  const QString key =
      QStringLiteral("%1-%2-%3")
          .arg(source, look == DiagramLook::dark ? QStringLiteral("dark") : QStringLiteral("light"),
               QString::number(scale));
  if (auto known = byKey_[key].lock()) return known;
  forgetGone();
  auto made = std::make_shared<DiagramDrawing>(key, source);
  byKey_[key] = made;
  draw(made, {.code = utf8(code), .look = look, .scale = scale});
  return made;
}

double DiagramClient::knownHeight(const QString& code) const {
  return heights_.value(digest(code));
}

QImage DiagramClient::image(const QString& key) const {
  const std::lock_guard lock(imagesMutex_);
  const auto found = images_.find(key);
  const auto image = found == images_.end() ? nullptr : found->second.lock();
  return image ? *image : QImage();
}

void DiagramClient::draw(const std::shared_ptr<DiagramDrawing>& drawing, DiagramRequest request) {
  queue_.async([this, weak = std::weak_ptr(drawing), request = std::move(request)] {
    // Cards that were scrolled away are gone. Locking here could make this thread the last holder.
    if (weak.expired()) return;
    try {
      auto result = std::make_shared<DiagramDrawing::Result>(render(request));
      executor_.post(lifetime_.guard([this, weak, result] {
        if (const auto wanted = weak.lock()) finish(wanted, std::move(*result));
      }));
    } catch (const CancellationError&) {
    }
  });
}

DiagramDrawing::Result DiagramClient::render(const DiagramRequest& request) {
  DiagramDrawing::Result result;
  try {
    const DiagramPicture picture = helper_.render(request, ending_.get_token());
    QImage image = QImage::fromData(QByteArray::fromStdString(picture.png), "PNG");
    if (image.isNull()) throw Error("diagram.picture", "收到的图表图片已损坏。");
    result.image = std::make_shared<const QImage>(std::move(image));
    result.size = {picture.width, picture.height};
  } catch (const CancellationError&) {
    throw;
  } catch (const DiagramError& error) {
    result.failure = qt(error.what());
    result.isMissing = error.kind() == DiagramError::Kind::missing;
  } catch (const Error& error) {
    Log::error(LogChannel::app, "a diagram could not be drawn: {}", error.what());
    result.failure = qt(error.what());
  }
  return result;
}

void DiagramClient::finish(const std::shared_ptr<DiagramDrawing>& drawing,
                           DiagramDrawing::Result result) {
  if (result.image) {
    const std::lock_guard lock(imagesMutex_);
    images_[drawing->key()] = result.image;
    if (heights_.size() >= mostHeights) heights_.clear();
    heights_[drawing->source()] = result.size.height();
  }
  drawing->finish(std::move(result));
  keep(drawing);
}

void DiagramClient::keep(const std::shared_ptr<DiagramDrawing>& drawing) {
  kept_.push_back(drawing);
  qsizetype bytes = 0;
  std::size_t count = 0;
  for (auto each = kept_.rbegin(); each != kept_.rend() && count < keptDrawings; ++each, ++count) {
    const auto& image = (*each)->result().image;
    bytes += image ? image->sizeInBytes() : 0;
    if (bytes > keptBytes) break;
  }
  kept_.erase(kept_.begin(), kept_.end() - static_cast<std::ptrdiff_t>(count));
}

void DiagramClient::forgetGone() {
  std::erase_if(byKey_, [](const auto& each) { return each.second.expired(); });
  const std::lock_guard lock(imagesMutex_);
  std::erase_if(images_, [](const auto& each) { return each.second.expired(); });
}

}  // namespace nomely
