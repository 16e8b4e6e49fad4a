#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QPointer>
#include <QUrl>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Text/QtPasteboard.h"
#include "Platform/Time/Day.h"

namespace nomely {

// The files of a text that is being written, in the order of the memo. What is added is copied into
// a day's folder at once, so that a draft can name it. Main thread.
class PendingAttachments final : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by a screen")
  Q_PROPERTY(int count READ count NOTIFY countChanged)
  Q_PROPERTY(bool isImporting READ isImporting NOTIFY importingChanged)

 public:
  struct File {
    std::string name;          // in the folder of `day`
    std::string originalName;  // empty: none is told
    Day day;

    friend bool operator==(const File&, const File&) = default;
  };

  // `day` tells into which day's folder files are copied.
  PendingAttachments(const ScreenContext& context, std::function<Day()> day);

  [[nodiscard]] const std::vector<File>& files() const { return files_; }
  [[nodiscard]] int count() const { return static_cast<int>(files_.size()); }
  [[nodiscard]] bool isImporting() const { return importing_ > 0; }

  // Another text's files. What is still being copied for the text before is forgotten.
  void set(std::vector<File> files);

  Q_INVOKABLE void add(const QList<QUrl>& urls);
  void add(const OfferedPicture& picture);
  // Takes it off the list; the file stays.
  Q_INVOKABLE void remove(int row);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

 signals:
  void countChanged();
  void importingChanged();
  // By the user, unlike `set`.
  void added();
  void removed(const std::string& name, nomely::Day day);

 private:
  enum Role { Name = Qt::UserRole, IsPicture, Source, Kind, Tint };

  // Of an import, whose place among the others it keeps however long it takes.
  struct Turn {
    std::size_t generation = 0;
    std::size_t number = 0;
  };
  Turn begin();
  // A file without a name could not be stored.
  void finish(const Turn& turn, File file);

  const ScreenContext context_;
  std::function<Day()> day_;
  std::vector<File> files_;
  std::vector<std::size_t> turns_;  // of each file
  std::size_t lastTurn_ = 0;
  int importing_ = 0;
  std::size_t generation_ = 0;  // of `set`
  BackgroundWork work_;
};

}  // namespace nomely
