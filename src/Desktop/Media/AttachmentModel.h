#pragma once

#include <QAbstractListModel>
#include <QPointer>
#include <QString>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Media/MediaScreen.h"
#include "Desktop/Models/MemoHandle.h"
#include "Platform/Concurrency/Lifetime.h"

namespace nomely {

// The attachments of one kind that a memo has, in its order. Main thread.
class AttachmentModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(nomely::MediaScreen* media READ media WRITE setMedia NOTIFY mediaChanged REQUIRED)
  Q_PROPERTY(nomely::MemoHandle memo READ memo WRITE setMemo NOTIFY memoChanged REQUIRED)
  Q_PROPERTY(Kind kind READ kind WRITE setKind NOTIFY kindChanged)
  Q_PROPERTY(int most READ most WRITE setMost NOTIFY mostChanged)
  Q_PROPERTY(int count READ count NOTIFY countChanged)
  Q_PROPERTY(int shown READ shown NOTIFY countChanged)

 public:
  enum Kind { Images, Audio, Files };
  Q_ENUM(Kind)
  enum Role {
    FileNameRole = Qt::UserRole + 1,  // in the day's folder
    PathRole,                         // absolute; empty for a name that names no attachment
    SourceRole,                       // of an Image, for pictures
    IsNamedRole,                      // by a user, not after its type
    NameRole,                         // as it is shown
    NoteRole,                         // the description that the memo has of it
    SizeLabelRole,                    // empty until it is known
    IsMissingRole,
    GlyphRole,
    TintRole,
    HiddenRole  // on the last row: how many follow that aren't shown
  };

  explicit AttachmentModel(QObject* parent = nullptr) : QAbstractListModel(parent) {}

  [[nodiscard]] MediaScreen* media() const { return media_; }
  void setMedia(MediaScreen* media);
  [[nodiscard]] MemoHandle memo() const { return memo_; }
  void setMemo(const MemoHandle& memo);
  [[nodiscard]] Kind kind() const { return kind_; }
  void setKind(Kind kind);
  // Rows at most; 0: all.
  [[nodiscard]] int most() const { return most_; }
  void setMost(int most);
  [[nodiscard]] int count() const { return static_cast<int>(rows_.size()); }
  [[nodiscard]] int shown() const { return rowCount(); }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  [[nodiscard]] QString path(int row) const;
  [[nodiscard]] QString name(int row) const;

 signals:
  void mediaChanged();
  void memoChanged();
  void kindChanged();
  void mostChanged();
  void countChanged();

 private:
  struct Row {
    QString fileName;
    QString path;
    bool isNamed = false;
    QString name;
    QString note;

    friend bool operator==(const Row&, const Row&) = default;
  };

  void rebuild();
  [[nodiscard]] std::vector<Row> rowsOfMemo() const;
  void askForFacts();

  QPointer<MediaScreen> media_;
  MemoHandle memo_;
  Kind kind_ = Images;
  int most_ = 0;
  std::vector<Row> rows_;
  std::vector<FileFacts> facts_;  // of the rows, once they are known
  unsigned generation_ = 0;       // of the rows
  Lifetime lifetime_;
};

}  // namespace nomely
