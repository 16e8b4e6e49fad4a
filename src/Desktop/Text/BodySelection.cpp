#include "Desktop/Text/BodySelection.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QQuickTextDocument>
#include <QQuickWindow>
#include <QTextDocument>
#include <algorithm>
#include <limits>

#include "Desktop/Text/CopiedText.h"
#include "Desktop/Text/SelectedText.h"

namespace nomely {
namespace {

// A TextEdit has no public class of its own.
bool isText(const QQuickItem* item) {
  return item != nullptr && item->inherits("QQuickTextEdit");
}

bool isTyped(const QQuickItem* item) {
  return isText(item) || (item != nullptr && item->inherits("QQuickTextInput"));
}

void select(QQuickItem* text, int from, int to) {
  QMetaObject::invokeMethod(text, "select", Q_ARG(int, from), Q_ARG(int, to));
}

int lengthOf(const QQuickItem* text) {
  return text->property("length").toInt();
}

int positionAt(QQuickItem* text, QPointF scenePosition) {
  const QPointF place = text->mapFromScene(scenePosition);
  if (place.y() < 0) return 0;
  if (place.y() > text->height()) return lengthOf(text);
  int position = 0;
  QMetaObject::invokeMethod(text, "positionAt", Q_RETURN_ARG(int, position),
                            Q_ARG(double, place.x()), Q_ARG(double, place.y()));
  return position;
}

struct Range {
  int from = 0;
  int to = 0;
};
Range selectionOf(const QQuickItem* text) {
  return {text->property("selectionStart").toInt(), text->property("selectionEnd").toInt()};
}

const QTextDocument& documentOf(const QQuickItem* text) {
  return *text->property("textDocument").value<QQuickTextDocument*>()->textDocument();
}

void gather(const QQuickItem& item, std::vector<QQuickItem*>& texts) {
  for (QQuickItem* child : item.childItems()) {
    if (!child->isVisible()) continue;
    if (isText(child))
      texts.push_back(child);
    else
      gather(*child, texts);
  }
}

}  // namespace

BodySelection::BodySelection(QQuickItem* parent) : QQuickItem(parent) {
  setFiltersChildMouseEvents(true);
}

void BodySelection::setMemo(const MemoHandle& memo) {
  if (memo == memo_) return;
  if (memo.key() != memo_.key() && anchor_) clear();
  memo_ = memo;
  emit memoChanged();
}

bool BodySelection::hasSelection() const {
  return std::ranges::any_of(texts(), [](const QQuickItem* text) {
    const auto [from, to] = selectionOf(text);
    return from != to;
  });
}

QString BodySelection::selectedText() const {
  QStringList parts;
  for (const QQuickItem* text : texts())
    if (const auto [from, to] = selectionOf(text); from != to)
      parts.append(SelectedText::plain(documentOf(text), from, to));
  return parts.join(u'\n');
}

void BodySelection::selectAll() {
  const auto all = texts();
  if (all.empty()) return;
  anchor_ = all.front();
  anchorPosition_ = 0;
  followFocus();
  for (QQuickItem* text : all) select(text, 0, lengthOf(text));
}

void BodySelection::clear() {
  for (QQuickItem* text : texts()) QMetaObject::invokeMethod(text, "deselect");
  anchor_ = nullptr;
  spansTexts_ = false;
}

void BodySelection::copy() const {
  if (!hasSelection()) {
    CopiedText::toClipboard(CopiedText::markdown(memo_));
    return;
  }
  QString html;
  for (const QQuickItem* text : texts())
    if (const auto [from, to] = selectionOf(text); from != to)
      html += SelectedText::html(documentOf(text), from, to);
  CopiedText::toClipboard(selectedText(), html);
}

bool BodySelection::childMouseEventFilter(QQuickItem* item, QEvent* event) {
  switch (event->type()) {
    case QEvent::MouseButtonPress:
      return press(item, *static_cast<QMouseEvent*>(event));
    case QEvent::MouseMove:
      return drag(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonRelease:
      // Later, as the text has yet to see the click, which may be on a link.
      if (isText(item) && !hasSelection())
        QMetaObject::invokeMethod(this, &BodySelection::tapped, Qt::QueuedConnection);
      [[fallthrough]];
    case QEvent::UngrabMouse:
      spansTexts_ = false;
      return false;
    default:
      return false;
  }
}

void BodySelection::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy))
    copy();
  else if (event->matches(QKeySequence::SelectAll))
    selectAll();
  else
    event->ignore();
}

std::vector<QQuickItem*> BodySelection::texts() const {
  std::vector<QQuickItem*> all;
  gather(*this, all);
  std::ranges::stable_sort(all, {},
                           [](const QQuickItem* text) { return text->mapToScene({}).y(); });
  return all;
}

QQuickItem* BodySelection::textNearest(QPointF scenePosition) const {
  QQuickItem* nearest = nullptr;
  double least = std::numeric_limits<double>::max();
  for (QQuickItem* text : texts()) {
    const double y = text->mapFromScene(scenePosition).y();
    const double distance = std::max({-y, y - text->height(), 0.0});
    if (distance >= least) continue;
    nearest = text;
    least = distance;
  }
  return nearest;
}

bool BodySelection::press(QQuickItem* item, const QMouseEvent& event) {
  spansTexts_ = false;
  if (event.button() != Qt::LeftButton || !isText(item)) return false;
  if (event.modifiers().testFlag(Qt::ShiftModifier) && anchor_) {
    extendTo(event.scenePosition());
    return true;
  }
  for (QQuickItem* text : texts())
    if (text != item) QMetaObject::invokeMethod(text, "deselect");
  anchor_ = item;
  anchorPosition_ = positionAt(item, event.scenePosition());
  followFocus();
  return false;
}

bool BodySelection::drag(const QMouseEvent& event) {
  if (!event.buttons().testFlag(Qt::LeftButton) || !anchor_) return false;
  // Inside one text it knows best, with words and lines too.
  if (!spansTexts_ && textNearest(event.scenePosition()) == anchor_) return false;
  spansTexts_ = true;
  extendTo(event.scenePosition());
  return true;
}

void BodySelection::extendTo(QPointF scenePosition) {
  const auto all = texts();
  const auto begin = std::ranges::find(all, anchor_.data());
  const auto end = std::ranges::find(all, textNearest(scenePosition));
  if (begin == all.end() || end == all.end()) return;
  const int position = positionAt(*end, scenePosition);
  for (auto it = all.begin(); it != all.end(); ++it) {
    const bool isBetween = (it > begin && it < end) || (it > end && it < begin);
    if (it == begin && it == end)
      select(*it, anchorPosition_, position);
    else if (isBetween)
      select(*it, 0, lengthOf(*it));
    else if (it == begin)
      select(*it, anchorPosition_, end > begin ? lengthOf(*it) : 0);
    else if (it == end)
      select(*it, end > begin ? 0 : lengthOf(*it), position);
    else
      QMetaObject::invokeMethod(*it, "deselect");
  }
}

void BodySelection::followFocus() {
  if (window() == nullptr) return;
  const auto leave = [this] {
    const QQuickItem* const focused = window() != nullptr ? window()->activeFocusItem() : nullptr;
    if (isTyped(focused) && !isAncestorOf(focused)) {
      window()->disconnect(this);
      clear();
    }
  };
  window()->disconnect(this);
  connect(window(), &QQuickWindow::activeFocusItemChanged, this, leave);
}

}  // namespace nomely
