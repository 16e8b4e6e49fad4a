#include "Desktop/Text/QuickTextView.h"

#include <QQuickItem>
#include <QQuickTextDocument>
#include <QTextBlockFormat>
#include <QTextCursor>
#include <QTextDocument>
#include <algorithm>

#include "Desktop/Text/Composing.h"

namespace nomely {
namespace {

QStringView viewOf(std::u16string_view text) {
  return {text.data(), static_cast<qsizetype>(text.size())};
}

// What of `before` has to become what of `after`.
struct Difference {
  qsizetype begin = 0;
  qsizetype endBefore = 0;
  qsizetype endAfter = 0;
};

Difference differenceOf(QStringView before, QStringView after) {
  const qsizetype shorter = std::min(before.size(), after.size());
  qsizetype begin = 0;
  while (begin < shorter && before[begin] == after[begin]) ++begin;
  // A pair of surrogates is changed whole.
  if (begin > 0 && before[begin - 1].isHighSurrogate()) --begin;
  qsizetype same = 0;
  while (same < shorter - begin &&
         before[before.size() - 1 - same] == after[after.size() - 1 - same])
    ++same;
  if (same > 0 && before[before.size() - same].isLowSurrogate()) --same;
  return {begin, before.size() - same, after.size() - same};
}

// Whether somewhere in it a line would have to be broken inside of a word of great length.
bool hasEndlessWord(QStringView text) {
  constexpr int longest = 4000;
  constexpr char16_t firstThatBreaksAnywhere = 0x2E80;  // CJK
  int length = 0;
  for (const QChar character : text) {
    const bool ends = character.isSpace() || character >= QChar(firstThatBreaksAnywhere);
    length = ends ? 0 : length + 1;
    if (length > longest) return true;
  }
  return false;
}

}  // namespace

QuickTextView::QuickTextView(QQuickItem& area)
    : area_(area),
      document_(area.property("textDocument").value<QQuickTextDocument*>()->textDocument()) {
  // Of a long text no more is made for drawing than is in view; else a key makes all of it anew.
  area_.setFlag(QQuickItem::ItemObservesViewport);
}

QString QuickTextView::content() const {
  QString text = document_->toRawText();
  text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
  return text;
}

void QuickTextView::reset(const QString& text) {
  const QString composed = liftComposing(area_);
  wrap(hasEndlessWord(text));
  document_->setUndoRedoEnabled(false);
  QTextCursor cursor(document_);
  cursor.beginEditBlock();
  cursor.select(QTextCursor::Document);
  cursor.insertText(text);
  // Lines that are typed later take it over from those before.
  QTextBlockFormat format;
  format.setLineHeight(area_.property("lineHeight").toInt(), QTextBlockFormat::ProportionalHeight);
  cursor.select(QTextCursor::Document);
  cursor.mergeBlockFormat(format);
  cursor.endEditBlock();
  document_->setUndoRedoEnabled(true);
  resumeComposing(area_, composed);
}

// Wrapping at words reads a word to its end for each of its lines: a megabyte took a minute.
void QuickTextView::wrap(bool anywhere) {
  constexpr int wrapAnywhere = 3;  // TextEdit.WrapAnywhere
  constexpr int wrapAtWords = 4;   // TextEdit.Wrap
  area_.setProperty("wrapMode", anywhere ? wrapAnywhere : wrapAtWords);
}

std::u16string QuickTextView::text() const {
  return content().toStdU16String();
}

TextSelection QuickTextView::selectedRange() const {
  const auto begin = area_.property("selectionStart").toUInt();
  const auto end = area_.property("selectionEnd").toUInt();
  return {begin, end - begin};
}

void QuickTextView::setSelectedRange(TextSelection selection) {
  liftComposing(area_);
  const auto begin = static_cast<int>(selection.location);
  const auto end = begin + static_cast<int>(selection.length);
  QMetaObject::invokeMethod(&area_, "select", Q_ARG(int, begin), Q_ARG(int, end));
}

bool QuickTextView::shouldChangeText(TextRange /*range*/, std::u16string_view /*replacement*/) {
  return !area_.property("readOnly").toBool();
}

void QuickTextView::replaceText(TextRange range, std::u16string_view replacement) {
  const QString all = content();
  const auto begin = static_cast<qsizetype>(range.begin);
  const QStringView after = viewOf(replacement);
  const Difference middle =
      differenceOf(QStringView(all).mid(begin, static_cast<qsizetype>(range.length())), after);
  const QStringView inserted = after.mid(middle.begin, middle.endAfter - middle.begin);
  if (hasEndlessWord(inserted)) wrap(true);
  liftComposing(area_);
  QTextCursor cursor(document_);
  cursor.beginEditBlock();
  cursor.setPosition(static_cast<int>(begin + middle.begin));
  cursor.setPosition(static_cast<int>(begin + middle.endBefore), QTextCursor::KeepAnchor);
  cursor.insertText(inserted.toString());
  cursor.endEditBlock();
}

}  // namespace nomely
