#include "Desktop/Text/TagCompletion.h"

#include <QKeyEvent>
#include <QQuickItem>
#include <QTextBlock>
#include <QTextDocument>
#include <algorithm>
#include <utility>

#include "App/Application.h"
#include "Core/Extensions/TagNames.h"
#include "Core/Markdown/Text/TagParser.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Text/MarkdownHighlighter.h"
#include "Desktop/Text/QuickTextView.h"

namespace nomely {
namespace {

constexpr std::size_t mostRows = 8;
constexpr qsizetype longestTag = 64;

// How well a tag fits what is typed, 0 for best: from its beginning, from one of its levels, or
// anywhere.
std::optional<int> rankOf(const QString& tag, const QString& typed) {
  if (tag.startsWith(typed, Qt::CaseInsensitive)) return 0;
  if (tag.contains(QLatin1Char('/') + typed, Qt::CaseInsensitive)) return 1;
  if (tag.contains(typed, Qt::CaseInsensitive)) return 2;
  return std::nullopt;
}

}  // namespace

TagCompletion::TagCompletion(const ScreenContext& context)
    : context_(context), work_(context.executor, context.jobs) {}

void TagCompletion::attach(QuickTextView* view, QQuickItem* area) {
  close();
  view_ = view;
  area_ = area;
  if (area_ != nullptr) connect(area_, SIGNAL(cursorPositionChanged()), this, SLOT(follow()));
}

std::optional<QString> TagCompletion::typedTag() const {
  const TextSelection caret = view_->selectedRange();
  if (caret.length > 0 || area_->property("inputMethodComposing").toBool()) return std::nullopt;
  const auto position = static_cast<int>(caret.location);
  const QTextBlock block = view_->document().findBlock(position);
  const QString before = block.text().left(position - block.position());
  const qsizetype sign = before.lastIndexOf(QLatin1Char('#'));
  if (sign < 0 || before.size() - sign > longestTag || MarkdownHighlighter::isCode(block))
    return std::nullopt;
  QString typed = before.mid(sign + 1);
  // As if one letter more stood there, and not alone on its line: a bare "#" is about to become a
  // tag, and a long word will be one as soon as the line goes on.
  const QString probe = QLatin1String("x ") + before + QLatin1Char('x');
  const std::vector<TagParser::Match> found = TagParser::matches(utf8(probe));
  if (found.empty() || qt(found.back().tag) != typed + QLatin1Char('x')) return std::nullopt;
  return typed;
}

std::vector<QString> TagCompletion::matching(const QString& typed) const {
  std::vector<std::pair<int, const QString*>> ranked;
  for (const QString& tag : tags_)
    if (const auto rank = rankOf(tag, typed)) ranked.emplace_back(*rank, &tag);
  std::ranges::stable_sort(ranked, {}, [](const auto& each) { return each.first; });
  std::vector<QString> rows;
  for (const auto& [rank, tag] : ranked)
    if (rows.size() < mostRows) rows.push_back(*tag);
  // Nothing is left to complete.
  if (rows.size() == 1 && rows.front() == typed) rows.clear();
  return rows;
}

void TagCompletion::follow() {
  if (view_ == nullptr) return;
  const bool mayOpen = std::exchange(isTyping_, false) || isOpen();
  const auto typed = mayOpen ? typedTag() : std::nullopt;
  if (!typed) return close();
  if (!isOpen()) readTags();
  typed_ = *typed;
  const auto sign =
      static_cast<int>(view_->selectedRange().location) - static_cast<int>(typed_.size()) - 1;
  QMetaObject::invokeMethod(area_, "positionToRectangle", Q_RETURN_ARG(QRectF, place_),
                            Q_ARG(int, sign));
  show(matching(typed_));
}

// The list may have changed since the last "#"; what is known shows meanwhile.
void TagCompletion::readTags() {
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
        if (view_ == nullptr || !(isOpen() || isFirst)) return;
        const auto typed = typedTag();
        if (typed && *typed == typed_) show(matching(typed_));
      });
}

void TagCompletion::show(std::vector<QString> rows) {
  if (rows.empty() && rows_.empty()) return;
  if (rows != rows_) {
    beginResetModel();
    rows_ = std::move(rows);
    endResetModel();
    setCurrent(0);
  }
  emit openChanged();
}

void TagCompletion::close() {
  show({});
}

void TagCompletion::setCurrent(int row) {
  current_ = row;
  emit currentChanged();
}

bool TagCompletion::takes(const QKeyEvent& key) const {
  if (!isOpen() || (key.modifiers() & ~Qt::KeypadModifier) != 0) return false;
  switch (key.key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Tab:
    case Qt::Key_Escape:
      return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
      // A tag that is typed whole is done: the key breaks the line.
      return rows_[static_cast<std::size_t>(current_)] != typed_;
    default:
      return false;
  }
}

bool TagCompletion::press(const QKeyEvent& key) {
  if (!takes(key)) return false;
  const int count = rowCount();
  if (key.key() == Qt::Key_Up)
    setCurrent((current_ + count - 1) % count);
  else if (key.key() == Qt::Key_Down)
    setCurrent((current_ + 1) % count);
  else if (key.key() == Qt::Key_Escape)
    close();
  else
    choose(current_);
  return true;
}

void TagCompletion::choose(int row) {
  if (view_ == nullptr || row < 0 || row >= rowCount()) return;
  const QString tag = rows_[static_cast<std::size_t>(row)];
  const std::size_t caret = view_->selectedRange().location;
  const auto begin = caret - static_cast<std::size_t>(typed_.size());
  const bool hasBlank = view_->document().characterAt(static_cast<int>(caret)) == u' ';
  close();
  view_->replaceText({begin, caret}, (hasBlank ? tag : tag + u' ').toStdU16String());
  view_->setSelectedRange({begin + static_cast<std::size_t>(tag.size()) + 1, 0});
}

int TagCompletion::rowCount(const QModelIndex& /*parent*/) const {
  return static_cast<int>(rows_.size());
}

QVariant TagCompletion::data(const QModelIndex& index, int role) const {
  const QString& tag = rows_.at(static_cast<std::size_t>(index.row()));
  const TagConfig& looks = context_.application.tagConfig().config().get();
  const auto look = [&](const std::map<std::string, std::string>& values) {
    const auto found = values.find(utf8(tag));
    return found == values.end() ? QString() : qt(found->second);
  };
  if (role == Name) return tag;
  if (role == Emoji) return look(looks.emojis);
  if (role == Tint) return look(looks.colors);
  return {};
}

QHash<int, QByteArray> TagCompletion::roleNames() const {
  return {{Name, "name"}, {Emoji, "emoji"}, {Tint, "tint"}};
}

}  // namespace nomely
