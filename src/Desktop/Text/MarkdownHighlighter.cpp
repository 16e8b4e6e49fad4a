#include "Desktop/Text/MarkdownHighlighter.h"

#include <QElapsedTimer>
#include <QFont>
#include <QTextCharFormat>
#include <QTextDocument>
#include <algorithm>
#include <string>
#include <string_view>

#include "Core/Markdown/Blocks/BlockParser.h"
#include "Core/Markdown/Editing/MarkdownInlinePreviewRanges.h"
#include "Core/Markdown/Inline/CodeAndLinks.h"
#include "Core/Markdown/Inline/InlineMarkdown.h"
#include "Core/Markdown/Text/LinkDetector.h"
#include "Core/Markdown/Text/TagParser.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// States of a block: what stands after it decides on the next.
constexpr int plainState = 0;
constexpr int insideFence = 1;
constexpr int closesFence = 2;

// More than a screenful, and done in half the time that a frame has.
constexpr qsizetype charactersInTurn = 4000;
constexpr qint64 sliceMilliseconds = 4;

bool isFence(const QString& line) {
  return QStringView(line).trimmed().startsWith(u"```");
}

// Positions in UTF-8 as positions in UTF-16, asked for in rising order.
class Units {
 public:
  explicit Units(std::string_view text) : text_(text) {}

  int at(std::size_t byte) {
    for (; byte_ < byte; ++byte_) {
      const auto unit = static_cast<unsigned char>(text_[byte_]);
      constexpr unsigned char continuation = 0x80;
      constexpr unsigned char lead = 0xC0;
      constexpr unsigned char four = 0xF0;
      if ((unit & lead) != continuation) units_ += unit >= four ? 2 : 1;
    }
    return units_;
  }

 private:
  std::string_view text_;
  std::size_t byte_ = 0;
  int units_ = 0;
};

// The line's one block, as its card draws it, with the text that follows its mark.
struct Line {
  enum class Kind { text, heading, item, done, quote, rule };
  Kind kind = Kind::text;
  int level = 0;
  std::string_view content = {};
};

Line lineOf(const MarkdownBlocks& blocks) {
  using namespace markdown;
  if (blocks.size() != 1) return {};
  const MarkdownBlock& block = blocks.front();
  if (const auto* heading = std::get_if<Heading>(&block))
    return {Line::Kind::heading, heading->level, heading->text};
  if (const auto* item = std::get_if<BulletItem>(&block)) return {Line::Kind::item, 0, item->text};
  if (const auto* item = std::get_if<NumberedItem>(&block))
    return {Line::Kind::item, 0, item->text};
  if (const auto* item = std::get_if<CheckItem>(&block))
    return {item->checked ? Line::Kind::done : Line::Kind::item, 0, item->text};
  if (const auto* quote = std::get_if<Blockquote>(&block))
    return {Line::Kind::quote, 0, quote->text};
  if (const auto* callout = std::get_if<MarkdownCallout>(&block))
    return {Line::Kind::quote, 0, callout->title};
  if (std::holds_alternative<HorizontalRule>(block)) return {Line::Kind::rule};
  return {};
}

// Whether anything in the line could be more than a paragraph.
bool mayHoldMarks(QStringView text) {
  return std::any_of(text.begin(), text.end(), [](QChar character) {
    return character.unicode() < u'\x80' && !character.isLetter() && character != u' ';
  });
}

}  // namespace

MarkdownHighlighter::MarkdownHighlighter(QObject* parent) : QSyntaxHighlighter(parent) {
  turn_.setSingleShot(true);
  connect(&turn_, &QTimer::timeout, this, &MarkdownHighlighter::highlightSlice);
  // Looks change together: a theme is some assignments in a row.
  restyle_.setSingleShot(true);
  connect(this, &MarkdownHighlighter::looksChanged, &restyle_, qOverload<>(&QTimer::start));
  connect(&restyle_, &QTimer::timeout, this, &MarkdownHighlighter::highlightAll);
}

bool MarkdownHighlighter::isCode(const QTextBlock& block) {
  return block.userState() == insideFence || block.userState() == closesFence;
}

void MarkdownHighlighter::highlightAll() {
  defer(0);
  turn_.start();
}

void MarkdownHighlighter::defer(int block) {
  rest_ = std::min(rest_.value_or(block), block);
}

void MarkdownHighlighter::highlightSlice() {
  doneInTurn_ = 0;
  if (document() == nullptr) rest_.reset();
  QElapsedTimer clock;
  clock.start();
  inSlice_ = true;
  while (rest_ && clock.elapsed() < sliceMilliseconds) {
    const QTextBlock block = document()->findBlockByNumber(*rest_);
    if (!block.isValid()) {
      rest_.reset();
      break;
    }
    ++*rest_;
    rehighlightBlock(block);
  }
  inSlice_ = false;
  if (rest_) turn_.start();
}

void MarkdownHighlighter::highlightBlock(const QString& text) {
  const bool wasInside = previousBlockState() == insideFence;
  const bool fence = isFence(text);
  if (fence)
    setCurrentBlockState(wasInside ? closesFence : insideFence);
  else
    setCurrentBlockState(wasInside ? insideFence : plainState);

  if (!inSlice_) {
    doneInTurn_ += text.size() + 1;
    if (!turn_.isActive()) turn_.start();
    const int number = currentBlock().blockNumber();
    if (doneInTurn_ > charactersInTurn && doneInTurn_ > text.size() + 1) return defer(number);
    // Lines may have come or gone above those that wait.
    if (rest_) defer(number + 1);
  }
  if (fence) return mark(0, static_cast<int>(text.size()));
  if (wasInside) {
    QTextCharFormat format;
    format.setFontFamilies({codeFamily_});
    return setFormat(0, static_cast<int>(text.size()), format);
  }
  if (mayHoldMarks(text)) highlightLine(text);
}

void MarkdownHighlighter::mark(int begin, int length) {
  for (int i = begin; i < begin + length; ++i) {
    QTextCharFormat weak = format(i);
    weak.setForeground(weak_);
    setFormat(i, 1, weak);
  }
}

void MarkdownHighlighter::highlightLine(const QString& text) {
  const std::string line = text.toStdString();
  const MarkdownBlocks blocks = MarkdownTextView::parseBlocks(line);
  const Line kind = lineOf(blocks);
  const int size = static_cast<int>(text.size());
  if (kind.kind == Line::Kind::rule) return mark(0, size);

  const auto content = static_cast<int>(
      QString::fromUtf8(kind.content.data(), static_cast<qsizetype>(kind.content.size())).size());
  int end = size;
  while (end > 0 && text[end - 1].isSpace()) --end;
  const int begin = kind.kind == Line::Kind::text ? 0 : std::max(0, end - content);
  QTextCharFormat whole;
  if (kind.kind == Line::Kind::heading) {
    whole.setFontWeight(QFont::Bold);
    if (headingSize_ > textSize_)
      whole.setProperty(QTextFormat::FontPixelSize,
                        textSize_ + (headingSize_ - textSize_) * (4 - kind.level) / 3);
  } else if (kind.kind == Line::Kind::quote || kind.kind == Line::Kind::done) {
    whole.setForeground(quote_);
    whole.setFontStrikeOut(kind.kind == Line::Kind::done);
  }
  if (!whole.isEmpty()) setFormat(begin, size - begin, whole);
  if (begin > 0) {
    QTextCharFormat weak = whole;
    weak.setForeground(weak_);
    weak.setFontStrikeOut(false);
    weak.setFontWeight(QFont::Normal);
    setFormat(0, begin, weak);
  }
  highlightInline(text, begin);
}

void MarkdownHighlighter::highlightInline(const QString& text, int begin) {
  const auto restyle = [this](int from, int to, auto change) {
    for (int i = from; i < to; ++i) {
      QTextCharFormat changed = format(i);
      change(changed);
      setFormat(i, 1, changed);
    }
  };
  const std::u16string_view units(reinterpret_cast<const char16_t*>(text.utf16()),
                                  static_cast<std::size_t>(text.size()));
  using Range = MarkdownInlinePreviewRange;
  for (const Range& range : MarkdownInlinePreviewRanges::ranges(units)) {
    const auto from = static_cast<int>(range.range.begin);
    const auto to = static_cast<int>(range.range.end);
    if (range.kind == Range::Kind::hiddenMarker)
      mark(from, to - from);
    else
      restyle(from, to, [](QTextCharFormat& format) { format.setFontWeight(QFont::Bold); });
  }

  const std::string line = text.toStdString();
  const auto linked = [this](QTextCharFormat& format) { format.setForeground(link_); };
  if (line.find_first_of("`[<") != std::string::npos) {
    Units at(line);
    for (const ByteRange& range : codeAndLinks(line)) {
      const int from = at.at(range.begin);
      const int to = at.at(range.end);
      if (line[range.begin] == '`')
        restyle(from, to, [this](QTextCharFormat& format) {
          format.setFontFamilies({codeFamily_});
          format.setBackground(code_);
        });
      else
        restyle(from, to, linked);
    }
  }
  const QString content = text.mid(begin);
  if (content.contains(u'*') || content.contains(u'_')) {
    const std::string written = content.toStdString();
    Units at(written);
    for (const ByteRange& range : emphasizedRanges(written)) {
      const int from = begin + at.at(range.begin);
      restyle(from, begin + at.at(range.end),
              [](QTextCharFormat& format) { format.setFontItalic(true); });
    }
  }
  if (line.find('.') != std::string::npos) {
    Units at(line);
    for (const LinkDetector::Place& place : LinkDetector::places(line)) {
      const int from = at.at(place.begin);
      restyle(from, at.at(place.end), linked);
    }
  }
  if (line.find('#') == std::string::npos) return;
  for (const TagParser::Match& tag : TagParser::matches(line)) {
    const auto from = static_cast<int>(tag.tagRange.begin) - 1;
    if (from >= begin)
      restyle(from, static_cast<int>(tag.tagRange.end),
              [this](QTextCharFormat& format) { format.setForeground(accent_); });
  }
}

}  // namespace nomely
