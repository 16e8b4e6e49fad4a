#include "Desktop/Text/TagChoices.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "App/Application.h"
#include "Core/Extensions/TagNames.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Models/TagStyles.h"

namespace nomely {
namespace {

constexpr std::size_t mostRows = 8;

// How well a tag fits what is typed, 0 for best: from its beginning, from one of its levels, or
// anywhere.
std::optional<int> rankOf(const QString& tag, const QString& typed) {
  if (tag.startsWith(typed, Qt::CaseInsensitive)) return 0;
  if (tag.contains(QLatin1Char('/') + typed, Qt::CaseInsensitive)) return 1;
  if (tag.contains(typed, Qt::CaseInsensitive)) return 2;
  return std::nullopt;
}

}  // namespace

TagChoices::TagChoices(const ScreenContext& context)
    : context_(context), work_(context.executor, context.jobs) {}

std::vector<QString> TagChoices::matching() const {
  std::vector<std::pair<int, const QString*>> ranked;
  for (const QString& tag : tags_)
    if (const auto rank = rankOf(tag, typed_); rank && isOffered(tag))
      ranked.emplace_back(*rank, &tag);
  std::ranges::stable_sort(ranked, {}, [](const auto& each) { return each.first; });
  std::vector<QString> rows;
  for (const auto& [rank, tag] : ranked)
    if (rows.size() < mostRows) rows.push_back(*tag);
  // Nothing is left to complete.
  if (rows.size() == 1 && rows.front() == typed_) rows.clear();
  return rows;
}

void TagChoices::offer(const QString& typed) {
  typed_ = typed;
  if (!isOpen()) readTags();
  show(matching());
}

// The list may have changed since the last time; what is known shows meanwhile.
void TagChoices::readTags() {
  work_.run(
      [&index = context_.application.searchIndex()](const std::stop_token&) {
        std::vector<QString> tags;
        for (const TagUse& use : index.allTags())
          if (!TagNames::isHidden(use.tag)) tags.push_back(qt(use.tag));
        return tags;
      },
      [this](std::vector<QString> tags) {
        const bool isFirst = tags_.empty();
        tags_ = std::move(tags);
        if ((isOpen() || isFirst) && isTyped(typed_)) show(matching());
      });
}

void TagChoices::show(std::vector<QString> rows) {
  if (rows.empty() && rows_.empty()) return;
  if (rows != rows_) {
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
    setCurrent(0);
  }
  emit openChanged();
}

void TagChoices::close() {
  show({});
}

void TagChoices::setCurrent(int row) {
  current_ = row;
  emit currentChanged();
}

bool TagChoices::takes(int key) const {
  if (!isOpen()) return false;
  switch (key) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Tab:
    case Qt::Key_Escape:
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      // A tag that is typed whole is done.
      return rows_[static_cast<std::size_t>(current_)] != typed_;
    default:
      return false;
  }
}

bool TagChoices::press(int key) {
  if (!takes(key)) return false;
  const int count = rowCount();
  if (key == Qt::Key_Up)
    setCurrent((current_ + count - 1) % count);
  else if (key == Qt::Key_Down)
    setCurrent((current_ + 1) % count);
  else if (key == Qt::Key_Escape)
    close();
  else
    choose(current_);
  return true;
}

void TagChoices::choose(int row) {
  if (row < 0 || row >= rowCount()) return;
  const QString tag = rows_[static_cast<std::size_t>(row)];
  close();
  take(tag);
}

int TagChoices::rowCount(const QModelIndex& /*parent*/) const {
  return static_cast<int>(rows_.size());
}

QVariant TagChoices::data(const QModelIndex& index, int role) const {
  const QString& tag = rows_.at(static_cast<std::size_t>(index.row()));
  const TagConfig& looks = context_.application.tagConfig().config().get();
  if (role == Name) return tag;
  if (role == Emoji) return TagStyles::valueIn(looks.emojis, tag);
  if (role == Tint) return TagStyles::valueIn(looks.colors, tag);
  return {};
}

QHash<int, QByteArray> TagChoices::roleNames() const {
  return {{Name, "name"}, {Emoji, "emoji"}, {Tint, "tint"}};
}

}  // namespace nomely
