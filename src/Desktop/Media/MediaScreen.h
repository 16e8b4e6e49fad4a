#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <functional>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"

namespace nomely {

// What the disk says of a file.
struct FileFacts {
  bool exists = false;
  QString sizeLabel;
};

// What a user does with attachments. Main thread.
class MediaScreen : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")

 public:
  explicit MediaScreen(const ScreenContext& context);

  // With the desktop's program for it.
  Q_INVOKABLE void open(const QString& path);
  Q_INVOKABLE void showInFolder(const QString& path);
  // Has the user asked where a copy is to be saved, and saves it there. What is there is replaced,
  // since the question was about that, too.
  Q_INVOKABLE void askToSave(const QString& path, const QString& name);
  Q_INVOKABLE void saveTo(const QUrl& target);
  // Puts the picture on the clipboard.
  Q_INVOKABLE void copyPicture(const QString& path);

  // Where an attachment of that day lies.
  [[nodiscard]] QString path(Day day, const QString& fileName) const;
  // Tells what the disk says of the files, in their order.
  void describe(const QStringList& paths, std::function<void(std::vector<FileFacts>)> then);

 signals:
  // With a name in the user's folder for such files.
  void saveAsked(const QUrl& suggested);

 private:
  const ScreenContext context_;
  QString saved_;  // the file that is to be copied
  BackgroundWork work_;
};

}  // namespace nomely
