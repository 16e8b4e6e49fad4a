#include "Desktop/App/StartRequest.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QObject>
#include <QUrl>

#include "Desktop/Base/Qt.h"
#include "Platform/Error.h"

namespace nomely {
namespace {

// A desktop gives addresses or paths.
QString absolutePath(const QString& given) {
  const QUrl url(given);
  return QFileInfo(url.isLocalFile() ? url.toLocalFile() : given).absoluteFilePath();
}

}  // namespace

void StartRequest::addOptions(QCommandLineParser& parser) {
  parser.addOption({QStringLiteral("capture"), QObject::tr("打开窗口，光标放进输入框")});
  parser.addOption(
      {QStringLiteral("day"), QObject::tr("打开这一天，如 2026-03-01"), QObject::tr("日期")});
  parser.addPositionalArgument(QObject::tr("文件"), QObject::tr("作为附件放进输入框"),
                               QObject::tr("[文件...]"));
}

StartRequest StartRequest::of(const QCommandLineParser& parser) {
  StartRequest request;
  request.isCapture = parser.isSet(QStringLiteral("capture"));
  if (const QString day = parser.value(QStringLiteral("day")); !day.isEmpty()) {
    request.day = QDate::fromString(day, Qt::ISODate);
    if (!request.day.isValid())
      throw Error("usage", utf8(QObject::tr("“%1”不是日期，请写成 2026-03-01 这样").arg(day)));
  }
  for (const QString& file : parser.positionalArguments()) request.files << absolutePath(file);
  request.activationToken = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
  return request;
}

QVariantMap StartRequest::toMap() const {
  return {{QStringLiteral("capture"), isCapture},
          {QStringLiteral("day"), day.toString(Qt::ISODate)},
          {QStringLiteral("files"), files},
          {QStringLiteral("activation-token"), activationToken}};
}

StartRequest StartRequest::fromMap(const QVariantMap& map) {
  return {.isCapture = map[QStringLiteral("capture")].toBool(),
          .day = QDate::fromString(map[QStringLiteral("day")].toString(), Qt::ISODate),
          .files = map[QStringLiteral("files")].toStringList(),
          .activationToken = map[QStringLiteral("activation-token")].toString()};
}

}  // namespace nomely
