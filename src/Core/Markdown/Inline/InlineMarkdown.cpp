#include "Core/Markdown/Inline/InlineMarkdown.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>

#include <cmark-gfm-core-extensions.h>
#include <cmark-gfm.h>

#include "Core/Markdown/Text/LinkScheme.h"
#include "Platform/Text/Replacing.h"

namespace nomely {
namespace {

constexpr auto npos = std::string_view::npos;
constexpr std::string_view hardBreak = "  ";

// The parser knows whole documents only. So that it finds one paragraph in any text, each line
// stands between guards: white space that begins no block, is no indentation and isn't trimmed, and
// that is to emphasis what the edge of a line is. The text itself lacks them.
struct Guards {
  std::string_view start;
  std::string_view end;
  std::string_view carriageReturn;  // after the start of a line that one precedes

  static std::optional<Guards> missingIn(std::string_view text) {
    constexpr std::array<std::string_view, 14> spaces{
        "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006",
        "\u2007", "\u2008", "\u2009", "\u200A", "\u202F", "\u205F", "\u1680"};
    std::array<std::string_view, 3> missing;
    std::size_t count = 0;
    for (std::size_t i = 0; i < spaces.size() && count < missing.size(); ++i)
      if (text.find(spaces.at(i)) == npos) missing.at(count++) = spaces.at(i);
    if (count < missing.size()) return std::nullopt;
    return Guards{missing[0], missing[1], missing[2]};
  }

  [[nodiscard]] bool isAt(std::string_view text) const {
    return text.starts_with(start) || text.starts_with(end) || text.starts_with(carriageReturn);
  }
};

// The parser looks for the end of each of these anew, or goes back over all that were opened: time
// in proportion to the square of their number. No honest text has as many.
std::string withoutCostlyMarks(std::string text, std::string_view guard) {
  constexpr std::array<std::string_view, 3> costly{"<?", "<!", "!["};
  constexpr std::size_t most = 200;
  for (const std::string_view mark : costly) {
    std::size_t count = 0;
    for (std::size_t at = text.find(mark); at != npos && count < most; at = text.find(mark, at + 1))
      ++count;
    if (count < most) continue;
    std::string apart;
    apart.reserve(text.size() * 2);
    for (std::size_t at = 0; at < text.size(); ++at) {
      apart += text[at];
      if (std::string_view(text).substr(at).starts_with(mark)) apart += guard;
    }
    text = std::move(apart);
  }
  return text;
}

// `line`, which a line feed follows, without the blanks of a hard break.
std::string_view withoutHardBreak(std::string_view line) {
  return line.ends_with(hardBreak) ? line.substr(0, line.find_last_not_of(' ') + 1) : line;
}

// A hard break is a line feed like any other here; but a backslash has to stand right before it
// to be seen.
std::string guarded(std::string_view text, const Guards& guards) {
  std::string lines;
  lines.reserve(text.size() + 64);
  lines += guards.start;
  while (true) {
    const std::size_t end = text.find_first_of("\r\n");
    const bool isFeed = end != npos && text[end] == '\n';
    const std::string_view line =
        isFeed ? withoutHardBreak(text.substr(0, end)) : text.substr(0, end);
    lines += line;
    if (!isFeed || !line.ends_with('\\')) lines += guards.end;
    if (end == npos) return lines;
    (lines += '\n') += guards.start;
    if (!isFeed) lines += guards.carriageReturn;
    text.remove_prefix(end + 1);
  }
}

struct Free {
  void operator()(cmark_parser* parser) const { cmark_parser_free(parser); }
  void operator()(cmark_node* node) const { cmark_node_free(node); }
  void operator()(cmark_iter* iterator) const { cmark_iter_free(iterator); }
};
using Document = std::unique_ptr<cmark_node, Free>;

Document documentOf(std::string_view text) {
  static cmark_syntax_extension* const strikethrough = [] {
    cmark_gfm_core_extensions_ensure_registered();
    return cmark_find_syntax_extension("strikethrough");
  }();
  // One tilde is common between numbers.
  const std::unique_ptr<cmark_parser, Free> parser(
      cmark_parser_new(CMARK_OPT_STRIKETHROUGH_DOUBLE_TILDE));
  cmark_parser_attach_syntax_extension(parser.get(), strikethrough);
  cmark_parser_feed(parser.get(), text.data(), text.size());
  return Document(cmark_parser_finish(parser.get()));
}

// Goes over the nodes of a document, which may lie as deep as the text is long, and gathers what
// they show.
class Gatherer {
 public:
  explicit Gatherer(const Guards& guards) : guards_(guards) {}

  StyledText gather(cmark_node* document) {
    const std::unique_ptr<cmark_iter, Free> iterator(cmark_iter_new(document));
    for (auto event = cmark_iter_next(iterator.get()); event != CMARK_EVENT_DONE;
         event = cmark_iter_next(iterator.get())) {
      cmark_node* const node = cmark_iter_get_node(iterator.get());
      if (event == CMARK_EVENT_ENTER) addContent(node);
      passBoundary(node, event == CMARK_EVENT_ENTER ? 1 : -1);
    }
    return std::move(gathered_);
  }

 private:
  void addContent(cmark_node* node);
  void addCode(std::string_view code, const TextStyle& style);
  void addText(std::string_view text, const TextStyle& style);
  // `step` is 1 where the node begins and -1 where it ends.
  void passBoundary(cmark_node* node, int step);
  [[nodiscard]] std::shared_ptr<const std::string> addressOf(cmark_node* link) const;
  [[nodiscard]] TextStyle style() const;

  Guards guards_;
  StyledText gathered_;
  int strong_ = 0;
  int emphasized_ = 0;
  int struck_ = 0;
  std::shared_ptr<const std::string> link_;
};

void Gatherer::addContent(cmark_node* node) {
  const auto type = cmark_node_get_type(node);
  const char* const literal = cmark_node_get_literal(node);
  TextStyle its = style();
  if (type == CMARK_NODE_SOFTBREAK || type == CMARK_NODE_LINEBREAK) {
    gathered_.append("\n", its);
  } else if (type == CMARK_NODE_CODE && literal != nullptr) {
    its.isCode = true;
    addCode(literal, its);
  } else if (literal != nullptr) {
    addText(literal, its);
  }
}

// In code, the parser makes a blank of a line feed.
void Gatherer::addCode(std::string_view code, const TextStyle& style) {
  std::string text;
  const std::string feed = std::string(" ").append(guards_.start);
  for (std::size_t at = code.find(feed); at != npos; at = code.find(feed)) {
    text.append(code.substr(0, at)) += '\n';
    code.remove_prefix(at + feed.size());
  }
  addText(text.append(code), style);
}

void Gatherer::addText(std::string_view text, const TextStyle& style) {
  std::size_t begin = 0;
  for (std::size_t at = 0; at < text.size();) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if ((byte != 0xE1 && byte != 0xE2) || !guards_.isAt(text.substr(at))) {
      ++at;
      continue;
    }
    gathered_.append(text.substr(begin, at - begin), style);
    const bool isReturn = text.substr(at).starts_with(guards_.carriageReturn);
    if (isReturn && gathered_.text.ends_with('\n')) gathered_.text.back() = '\r';
    begin = at += guards_.start.size();
  }
  gathered_.append(text.substr(begin), style);
}

void Gatherer::passBoundary(cmark_node* node, int step) {
  const auto type = cmark_node_get_type(node);
  if (type == CMARK_NODE_STRONG) strong_ += step;
  if (type == CMARK_NODE_EMPH) emphasized_ += step;
  if (cmark_node_get_type_string(node) == std::string_view("strikethrough")) struck_ += step;
  // Links hold no links.
  if (type == CMARK_NODE_LINK) link_ = step > 0 ? addressOf(node) : nullptr;
}

std::shared_ptr<const std::string> Gatherer::addressOf(cmark_node* link) const {
  const char* const url = cmark_node_get_url(link);
  std::string address(url == nullptr ? "" : url);
  for (const std::string_view guard : {guards_.start, guards_.end, guards_.carriageReturn})
    address = replacingAll(address, guard, "");
  if (address.empty() || !mayBeLinked(address)) return nullptr;
  return std::make_shared<const std::string>(std::move(address));
}

TextStyle Gatherer::style() const {
  TextStyle now;
  if (strong_ > 0) now.weight = FontWeight::bold;
  if (emphasized_ > 0) now.slant = FontSlant::italic;
  now.isStruck = struck_ > 0;
  now.link = link_;
  return now;
}

bool mayHoldMarks(std::string_view text) {
  constexpr std::string_view marks = "*_`[<&\\~";
  return std::ranges::any_of(text, [&](char c) { return marks.find(c) != npos; });
}

StyledText withoutMarks(std::string_view text) {
  StyledText plain;
  for (std::size_t feed = text.find('\n'); feed != npos; feed = text.find('\n')) {
    plain.append(withoutHardBreak(text.substr(0, feed)), {});
    plain.append("\n", {});
    text.remove_prefix(feed + 1);
  }
  plain.append(text, {});
  return plain;
}

}  // namespace

StyledText parsedInline(std::string_view text) {
  // The parser would change a character zero.
  const auto guards =
      mayHoldMarks(text) && text.find('\0') == npos ? Guards::missingIn(text) : std::nullopt;
  if (!guards) return withoutMarks(text);
  const std::string lines = guarded(withoutCostlyMarks(std::string(text), guards->end), *guards);
  const Document document = documentOf(lines);
  return Gatherer(*guards).gather(document.get());
}

std::vector<ByteRange> emphasizedRanges(std::string_view line) {
  std::vector<ByteRange> found;
  if (line.find_first_of("*_") == npos || line.find_first_of(std::string_view("\0\r\n", 3)) != npos)
    return found;
  const auto guards = Guards::missingIn(line);
  // Marks that were drawn apart would shift what follows them.
  if (!guards || withoutCostlyMarks(std::string(line), guards->end).size() != line.size())
    return found;
  const Document document = documentOf(guarded(line, *guards));
  const std::unique_ptr<cmark_iter, Free> iterator(cmark_iter_new(document.get()));
  const auto placed = [&](int column) {
    const auto place = static_cast<std::size_t>(std::max(column, 0));
    return std::min(std::max(place, guards->start.size()) - guards->start.size(), line.size());
  };
  for (auto event = cmark_iter_next(iterator.get()); event != CMARK_EVENT_DONE;
       event = cmark_iter_next(iterator.get())) {
    cmark_node* const node = cmark_iter_get_node(iterator.get());
    if (event != CMARK_EVENT_ENTER || cmark_node_get_type(node) != CMARK_NODE_EMPH) continue;
    // Columns count bytes, the first of all as 1.
    const ByteRange range{placed(cmark_node_get_start_column(node) - 1),
                          placed(cmark_node_get_end_column(node))};
    if (found.empty() || range.begin >= found.back().end) found.push_back(range);
  }
  return found;
}

}  // namespace nomely
