#include "Desktop/Text/BlockDrawing.h"

#include <QFont>
#include <QFontMetricsF>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextOption>
#include <algorithm>
#include <array>
#include <cmath>

#include "Core/Markdown/Blocks/BlockSpacing.h"
#include "Core/Markdown/MarkdownTextView.h"
#include "Core/Markdown/Text/TagParser.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Text/BodyLook.h"

namespace nomely {
namespace {

using BlockDrawing::Role;

constexpr int roleProperty = QTextFormat::UserProperty + 1;
constexpr int codeLineHeight = 116;
constexpr int markerProperty = QTextFormat::UserProperty + 2;
constexpr int doneProperty = QTextFormat::UserProperty + 3;

// A document would begin a paragraph or a frame at some characters, and look for an object at
// another.
QString plainly(std::string_view text) {
  constexpr QChar beginningOfFrame(0xFDD0);
  constexpr QChar endOfFrame(0xFDD1);
  QString shown = qt(text);
  shown.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  for (QChar& c : shown) {
    if (c == u'\n' || c == u'\r' || c == u'\v' || c == u'\f' || c == QChar(0x85) ||
        c == QChar::ParagraphSeparator)
      c = QChar::LineSeparator;
    else if (c == QChar::Null || c == beginningOfFrame || c == endOfFrame ||
             c == QChar::ObjectReplacementCharacter)
      c = QChar::ReplacementCharacter;
  }
  return shown;
}

double luminance(const QColor& color) {
  const auto part = [](double value) {
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * part(color.redF()) + 0.7152 * part(color.greenF()) + 0.0722 * part(color.blueF());
}

double contrast(const QColor& a, const QColor& b) {
  const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
  return (lighter + 0.05) / (darker + 0.05);
}

void setSize(QTextCharFormat& format, double pixels) {
  format.setProperty(QTextFormat::FontPixelSize, static_cast<int>(std::lround(pixels)));
}

class Drawing {
 public:
  Drawing(const BodyLook& look, const QString& keyword)
      : look_(look), keyword_(keyword.toStdString()) {
    drawn_.format.setLineHeight(look.lineHeight, QTextBlockFormat::ProportionalHeight);
  }

  // Each paragraph runs the way that its own text does; the room for a marker is where it begins.
  DrawnBlock take() {
    QTextBlockFormat& format = drawn_.format;
    const bool isMirrored = drawn_.text.isRightToLeft();
    format.setLayoutDirection(isMirrored ? Qt::RightToLeft : Qt::LeftToRight);
    format.setAlignment(Qt::AlignLeft);
    if (isMirrored) {
      format.setRightMargin(format.leftMargin());
      format.setLeftMargin(0);
    }
    return std::move(drawn_);
  }

  void operator()(const markdown::Paragraph& block) {
    add(MarkdownTextView::preparedParagraph(block.text), {});
  }
  void operator()(const markdown::Heading& block) {
    constexpr std::array<int, 3> larger{5, 2, 0};
    QTextCharFormat base;
    base.setFontWeight(QFont::Bold);
    setSize(base, look_.size + larger.at(static_cast<std::size_t>(block.level) - 1));
    setRole(Role::heading);
    drawn_.format.setHeadingLevel(block.level);
    add(MarkdownTextView::prepared(block.text), base);
  }
  void operator()(const markdown::BulletItem& block) {
    constexpr int bulletAt = 2;
    setRole(Role::bullet);
    addMarker(QStringLiteral("•"), bulletAt);
    add(MarkdownTextView::prepared(block.text), {});
  }
  void operator()(const markdown::NumberedItem& block) {
    constexpr int numberAt = 2;
    setRole(Role::number);
    addMarker(qt(block.number) + u'.', numberAt);
    add(MarkdownTextView::prepared(block.text), {});
  }
  void operator()(const markdown::CheckItem& block) {
    QTextCharFormat base;
    if (block.checked) {
      hasTags_ = false;
      base.setProperty(doneProperty, true);
      base.setForeground(look_.doneText);
    }
    setRole(Role::check);
    drawn_.format.setLeftMargin(BlockDrawing::itemIndent);
    add(MarkdownTextView::prepared(block.text), base);
  }
  void operator()(const markdown::Blockquote& block) {
    QTextCharFormat base;
    base.setFontFamilies({look_.serif, look_.sans});
    base.setForeground(look_.quoteText);
    setRole(Role::quote);
    drawn_.format.setLeftMargin(BlockDrawing::quoteIndent);
    add(MarkdownTextView::prepared(block.text), base);
  }
  void operator()(const MarkdownCallout& block) { add(MarkdownTextView::prepared(block.body), {}); }
  void operator()(const markdown::CodeBlock& block) {
    hasTags_ = false;
    StyledText code;
    code.append(block.code, {});
    setRole(Role::code);
    drawn_.format.setLineHeight(codeLineHeight, QTextBlockFormat::ProportionalHeight);
    add(MarkdownTextView::applyingHighlightKeyword(std::move(code), keyword_), {});
  }
  void operator()(const markdown::Mermaid& block) {
    (*this)(markdown::CodeBlock{block.code, std::nullopt});
  }
  void operator()(const MarkdownTable&) {}
  void operator()(const markdown::HorizontalRule&) {}

  void add(const std::string& prepared, const QTextCharFormat& base) {
    add(MarkdownTextView::inlineAttributed(prepared, {.highlightKeyword = keyword_}), base);
  }

 private:
  void add(const StyledText& styled, const QTextCharFormat& base) {
    const std::vector<TagParser::Match> tags =
        hasTags_ ? TagParser::matches(styled.text) : std::vector<TagParser::Match>();
    std::string_view rest = styled.text;
    qsizetype at = 0;
    for (const StyledText::Run& run : styled.runs) {
      const QString text = plainly(rest.substr(0, run.length));
      const QTextCharFormat format = formatOf(run.style, base);
      const bool mayHoldTag = !run.style.isCode && !run.style.isHit && !run.style.link;
      if (tags.empty() || !mayHoldTag || run.style.foreground)
        add(text, format);
      else
        addWithTags(text, format, at, tags);
      at += text.size();
      rest.remove_prefix(run.length);
    }
  }

  // `text` stands at `begin` of what holds the tags.
  void addWithTags(const QString& text, const QTextCharFormat& format, qsizetype begin,
                   const std::vector<TagParser::Match>& tags) {
    QTextCharFormat tagged = format;
    tagged.setForeground(look_.tag);
    qsizetype done = 0;
    const auto addTo = [&](qsizetype end, const QTextCharFormat& its) {
      end = std::min(end, text.size());
      if (end > done) add(text.mid(done, end - done), its);
      done = std::max(done, end);
    };
    for (const TagParser::Match& tag : tags) {
      addTo(static_cast<qsizetype>(tag.tagRange.begin) - 1 - begin, format);
      addTo(static_cast<qsizetype>(tag.tagRange.end) - begin, tagged);
    }
    addTo(text.size(), format);
  }

  void add(const QString& text, const QTextCharFormat& format) {
    drawn_.text += text;
    drawn_.stretches.push_back({text.size(), format});
  }

  void setRole(Role role) { drawn_.format.setProperty(roleProperty, static_cast<int>(role)); }

  // The marker stands in the text, so that it is selected and copied with it; a tab leads to where
  // the item's lines begin.
  void addMarker(const QString& marker, int at) {
    constexpr double leastBlank = 8;
    QFont font(look_.sans);
    font.setPixelSize(static_cast<int>(std::lround(look_.size)));
    const double width = std::max(QFontMetricsF(font).horizontalAdvance(marker) + leastBlank,
                                  static_cast<double>(BlockDrawing::itemIndent - at));
    drawn_.format.setLeftMargin(at + width);
    drawn_.format.setTextIndent(-width);
    drawn_.format.setTabPositions({QTextOption::Tab(width, QTextOption::LeftTab)});
    drawn_.format.setProperty(markerProperty, static_cast<int>(marker.size()) + 1);
    QTextCharFormat format;
    format.setForeground(look_.markerText);
    if (BlockDrawing::roleOf(drawn_.format) == Role::bullet) format.setFontWeight(QFont::Bold);
    add(marker + u'\t', format);
  }

  [[nodiscard]] QTextCharFormat formatOf(const TextStyle& its, QTextCharFormat format) const {
    constexpr double smallest = 9;
    constexpr double largest = 48;
    if (its.weight == FontWeight::bold) format.setFontWeight(QFont::Bold);
    if (its.slant == FontSlant::italic) format.setFontItalic(true);
    if (its.isStruck) format.setFontStrikeOut(true);
    if (its.isCode) {
      format.setFontFamilies({look_.mono, look_.sans});
      format.setFontFixedPitch(true);
      setSize(format, look_.size - 2);
      format.setBackground(look_.codeGround);
    }
    if (its.pointSize) setSize(format, std::clamp(*its.pointSize, smallest, largest));
    if (its.link) {
      format.setAnchor(true);
      format.setAnchorHref(qt(*its.link));
      format.setFontUnderline(true);
      format.setForeground(look_.link);
    }
    if (its.foreground) {
      const TextColor& chosen = *its.foreground;
      const auto color =
          QColor::fromRgbF(static_cast<float>(chosen.red), static_cast<float>(chosen.green),
                           static_cast<float>(chosen.blue));
      format.setForeground(BlockDrawing::readable(color, look_.ground));
    }
    if (its.isHit) {
      format.setBackground(look_.hitGround);
      format.setForeground(look_.hitText);
    }
    return format;
  }

  const BodyLook& look_;
  std::string keyword_;
  bool hasTags_ = true;  // or none are to be told from the text
  DrawnBlock drawn_;
};

}  // namespace

bool BlockDrawing::isDone(const QTextCharFormat& format) {
  return format.boolProperty(doneProperty);
}

Role BlockDrawing::roleOf(const QTextBlockFormat& format) {
  return static_cast<Role>(format.intProperty(roleProperty));
}

qsizetype BlockDrawing::markerLength(const QTextBlockFormat& format) {
  return format.intProperty(markerProperty);
}

DrawnBlock BlockDrawing::drawn(const MarkdownBlock& block, const QString& keyword,
                               const BodyLook& look) {
  Drawing drawing(look, keyword);
  std::visit(drawing, block);
  return drawing.take();
}

DrawnBlock BlockDrawing::drawnText(std::string_view inlineText, const QString& keyword,
                                   const BodyLook& look) {
  Drawing drawing(look, keyword);
  drawing.add(MarkdownTextView::prepared(inlineText), QTextCharFormat());
  return drawing.take();
}

void BlockDrawing::write(const QTextBlock& block, const DrawnBlock& drawn) {
  QTextCursor cursor(block);
  cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
  cursor.removeSelectedText();
  qsizetype at = 0;
  for (const DrawnBlock::Stretch& stretch : drawn.stretches) {
    cursor.insertText(drawn.text.mid(at, stretch.length), stretch.format);
    at += stretch.length;
  }
}

void BlockDrawing::restyle(const QTextBlock& block, const DrawnBlock& drawn) {
  QTextCursor cursor(block);
  for (const DrawnBlock::Stretch& stretch : drawn.stretches) {
    const int end = cursor.position() + static_cast<int>(stretch.length);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    cursor.setCharFormat(stretch.format);
    cursor.setPosition(end);
  }
}

int BlockDrawing::gapBetween(const MarkdownBlock& above, const MarkdownBlock& below) {
  constexpr int close = 3;
  constexpr int apart = 10;
  return standClose(above, below) ? close : apart;
}

QColor BlockDrawing::readable(const QColor& color, const QColor& ground) {
  constexpr double leastContrast = 4.5;
  constexpr int steps = 20;
  const bool isDark = luminance(ground) < 0.18;
  const float end = isDark ? 1 : 0;
  for (int step = 0; step < steps; ++step) {
    const float part = static_cast<float>(step) / steps;
    const auto mixed = [&](float value) { return value + (end - value) * part; };
    const QColor candidate =
        QColor::fromRgbF(mixed(color.redF()), mixed(color.greenF()), mixed(color.blueF()));
    if (contrast(candidate, ground) >= leastContrast) return candidate;
  }
  return isDark ? QColor(Qt::white) : QColor(Qt::black);
}

}  // namespace nomely
