#pragma once

#include <QObject>
#include <QString>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Media/AttachmentModel.h"

namespace nomely {

// The picture of a memo that lies over the window, among the memo's others. Main thread.
class ViewerScreen : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(bool isOpen READ isOpen NOTIFY changed)
  Q_PROPERTY(int index READ index NOTIFY changed)
  Q_PROPERTY(int count READ count NOTIFY changed)
  Q_PROPERTY(QString path READ path NOTIFY changed)
  Q_PROPERTY(QString source READ source NOTIFY changed)
  Q_PROPERTY(QString name READ name NOTIFY changed)

 public:
  explicit ViewerScreen(MediaScreen& media);

  [[nodiscard]] bool isOpen() const { return index_ >= 0; }
  [[nodiscard]] int index() const { return index_; }
  [[nodiscard]] int count() const { return pictures_.count(); }
  [[nodiscard]] QString path() const { return pictures_.path(index_); }
  [[nodiscard]] QString source() const;
  [[nodiscard]] QString name() const { return pictures_.name(index_); }

  // The picture at `index` among those of the memo.
  Q_INVOKABLE void view(const nomely::MemoHandle& memo, int index);
  // Goes on by so many pictures, and stays at the first and the last.
  Q_INVOKABLE void step(int pictures);
  Q_INVOKABLE void close();

 signals:
  void changed();

 private:
  AttachmentModel pictures_;
  int index_ = -1;
};

}  // namespace nomely
