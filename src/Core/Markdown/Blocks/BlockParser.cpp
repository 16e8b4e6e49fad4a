#include "Core/Markdown/Blocks/BlockParser.h"

#include <algorithm>
#include <array>

#include "Core/Markdown/Blocks/LineRules.h"
#include "Core/Markdown/Blocks/MarkdownRenderCache.h"
#include "Core/Markdown/Blocks/SmartSplit.h"
#include "Core/Markdown/Tables/MarkdownTableParser.h"
#include "Core/Markdown/Text/MemoTextSanitizer.h"
#include "Core/Markdown/Text/TextLines.h"
#include "Platform/Text/Ascii.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using Lines = std::vector<std::string_view>;

constexpr auto npos = std::string_view::npos;
constexpr std::string_view fence = "```";
constexpr std::size_t mostReserved = 64;

std::string joined(std::span<const std::string_view> lines) {
  std::string text;
  std::size_t size = lines.size();
  for (const std::string_view line : lines) size += line.size();
  text.reserve(size);
  for (const std::string_view line : lines) (text += line) += '\n';
  if (!text.empty()) text.pop_back();
  return text;
}

std::string capitalized(std::string_view word) {
  std::string text(word);
  text.front() = static_cast<char>(text.front() & ~0x20);
  return text;
}

// Adds blocks from one line to the next.
class BlockParser {
 public:
  explicit BlockParser(std::string_view text) : lines_(linesOf(text)) {}

  MarkdownBlocks parse() {
    blocks_.reserve(std::min(lines_.size(), mostReserved));
    while (next_ < lines_.size()) passLine();
    flushParagraph();
    // One left open keeps its lines.
    if (inFence_ && !code_.empty()) flushCode();
    return std::move(blocks_);
  }

 private:
  void passLine();
  [[nodiscard]] bool passTable(std::string_view line);
  [[nodiscard]] bool passCallout(std::string_view line);
  [[nodiscard]] bool passHeading(std::string_view line);
  [[nodiscard]] bool passMarked(std::string_view line);
  void passFence(std::string_view line);
  void passQuote();
  void flushParagraph();
  void flushLine(std::string_view line);
  void flushCode();

  template <typename Block>
  void add(Block block) {
    flushParagraph();
    blocks_.emplace_back(std::move(block));
  }

  Lines lines_;
  std::size_t next_ = 0;
  MarkdownBlocks blocks_;
  Lines paragraph_;  // trimmed
  Lines code_;
  std::string_view language_;
  bool inFence_ = false;
};

// The first rule that fits takes the line.
void BlockParser::passLine() {
  const std::string_view line = trimHorizontal(lines_[next_]);
  if (line.starts_with(fence)) return passFence(line);
  if (inFence_) {
    code_.push_back(lines_[next_++]);
  } else if (line.empty()) {
    flushParagraph();
    ++next_;
  } else if (!passTable(line) && !passCallout(line) && !passHeading(line) && !passMarked(line)) {
    paragraph_.push_back(line);
    ++next_;
  }
}

void BlockParser::passFence(std::string_view line) {
  ++next_;
  if (inFence_) {
    flushCode();
  } else {
    flushParagraph();
    language_ = trimSpaceAndBreaks(line.substr(fence.size()));
  }
  inFence_ = !inFence_;
}

bool BlockParser::passTable(std::string_view line) {
  if (line.find('|') == npos) return false;
  auto table = MarkdownTableParser::parse(lines_, next_);
  if (!table) return false;
  add(std::move(table->table));
  next_ = table->nextIndex;
  return true;
}

bool BlockParser::passCallout(std::string_view line) {
  if (line.front() != '>') return false;
  auto callout = MarkdownTextView::parseCallout(lines_, next_);
  if (!callout) return false;
  add(std::move(callout->callout));
  next_ = callout->nextIndex;
  return true;
}

bool BlockParser::passHeading(std::string_view line) {
  constexpr std::array<std::string_view, 3> openings{"# ", "## ", "### "};
  const auto addHeading = [&](int level, std::string_view text) {
    add(markdown::Heading{level, std::string(text)});
    ++next_;
    return true;
  };
  // The text of other diaries has a line with the date above each day.
  if (LineRules::beginsWithDate(line)) return addHeading(2, line);
  for (std::size_t i = 0; line.front() == '#' && i < openings.size(); ++i)
    if (line.starts_with(openings[i]))
      return addHeading(static_cast<int>(i) + 1, line.substr(openings[i].size()));
  return false;
}

// Lines that begin with a mark of one or two characters.
bool BlockParser::passMarked(std::string_view line) {
  const char mark = line.front();
  if (mark == '>' && line.starts_with("> ")) {
    passQuote();
    return true;
  }
  if (mark == '-' || mark == '*') {
    if (LineRules::isRule(line))
      add(markdown::HorizontalRule{});
    else if (const auto item = LineRules::checkLine(line))
      add(markdown::CheckItem{item->isChecked, std::string(item->text), next_});
    else if (line.size() > 1 && line[1] == ' ')
      add(markdown::BulletItem{std::string(line.substr(2))});
    else
      return false;
  } else if (const auto item = LineRules::numberedLine(line)) {
    add(markdown::NumberedItem{std::string(item->number), std::string(item->text)});
  } else {
    return false;
  }
  ++next_;
  return true;
}

void BlockParser::passQuote() {
  Lines parts;
  for (; next_ < lines_.size(); ++next_) {
    const std::string_view line = trimHorizontal(lines_[next_]);
    if (line.starts_with("> "))
      parts.push_back(line.substr(2));
    else if (line == ">")
      parts.push_back(line.substr(1));
    else
      break;
  }
  add(markdown::Blockquote{joined(parts)});
}

void BlockParser::flushCode() {
  std::string code = joined(code_);
  if (LineRules::isDiagram(language_))
    blocks_.emplace_back(markdown::Mermaid{std::move(code)});
  else if (language_.empty())
    blocks_.emplace_back(markdown::CodeBlock{std::move(code), std::nullopt});
  else
    blocks_.emplace_back(markdown::CodeBlock{std::move(code), std::string(language_)});
  code_.clear();
  language_ = {};
}

void BlockParser::flushParagraph() {
  if (paragraph_.empty()) return;
  if (paragraph_.size() == 1) {
    flushLine(paragraph_.front());
  } else if (SmartSplit::shouldPreserveShortLineParagraphs(paragraph_)) {
    for (const std::string_view line : paragraph_)
      if (!trimSpaceAndBreaks(line).empty())
        blocks_.emplace_back(markdown::Paragraph{std::string(line)});
  } else {
    blocks_.emplace_back(markdown::Paragraph{joined(paragraph_)});
  }
  paragraph_.clear();
}

void BlockParser::flushLine(std::string_view line) {
  std::vector<SplitSegment> segments = SmartSplit::smartSplit(line);
  if (segments.size() < 2) {
    blocks_.emplace_back(markdown::Paragraph{std::move(segments.front().text)});
    return;
  }
  for (SplitSegment& segment : segments) {
    switch (segment.kind) {
      case SplitSegment::Kind::heading:
        blocks_.emplace_back(markdown::Heading{2, std::move(segment.text)});
        break;
      case SplitSegment::Kind::bulletItem:
        blocks_.emplace_back(markdown::BulletItem{std::move(segment.text)});
        break;
      case SplitSegment::Kind::paragraph:
        blocks_.emplace_back(markdown::Paragraph{std::move(segment.text)});
        break;
    }
  }
}

}  // namespace

MarkdownBlocks MarkdownTextView::parseBlocks(std::string_view text) {
  return BlockParser(text).parse();
}

std::optional<MarkdownTextView::CalloutResult> MarkdownTextView::parseCallout(
    std::span<const std::string_view> lines, std::size_t startIndex) {
  // What a line of the callout says; absent for a line that is none.
  const auto inside = [&](std::size_t index) -> std::optional<std::string_view> {
    if (index >= lines.size()) return std::nullopt;
    const std::string_view line = trimHorizontal(lines[index]);
    if (!line.starts_with('>')) return std::nullopt;
    return trimHorizontal(line.substr(1));
  };
  const auto first = inside(startIndex);
  const auto opening = first ? LineRules::calloutLine(*first) : std::nullopt;
  if (!opening) return std::nullopt;
  std::size_t next = startIndex + 1;
  Lines parts;
  for (auto part = inside(next); part; part = inside(++next)) parts.push_back(*part);
  std::string title(opening->title);
  if (title.empty()) title = capitalized(MarkdownCallout::nameOf(opening->kind));
  std::string body(trimSpaceAndBreaks(joined(parts)));
  return CalloutResult{{opening->kind, std::move(title), std::move(body)}, next};
}

std::shared_ptr<const MarkdownBlocks> MarkdownTextView::blocks(std::string_view body) {
  using enum MemoTextSanitizer::Edges;
  const std::string cleaned = MemoTextSanitizer::removingAttachmentPlaceholders(body, keep);
  return MarkdownRenderCache::shared().blocks(cleaned, [&] { return parseBlocks(cleaned); });
}

std::vector<std::string> MarkdownTextView::mermaidCodes(std::string_view text) {
  std::vector<std::string> codes;
  for (MarkdownBlock& block : parseBlocks(text))
    if (auto* diagram = std::get_if<markdown::Mermaid>(&block))
      codes.push_back(std::move(diagram->code));
  return codes;
}

}  // namespace nomely
