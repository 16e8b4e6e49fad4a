#pragma once

#include <QDate>
#include <QString>
#include <QStringList>
#include <QVariantMap>

QT_BEGIN_NAMESPACE
class QCommandLineParser;
QT_END_NAMESPACE

namespace nomely {

// What a start of the program is to do with the window, here or in the process that has it already.
struct StartRequest {
  bool isCapture = false;   // put the caret into the input
  QDate day;                // show that day; invalid: stay where it is
  QStringList files;        // attach to what is being written; absolute paths
  QString activationToken;  // by which the desktop lets the window come to the front

  static void addOptions(QCommandLineParser& parser);
  // Throws Error for a date that is none.
  [[nodiscard]] static StartRequest of(const QCommandLineParser& parser);

  [[nodiscard]] QVariantMap toMap() const;
  [[nodiscard]] static StartRequest fromMap(const QVariantMap& map);

  bool operator==(const StartRequest&) const = default;
};

}  // namespace nomely
