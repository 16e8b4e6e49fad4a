#pragma once

#include <QAbstractListModel>
#include <QString>
#include <vector>

#include <QtQml/qqmlregistration.h>

namespace nomely {

// What is drawn beside the text of a document, behind it or through it, and where: boxes of check
// items and the strokes through those that are done, bars of quotes, rows of tables. In order of
// the text. Main thread.
class BodyMarks : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by a document")

 public:
  enum Kind { Box, Bar, Row, Stroke };
  Q_ENUM(Kind)
  enum Role {
    KindRole = Qt::UserRole + 1,
    Top,
    Height,
    Checked,
    Line,
    Label,
    Mirrored,
    Left,
    Width
  };

  struct Mark {
    Kind kind = Box;
    qreal top = 0;  // of the document, pixels
    qreal height = 0;
    bool isChecked = false;
    int line = 0;             // of the body as it is shown, for CheckMarks
    QString label = {};       // the item's text
    bool isMirrored = false;  // stands at the right
    qreal left = 0;           // of a stroke, as its width
    qreal width = 0;

    friend bool operator==(const Mark&, const Mark&) = default;
  };

  using QAbstractListModel::QAbstractListModel;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  // Rows stay, so that a box keeps the keyboard's focus while it is ticked.
  void show(std::vector<Mark> marks);

 private:
  std::vector<Mark> marks_;
};

}  // namespace nomely
