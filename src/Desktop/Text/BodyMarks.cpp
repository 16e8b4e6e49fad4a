#include "Desktop/Text/BodyMarks.h"

#include <algorithm>

namespace nomely {

int BodyMarks::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(marks_.size());
}

QVariant BodyMarks::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const Mark& mark = marks_[static_cast<std::size_t>(index.row())];
  switch (role) {
    case KindRole:
      return mark.kind;
    case Top:
      return mark.top;
    case Height:
      return mark.height;
    case Checked:
      return mark.isChecked;
    case Line:
      return mark.line;
    case Label:
      return mark.label;
    case Mirrored:
      return mark.isMirrored;
    case Left:
      return mark.left;
    case Width:
      return mark.width;
    default:
      return {};
  }
}

QHash<int, QByteArray> BodyMarks::roleNames() const {
  return {{KindRole, "kind"},     {Top, "markTop"},     {Height, "extent"},
          {Checked, "checked"},   {Line, "sourceLine"}, {Label, "label"},
          {Mirrored, "mirrored"}, {Left, "strokeLeft"}, {Width, "strokeWidth"}};
}

void BodyMarks::show(std::vector<Mark> marks) {
  const auto before = static_cast<int>(marks_.size());
  const auto after = static_cast<int>(marks.size());
  const int kept = std::min(before, after);
  if (after < before) {
    beginRemoveRows({}, after, before - 1);
    marks_.resize(marks.size());
    endRemoveRows();
  }
  for (int row = 0; row < kept; ++row) {
    const auto at = static_cast<std::size_t>(row);
    if (marks_[at] == marks[at]) continue;
    marks_[at] = std::move(marks[at]);
    emit dataChanged(index(row), index(row));
  }
  if (after > before) {
    beginInsertRows({}, before, after - 1);
    marks_.insert(marks_.end(), std::make_move_iterator(marks.begin() + before),
                  std::make_move_iterator(marks.end()));
    endInsertRows();
  }
}

}  // namespace nomely
