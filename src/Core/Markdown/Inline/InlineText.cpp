#include "Core/Markdown/Inline/InlineText.h"

#include <algorithm>
#include <vector>

#include "Core/Markdown/Blocks/MarkdownRenderCache.h"
#include "Core/Markdown/Inline/CodeAndLinks.h"
#include "Core/Markdown/Inline/ColorSpans.h"
#include "Core/Markdown/Inline/InlineMarkdown.h"
#include "Core/Markdown/Text/LinkDetector.h"
#include "Platform/Text/FoldedText.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr auto npos = std::string_view::npos;
constexpr std::string_view boldMark = "**";

struct Mention {
  ByteRange range;
  ByteRange label;
};

// The next @\[\[[^\]|]+\|([^\]]+)\]\] at or after `from`.
std::optional<Mention> nextMention(std::string_view text, std::size_t from) {
  constexpr std::string_view opening = "@[[";
  constexpr std::string_view closing = "]]";
  for (std::size_t at = text.find(opening, from); at != npos;) {
    const std::size_t identifier = at + opening.size();
    const std::size_t bar = text.find_first_of("]|", identifier);
    if (bar == npos) return std::nullopt;
    std::size_t end = bar;
    if (text[bar] == '|' && bar > identifier) {
      end = text.find(']', bar + 1);
      if (end == npos) return std::nullopt;
      if (end > bar + 1 && text.substr(end).starts_with(closing))
        return Mention{{at, end + closing.size()}, {bar + 1, end}};
    }
    // What stopped this one stops each that begins before it.
    at = text.find(opening, end);
  }
  return std::nullopt;
}

// In the order of the text, a colour before a size at the same place.
std::vector<SpanMatch> spansOf(std::string_view text) {
  std::vector<SpanMatch> spans = ColorSpans::colors(text);
  std::vector<SpanMatch> sizes = ColorSpans::sizes(text);
  spans.insert(spans.end(), std::make_move_iterator(sizes.begin()),
               std::make_move_iterator(sizes.end()));
  std::ranges::stable_sort(spans, {}, [](const SpanMatch& span) { return span.range.begin; });
  return spans;
}

StyledText attributedSpan(std::string_view text, const SpanMatch& span,
                          const std::optional<TextColor>& defaultColor) {
  StyledText content =
      MarkdownTextView::markdownAttributed(span.contentRange.of(text), defaultColor);
  if (const auto* color = std::get_if<SpanMatch::Color>(&span.kind)) {
    const auto chosen = TextColor::fromHex(color->hex);
    content.restyle([&](TextStyle& style) { style.foreground = chosen ? chosen : defaultColor; });
  } else {
    const auto size = static_cast<double>(std::get<SpanMatch::FontSize>(span.kind).px);
    content.restyle([&](TextStyle& style) { style.pointSize = size; });
  }
  return content;
}

StyledText attributedWithSpans(std::string_view text,
                               const std::optional<TextColor>& defaultColor) {
  const std::vector<SpanMatch> spans = spansOf(text);
  if (spans.empty()) return MarkdownTextView::markdownAttributed(text, defaultColor);
  StyledText attributed;
  std::size_t cursor = 0;
  for (const SpanMatch& span : spans) {
    if (cursor < span.range.begin)
      attributed.append(MarkdownTextView::markdownAttributed(
          text.substr(cursor, span.range.begin - cursor), defaultColor));
    attributed.append(attributedSpan(text, span, defaultColor));
    cursor = span.range.end;
  }
  attributed.append(MarkdownTextView::markdownAttributed(text.substr(cursor), defaultColor));
  return attributed;
}

}  // namespace

std::string MarkdownTextView::prepared(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  std::size_t copied = 0;
  for (auto mention = nextMention(text, 0); mention;
       mention = nextMention(text, mention->range.end)) {
    out.append(text.substr(copied, mention->range.begin - copied));
    out.append("**@").append(mention->label.of(text)).append(boldMark);
    copied = mention->range.end;
  }
  return out.append(text.substr(copied));
}

std::string MarkdownTextView::preparedParagraph(std::string_view text) {
  std::string mentioned = prepared(text);
  if (mentioned.find('\n') == npos) return mentioned;
  std::string broken;
  broken.reserve(mentioned.size() + mentioned.size() / 16);
  for (const char c : mentioned) {
    if (c == '\n') broken += "  ";
    broken += c;
  }
  return broken;
}

StyledText MarkdownTextView::inlineAttributed(std::string_view text, const InlineOptions& options) {
  const std::string normalized = ColorSpans::normalizeColorSpansInsideMarkdown(
      ColorSpans::normalizeColorSpansInsideMarkdown(text, boldMark), "*");
  const std::string colorKey =
      options.defaultColor ? options.defaultColor->description() : std::string();
  MarkdownRenderCache& cache = MarkdownRenderCache::shared();
  auto attributed = cache.attributed(normalized, colorKey);
  if (!attributed) {
    attributed =
        std::make_shared<const StyledText>(attributedWithSpans(normalized, options.defaultColor));
    cache.storeAttributed(attributed, normalized, colorKey);
  }
  return applyingHighlightKeyword(*attributed, options.highlightKeyword);
}

StyledText MarkdownTextView::applyingHighlightKeyword(StyledText text, std::string_view keyword) {
  const std::string_view sought = trimHorizontal(keyword);
  if (sought.empty()) return text;
  StyledText marked;
  const std::string_view all = text.text;
  std::size_t at = 0;
  auto run = text.runs.begin();
  std::size_t runEnd = 0;
  // Copies up to `end`, each run's part with a style of its own.
  const auto copyTo = [&](std::size_t end, bool isHit) {
    while (at < end) {
      if (at == runEnd) runEnd += run++->length;
      const std::size_t stop = std::min(end, runEnd);
      TextStyle style = std::prev(run)->style;
      style.isHit = isHit;
      marked.append(all.substr(at, stop - at), style);
      at = stop;
    }
  };
  for (const auto& hit : TextNeedle(sought).allIn(all)) {
    copyTo(hit.begin, false);
    copyTo(hit.end, true);
  }
  copyTo(all.size(), false);
  return marked;
}

StyledText MarkdownTextView::markdownAttributed(std::string_view text,
                                                const std::optional<TextColor>& defaultColor) {
  StyledText attributed = parsedInline(wrapBareURLsAsMarkdownLinks(text));
  if (attributed.text.find(boldMark) != npos) return manualBoldFallback(text, defaultColor);
  attributed.restyle([&](TextStyle& style) {
    if (style.link == nullptr) style.foreground = defaultColor;
  });
  return attributed;
}

StyledText MarkdownTextView::manualBoldFallback(std::string_view text,
                                                const std::optional<TextColor>& defaultColor) {
  TextStyle plain;
  plain.foreground = defaultColor;
  TextStyle bold = plain;
  bold.weight = FontWeight::bold;
  StyledText styled;
  std::size_t cursor = 0;
  for (std::size_t open = text.find(boldMark); open != npos; open = text.find(boldMark, cursor)) {
    // \*\*([\s\S]+?)\*\*: at least one character between them.
    const std::size_t content = open + boldMark.size();
    const std::size_t close = text.find(boldMark, content + 1);
    if (close == npos) break;
    styled.append(text.substr(cursor, open - cursor), plain);
    styled.append(text.substr(content, close - content), bold);
    cursor = close + boldMark.size();
  }
  if (cursor > 0) {
    styled.append(text.substr(cursor), plain);
    return styled;
  }
  for (std::size_t mark = text.find(boldMark); mark != npos; mark = text.find(boldMark, cursor)) {
    styled.append(text.substr(cursor, mark - cursor), plain);
    cursor = mark + boldMark.size();
  }
  styled.append(text.substr(cursor), plain);
  return styled;
}

std::string MarkdownTextView::wrapBareURLsAsMarkdownLinks(std::string_view text) {
  std::string wrapped;
  wrapped.reserve(text.size());
  std::size_t copied = 0;
  const std::vector<LinkDetector::Place> places = LinkDetector::places(text);
  if (places.empty()) return std::string(text);
  const std::vector<ByteRange> taken = codeAndLinks(text);
  auto next = taken.begin();
  for (const LinkDetector::Place& link : places) {
    while (next != taken.end() && next->end <= link.begin) ++next;
    const bool isTaken = next != taken.end() && next->begin <= link.begin;
    if (isTaken || text.substr(0, link.begin).ends_with("](")) continue;
    // "a.com/[b](c)" is an address and a written link.
    const std::size_t end = next != taken.end() ? std::min(link.end, next->begin) : link.end;
    const std::string_view source = text.substr(link.begin, end - link.begin);
    wrapped.append(text.substr(copied, link.begin - copied));
    wrapped.append("[").append(source).append("](").append(source).append(")");
    copied = end;
  }
  return wrapped.append(text.substr(copied));
}

}  // namespace nomely
