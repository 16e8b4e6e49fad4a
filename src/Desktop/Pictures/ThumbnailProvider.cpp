#include "Desktop/Pictures/ThumbnailProvider.h"

#include <QQuickTextureFactory>
#include <QUrl>
#include <QUrlQuery>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "Desktop/Pictures/PictureFile.h"
#include "Platform/Cancellation.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

constexpr int usualSide = 1280;
constexpr int longestSide = 8192;

struct Request {
  std::filesystem::path file;
  PictureForm form;
};

QSize boundedSize(QSize size) {
  if (size.width() <= 0 && size.height() <= 0) return {usualSide, usualSide};
  if (size.width() <= 0) size.setWidth(longestSide);
  if (size.height() <= 0) size.setHeight(longestSide);
  return size.boundedTo({longestSide, longestSide});
}

Request parsed(const QString& id, const QSize& requestedSize) {
  const auto query = id.indexOf(u'?');
  const QString path = QUrl::fromPercentEncoding(id.left(query).toUtf8());
  const QUrlQuery options(query < 0 ? QString() : id.mid(query + 1));
  const bool cuts = requestedSize.width() > 0 && requestedSize.height() > 0 &&
                    options.queryItemValue(u"fit"_qs) != u"within";
  return {path.toStdString(),
          {.size = boundedSize(requestedSize),
           .fit = cuts ? PictureForm::Fit::cover : PictureForm::Fit::within,
           .radius = options.queryItemValue(u"radius"_qs).toDouble()}};
}

// A file that was replaced is another picture.
std::string keyOf(const Request& request) {
  std::error_code ignored;
  const auto changed = std::filesystem::last_write_time(request.file, ignored);
  const PictureForm& form = request.form;
  return fmt::format("{}x{} {} {} {} {}", form.size.width(), form.size.height(),
                     form.fit == PictureForm::Fit::cover, form.radius,
                     changed.time_since_epoch().count(), request.file.string());
}

class Response : public QQuickImageResponse {
 public:
  explicit Response(Request request) : request_(std::move(request)) {}

  // On a thread of the pool. It may be gone when this returns.
  void load(PictureCache& cache) {
    try {
      throwIfStopped(cancelled_.get_token());
      const std::string key = keyOf(request_);
      if (const auto kept = cache.find(key)) {
        image_ = *kept;
      } else {
        image_ = PictureFile::decode(request_.file, request_.form, cancelled_.get_token());
        cache.insert(key, image_);
      }
    } catch (const CancellationError&) {
      failure_ = u"cancelled"_qs;
    } catch (const std::exception& error) {
      failure_ = QString::fromUtf8(error.what());
    }
    tell();
  }
  // Instead of loading.
  void giveUp() {
    failure_ = u"cancelled"_qs;
    tell();
  }

  void cancel() override { cancelled_.request_stop(); }
  [[nodiscard]] QQuickTextureFactory* textureFactory() const override {
    return QQuickTextureFactory::textureFactoryForImage(image_);
  }
  [[nodiscard]] QString errorString() const override { return failure_; }

 private:
  // On the thread that owns this: it may delete it as soon as it hears of it, and whoever is still
  // within the signal then would touch what is gone.
  void tell() { QMetaObject::invokeMethod(this, &Response::finished, Qt::QueuedConnection); }

  Request request_;
  std::stop_source cancelled_;
  QImage image_;
  QString failure_;
};

// In the queue of the pool. A response whose turn doesn't come any more is to finish, too.
class Turn {
 public:
  explicit Turn(Response* response) : response_(response) {}
  ~Turn() {
    if (response_ != nullptr) response_->giveUp();
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  [[nodiscard]] Response* take() { return std::exchange(response_, nullptr); }

 private:
  Response* response_;
};

}  // namespace

QQuickImageResponse* ThumbnailProvider::requestImageResponse(const QString& id,
                                                             const QSize& requestedSize) {
  auto* const response = new Response(parsed(id, requestedSize));
  jobs_.submit([this, turn = std::make_shared<Turn>(response)](const std::stop_token&) {
    turn->take()->load(cache_);
  });
  return response;
}

QString ThumbnailProvider::source(const QString& absolutePath) {
  return u"image://thumbnail/"_qs + QString::fromLatin1(QUrl::toPercentEncoding(absolutePath, "/"));
}

}  // namespace nomely
