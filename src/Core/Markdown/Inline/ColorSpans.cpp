#include "Core/Markdown/Inline/ColorSpans.h"

#include <functional>
#include <optional>

#include "Core/Extensions/TextNumbers.h"
#include "Core/Markdown/Blocks/LineRules.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr auto npos = std::string_view::npos;
constexpr std::string_view tagName = "<span";
constexpr std::string_view tagEnd = "\">";
constexpr std::string_view closing = "</span>";
constexpr std::size_t colorLength = 7;

enum class Property { color, fontSize };

struct Opening {
  ByteRange range;
  std::string_view value;
};

std::size_t spaceLength(std::string_view text) {
  std::size_t length = 0;
  while (length < text.size()) {
    const DecodedCharacter next = decodeFirst(text.substr(length));
    if (!isSpaceOrBreak(next.value)) break;
    length += next.length;
  }
  return length;
}

// Bytes of the value at the beginning of the text, 0 for none.
std::size_t valueLength(std::string_view text, Property property) {
  if (property == Property::fontSize) {
    const std::size_t digits = LineRules::digitsLength(text);
    return text.substr(digits).starts_with("px") ? digits : 0;
  }
  const std::string_view hex = text.substr(0, colorLength);
  const bool isColor = hex.size() == colorLength && hex.front() == '#' &&
                       hex.substr(1).find_first_not_of("0123456789abcdefABCDEF") == npos;
  return isColor ? colorLength : 0;
}

// The tag that begins with the text's "<span".
std::optional<Opening> openingAt(std::string_view text, Property property) {
  const bool isColor = property == Property::color;
  const std::string_view style = isColor ? "style=\"color:" : "style=\"font-size:";
  const std::size_t space = spaceLength(text.substr(tagName.size()));
  std::size_t at = tagName.size() + space;
  if (space == 0 || !text.substr(at).starts_with(style)) return std::nullopt;
  at += style.size();
  at += spaceLength(text.substr(at));
  const std::size_t length = valueLength(text.substr(at), property);
  if (length == 0) return std::nullopt;
  const std::string_view value = text.substr(at, length);
  at += length + (isColor ? 0 : 2);
  if (!text.substr(at).starts_with(tagEnd)) return std::nullopt;
  return Opening{{0, at + tagEnd.size()}, value};
}

// The first opening tag that begins at `from` or later.
std::optional<Opening> nextOpening(std::string_view text, std::size_t from, Property property) {
  for (std::size_t at = text.find(tagName, from); at != npos; at = text.find(tagName, at + 1)) {
    if (const auto found = openingAt(text.substr(at), property))
      return Opening{{at, at + found->range.end}, found->value};
  }
  return std::nullopt;
}

using Visit = std::function<void(const Opening&, const SpanMatch&)>;

void forEachSpan(std::string_view text, Property property, const Visit& visit) {
  for (std::size_t from = 0;;) {
    const auto opening = nextOpening(text, from, property);
    if (!opening) return;
    // When this one is not closed, no later one is.
    const std::size_t end = text.find(closing, opening->range.end);
    if (end == npos) return;
    from = end + closing.size();
    visit(*opening, {{opening->range.begin, from}, {opening->range.end, end}, {}});
  }
}

std::string wrapMarkdown(std::string_view text, std::string_view marker) {
  if (text.empty()) return {};
  return std::string(marker).append(text).append(marker);
}

struct Region {
  ByteRange range;
  ByteRange content;
};

// What two markers enclose: the marker, ([\s\S]+?), the marker. For "*" no further "*" may stand
// before the first marker or after the second.
std::optional<Region> nextRegion(std::string_view text, std::size_t from, std::string_view marker) {
  const bool isSingle = marker == "*";
  std::size_t open = text.find(marker, from);
  while (isSingle && open != npos && open > 0 && text[open - 1] == '*')
    open = text.find(marker, open + 1);
  if (open == npos) return std::nullopt;
  const std::size_t content = open + marker.size();
  std::size_t close = text.find(marker, content + 1);
  while (isSingle && close != npos && close + 1 < text.size() && text[close + 1] == '*')
    close = text.find(marker, close + 1);
  if (close == npos) return std::nullopt;
  return Region{{open, close + marker.size()}, {content, close}};
}

}  // namespace

std::vector<SpanMatch> ColorSpans::colors(std::string_view text) {
  std::vector<SpanMatch> found;
  forEachSpan(text, Property::color, [&](const Opening& opening, SpanMatch span) {
    span.kind = SpanMatch::Color{std::string(opening.value)};
    found.push_back(std::move(span));
  });
  return found;
}

std::vector<SpanMatch> ColorSpans::sizes(std::string_view text) {
  std::vector<SpanMatch> found;
  forEachSpan(text, Property::fontSize, [&](const Opening& opening, SpanMatch span) {
    const auto pixels = parseDecimal(opening.value);
    if (!pixels) return;
    span.kind = SpanMatch::FontSize{*pixels};
    found.push_back(std::move(span));
  });
  return found;
}

std::size_t ColorSpans::openingCount(std::string_view text) {
  std::size_t count = 0;
  for (auto opening = nextOpening(text, 0, Property::color); opening;
       opening = nextOpening(text, opening->range.end, Property::color))
    ++count;
  return count;
}

std::string ColorSpans::normalizeColorSpansInsideMarkdown(std::string_view text,
                                                          std::string_view marker) {
  // Without a span there is nothing to do, and most texts have none.
  if (text.find(closing) == npos) return std::string(text);
  std::string normalized;
  normalized.reserve(text.size());
  std::size_t copied = 0;
  for (auto region = nextRegion(text, 0, marker); region;
       region = nextRegion(text, region->range.end, marker)) {
    const std::string_view content = region->content.of(text);
    if (content.find(closing) == npos || colors(content).empty()) continue;
    normalized.append(text.substr(copied, region->range.begin - copied));
    normalized.append(normalizeColorSpans(content, marker));
    copied = region->range.end;
  }
  return normalized.append(text.substr(copied));
}

std::string ColorSpans::normalizeColorSpans(std::string_view inMarkedContent,
                                            std::string_view marker) {
  std::string normalized;
  std::size_t copied = 0;
  const auto addPiece = [&](std::size_t end) {
    normalized += wrapMarkdown(inMarkedContent.substr(copied, end - copied), marker);
  };
  for (const SpanMatch& span : colors(inMarkedContent)) {
    addPiece(span.range.begin);
    normalized.append("<span style=\"color: ")
        .append(std::get<SpanMatch::Color>(span.kind).hex)
        .append(tagEnd)
        .append(wrapMarkdown(span.contentRange.of(inMarkedContent), marker))
        .append(closing);
    copied = span.range.end;
  }
  addPiece(inMarkedContent.size());
  return normalized;
}

}  // namespace nomely
