#include "Desktop/Models/TagChips.h"

#include <utility>

#include "Core/Extensions/TagNames.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Models/TagStyles.h"

namespace nomely {

TagChips::TagChips(const TagConfigStore& looks)
    : looks_(looks), looksChanged_(looks.config().observe([this](const TagConfig&) {
        if (!shown_.empty()) emit dataChanged(index(0), index(rowCount() - 1));
      })) {}

void TagChips::set(std::vector<std::string> tags) {
  beginResetModel();
  tags_ = std::move(tags);
  shown_.clear();
  for (const std::string& tag : tags_)
    if (!TagNames::isHidden(tag)) shown_.push_back(tag);
  endResetModel();
}

int TagChips::rowCount(const QModelIndex& /*parent*/) const {
  return static_cast<int>(shown_.size());
}

QVariant TagChips::data(const QModelIndex& index, int role) const {
  const std::string& tag = shown_.at(static_cast<std::size_t>(index.row()));
  const TagConfig& looks = looks_.config().get();
  if (role == Name) return qt(tag);
  if (role == Emoji) return TagStyles::valueIn(looks.emojis, qt(tag));
  if (role == Tint) return TagStyles::valueIn(looks.colors, qt(tag));
  return {};
}

QHash<int, QByteArray> TagChips::roleNames() const {
  return {{Name, "name"}, {Emoji, "emoji"}, {Tint, "tint"}};
}

}  // namespace nomely
