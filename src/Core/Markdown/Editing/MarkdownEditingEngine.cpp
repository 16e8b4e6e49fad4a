#include "Core/Markdown/Editing/MarkdownEditingEngine.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <stdexcept>
#include <vector>

#include "Core/Markdown/Editing/ListMarkers.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::u16string_view boldMarker = u"**";

std::u16string_view part(std::u16string_view text, TextRange range) {
  return text.substr(range.begin, range.length());
}

std::u16string replacing(std::u16string_view text, TextRange range, std::u16string_view with) {
  std::u16string replaced;
  replaced.reserve(text.size() - range.length() + with.size());
  replaced.append(text.substr(0, range.begin)).append(with).append(text.substr(range.end));
  return replaced;
}

// The whole lines that `range` touches; the last one's line feed belongs to them if wanted. A
// selection that ends just after a line feed does not touch the line after it.
enum class LineFeed { without, with };
TextRange linesOf(std::u16string_view text, TextRange range, LineFeed lineFeed) {
  const std::size_t before =
      range.begin == 0 ? std::u16string_view::npos : text.rfind(u'\n', range.begin - 1);
  const std::size_t begin = before == std::u16string_view::npos ? 0 : before + 1;
  const std::size_t last = range.length() > 0 ? range.end - 1 : range.end;
  const std::size_t feed = text.find(u'\n', last);
  if (feed == std::u16string_view::npos) return {begin, text.size()};
  return {begin, lineFeed == LineFeed::with ? feed + 1 : feed};
}

struct Marks {
  std::u16string_view before;
  std::u16string_view after;
  std::u16string_view placeholder;
};

MarkdownEditResult wrap(std::u16string_view text, TextRange selection, const Marks& marks) {
  const std::u16string_view inner =
      selection.length() > 0 ? part(text, selection) : marks.placeholder;
  std::u16string wrapped(marks.before);
  wrapped.append(inner).append(marks.after);
  return {replacing(text, selection, wrapped),
          {selection.begin + marks.before.size(), inner.size()}};
}

// The markers of the pair around a caret, looked for in its line alone.
std::optional<MarkdownEditResult> unwrapAroundCaret(std::u16string_view text, std::size_t caret,
                                                    std::u16string_view marker) {
  const TextRange line = linesOf(text, {caret, caret}, LineFeed::without);
  if (caret - line.begin < marker.size()) return std::nullopt;
  const std::u16string_view lineText = part(text, line);
  const std::size_t opening = lineText.rfind(marker, caret - line.begin - marker.size());
  const std::size_t closing = lineText.find(marker, caret - line.begin);
  if (opening == std::u16string_view::npos || closing == std::u16string_view::npos ||
      opening + marker.size() >= closing)
    return std::nullopt;
  const TextRange whole{line.begin + opening, line.begin + closing + marker.size()};
  const std::u16string_view content =
      text.substr(whole.begin + marker.size(), whole.length() - 2 * marker.size());
  return MarkdownEditResult{replacing(text, whole, content), {whole.begin, content.size()}};
}

std::optional<MarkdownEditResult> unwrap(std::u16string_view text, TextRange selection,
                                         std::u16string_view marker) {
  if (selection.length() == 0) return unwrapAroundCaret(text, selection.begin, marker);
  const std::u16string_view selected = part(text, selection);
  if (text.substr(0, selection.begin).ends_with(marker) &&
      text.substr(selection.end).starts_with(marker)) {
    const TextRange whole{selection.begin - marker.size(), selection.end + marker.size()};
    return MarkdownEditResult{replacing(text, whole, selected), {whole.begin, selected.size()}};
  }
  if (selected.size() < 2 * marker.size() || !selected.starts_with(marker) ||
      !selected.ends_with(marker))
    return std::nullopt;
  const std::u16string_view content =
      selected.substr(marker.size(), selected.size() - 2 * marker.size());
  return MarkdownEditResult{replacing(text, selection, content), {selection.begin, content.size()}};
}

// What a line becomes; `place` counts the lines of the selection from 1.
using LineTransform = std::function<std::u16string(std::u16string_view line, std::size_t place)>;

MarkdownEditResult applyLinePrefixTransform(std::u16string_view text, TextRange selection,
                                            const LineTransform& transform) {
  const TextRange range = linesOf(text, selection, LineFeed::with);
  std::u16string_view rest = part(text, range);
  const bool endsInLineFeed = rest.ends_with(u'\n');
  if (endsInLineFeed) rest.remove_suffix(1);
  std::u16string changed;
  for (std::size_t place = 1;; ++place) {
    const std::size_t end = rest.find(u'\n');
    changed += transform(rest.substr(0, end), place);
    if (end == std::u16string_view::npos) break;
    changed += u'\n';
    rest.remove_prefix(end + 1);
  }
  if (endsInLineFeed) changed += u'\n';
  return {replacing(text, range, changed), {range.begin, changed.size()}};
}

std::u16string joined(std::u16string_view prefix, std::u16string_view line) {
  std::u16string whole(prefix);
  return whole.append(line);
}

// Puts `prefix` at the start of lines that don't begin with it or with one of `others`.
LineTransform prefixing(std::u16string_view prefix, std::vector<std::u16string_view> others = {}) {
  others.push_back(prefix);
  return [prefix, others = std::move(others)](std::u16string_view line, std::size_t) {
    const bool stays = std::ranges::any_of(
        others, [&](std::u16string_view start) { return line.starts_with(start); });
    return stays ? std::u16string(line) : joined(prefix, line);
  };
}

std::u16string outdented(std::u16string_view line) {
  for (const std::u16string_view start : {u"    ", u"\t", u"  "})
    if (line.starts_with(start)) return std::u16string(line.substr(start.size()));
  return std::u16string(line);
}

std::u16string numbered(std::u16string_view line, std::size_t place) {
  if (const auto number = ListMarkers::number(line)) {
    line.remove_prefix(number->length);
    line.remove_prefix(ListMarkers::spaceLength(line));
  }
  return joined(toUtf16(std::to_string(place)) + u". ", line);
}

std::u16string sizeSpan(double size) {
  const double rounded = std::round(size);
  constexpr double limit = 0x1p63;
  if (!(rounded >= -limit && rounded < limit)) throw std::invalid_argument("font size");
  return u"<span style=\"font-size:" + toUtf16(std::to_string(static_cast<std::int64_t>(rounded))) +
         u"px\">";
}

// One command on one normalized selection.
struct Application {
  std::u16string_view text;
  TextRange selection;

  [[nodiscard]] MarkdownEditResult lines(const LineTransform& transform) const {
    return applyLinePrefixTransform(text, selection, transform);
  }

  MarkdownEditResult operator()(const MarkdownEdit::Heading& heading) const {
    constexpr std::int64_t deepest = 6;
    const auto level =
        static_cast<std::size_t>(std::clamp(heading.level, std::int64_t{1}, deepest));
    const std::u16string prefix = std::u16string(level, u'#') + u' ';
    return lines([&](std::u16string_view line, std::size_t) {
      return joined(prefix, line.substr(ListMarkers::headingLength(line)));
    });
  }
  MarkdownEditResult operator()(const MarkdownEdit::InsertBlock& insert) const {
    const bool startsLine = selection.begin == 0 || text[selection.begin - 1] == u'\n';
    const std::u16string block = joined(startsLine ? u"" : u"\n", insert.block);
    return {replacing(text, selection, block), {selection.begin + block.size(), 0}};
  }
  MarkdownEditResult operator()(const MarkdownEdit::FontSize& font) const {
    return wrap(text, selection, {sizeSpan(font.size), u"</span>", u"大字"});
  }
  MarkdownEditResult operator()(MarkdownEdit::Bold /*unused*/) const {
    if (auto unwrapped = unwrap(text, selection, boldMarker)) return *std::move(unwrapped);
    return wrap(text, selection, {boldMarker, boldMarker, u"加粗文字"});
  }
  MarkdownEditResult operator()(MarkdownEdit::Italic /*unused*/) const {
    return wrap(text, selection, {u"*", u"*", u"斜体文字"});
  }
  MarkdownEditResult operator()(MarkdownEdit::InlineCode /*unused*/) const {
    return wrap(text, selection, {u"`", u"`", u"代码"});
  }
  MarkdownEditResult operator()(MarkdownEdit::Link /*unused*/) const {
    MarkdownEditResult result = wrap(text, selection, {u"[", u"](url)", u"链接文字"});
    // The address is what remains to be typed.
    TextSelection& label = result.selectedRange;
    label = {label.location + label.length + 2, 3};
    return result;
  }
  MarkdownEditResult operator()(MarkdownEdit::Quote /*unused*/) const {
    return lines(prefixing(u"> "));
  }
  MarkdownEditResult operator()(MarkdownEdit::Checklist /*unused*/) const {
    return lines(prefixing(u"- [ ] ", {u"- [x] ", u"- [X] "}));
  }
  MarkdownEditResult operator()(MarkdownEdit::UnorderedList /*unused*/) const {
    return lines(prefixing(u"- "));
  }
  MarkdownEditResult operator()(MarkdownEdit::OrderedList /*unused*/) const {
    return lines(numbered);
  }
  MarkdownEditResult operator()(MarkdownEdit::CodeBlock /*unused*/) const {
    return wrap(text, selection, {u"\n```\n", u"\n```\n", u"代码"});
  }
};

}  // namespace

MarkdownEditResult MarkdownEditingEngine::apply(const MarkdownEditCommand& command,
                                                std::u16string_view text,
                                                TextSelection selectedRange) {
  return std::visit(Application{text, normalized(selectedRange, text)}, command);
}

std::optional<MarkdownEditResult> MarkdownEditingEngine::applyNewline(std::u16string_view text,
                                                                      TextSelection selectedRange) {
  const TextRange selection = normalized(selectedRange, text);
  if (selection.length() > 0) return std::nullopt;
  const TextRange line = linesOf(text, selection, LineFeed::without);
  if (ListMarkers::isEmptyItem(part(text, line)))
    return MarkdownEditResult{replacing(text, line, {}), {line.begin, 0}};
  const auto prefix = ListMarkers::continuation(part(text, {line.begin, selection.begin}));
  if (!prefix) return std::nullopt;
  return MarkdownEditResult{replacing(text, selection, u'\n' + *prefix),
                            {selection.begin + 1 + prefix->size(), 0}};
}

MarkdownEditResult MarkdownEditingEngine::indentSelection(std::u16string_view text,
                                                          TextSelection selectedRange,
                                                          Indentation indentation) {
  return applyLinePrefixTransform(
      text, normalized(selectedRange, text), [&](std::u16string_view line, std::size_t) {
        return indentation == Indentation::indent ? joined(u"    ", line) : outdented(line);
      });
}

}  // namespace nomely
