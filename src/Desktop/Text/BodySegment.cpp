#include "Desktop/Text/BodySegment.h"

#include <algorithm>
#include <optional>

#include "Core/Markdown/Blocks/BlockSpacing.h"
#include "Desktop/Base/Qt.h"

namespace nomely {
namespace {

// What one text item lays out without a noticeable pause, and what it scrolls past smoothly.
constexpr std::size_t longestText = 8'000;  // bytes
constexpr std::size_t longestCode = 100'000;
constexpr std::size_t mostBlocks = 60;
constexpr std::size_t mostCells = 150;
constexpr std::size_t fewestRows = 8;

constexpr auto npos = std::string_view::npos;

std::vector<std::string> pieces(std::string_view text, std::size_t most) {
  std::vector<std::string> all;
  while (text.size() > most) {
    const std::size_t length = fittingLength(text, most);
    all.emplace_back(text.substr(0, length));
    text.remove_prefix(length);
    if (text.starts_with('\n')) text.remove_prefix(1);
  }
  all.emplace_back(text);
  return all;
}

// Cuts a block into those that can be laid out each. What follows the first piece of an item is
// text without a mark of its own.
struct Cut {
  MarkdownBlocks& out;

  template <typename Block>
  void operator()(const Block& block) const {
    if constexpr (requires { block.text; }) {
      if (block.text.size() > longestText) return cutText(block);
    }
    out.push_back(block);
  }

  template <typename Block>
  void cutText(Block block) const {
    bool isFirst = true;
    for (std::string& piece : pieces(block.text, longestText)) {
      block.text = std::move(piece);
      if (isFirst || std::is_same_v<Block, markdown::Blockquote>)
        out.push_back(block);
      else
        out.push_back(markdown::Paragraph{block.text});
      isFirst = false;
    }
  }

  void operator()(const markdown::CodeBlock& block) const {
    for (std::string& piece : pieces(block.code, longestCode))
      out.push_back(markdown::CodeBlock{std::move(piece), block.language});
  }

  void operator()(const MarkdownCallout& block) const {
    std::string title = block.title;
    for (std::string& piece : pieces(block.body, longestText))
      out.push_back(MarkdownCallout{block.kind, std::exchange(title, {}), std::move(piece)});
  }

  void operator()(const MarkdownTable& block) const {
    const std::size_t rows = std::max(mostCells / block.headers.size(), fewestRows);
    for (std::size_t at = 0; at == 0 || at < block.rows.size(); at += rows) {
      MarkdownTable part{block.headers, {}};
      const auto from = block.rows.begin() + static_cast<std::ptrdiff_t>(at);
      const std::size_t count = std::min(rows, block.rows.size() - at);
      part.rows.assign(from, from + static_cast<std::ptrdiff_t>(count));
      out.push_back(std::move(part));
    }
  }
};

BodySegment::Kind kindOf(const MarkdownBlock& block) {
  if (std::holds_alternative<markdown::CodeBlock>(block)) return BodySegment::Code;
  if (std::holds_alternative<MarkdownCallout>(block)) return BodySegment::Callout;
  if (std::holds_alternative<MarkdownTable>(block)) return BodySegment::Table;
  if (std::holds_alternative<markdown::Mermaid>(block)) return BodySegment::Diagram;
  if (std::holds_alternative<markdown::HorizontalRule>(block)) return BodySegment::Rule;
  return BodySegment::Run;
}

std::size_t textSize(const MarkdownBlock& block) {
  return std::visit(
      [](const auto& each) -> std::size_t {
        if constexpr (requires { each.text; }) return each.text.size();
        return 0;
      },
      block);
}

class Segments {
 public:
  void add(MarkdownBlock block) {
    const BodySegment::Kind kind = kindOf(block);
    const std::size_t size = textSize(block);
    const bool fits = kind == BodySegment::Run && kind_ == kind && gathered_.size() < mostBlocks &&
                      size_ + size <= longestText;
    if (!fits) {
      const bool isClose = !gathered_.empty() && standClose(gathered_.back(), block);
      flush();
      isClose_ = isClose;
    }
    kind_ = kind;
    size_ += size;
    gathered_.push_back(std::move(block));
  }

  std::vector<BodySegment> take() {
    flush();
    return std::move(all_);
  }

 private:
  void flush() {
    if (gathered_.empty()) return;
    all_.push_back({kind_, std::make_shared<const MarkdownBlocks>(std::move(gathered_)), isClose_});
    gathered_.clear();
    size_ = 0;
  }

  std::vector<BodySegment> all_;
  MarkdownBlocks gathered_;
  BodySegment::Kind kind_ = BodySegment::Run;
  std::size_t size_ = 0;
  bool isClose_ = false;
};

template <typename Block>
const Block* only(const BodySegment& segment) {
  return segment.blocks && segment.blocks->size() == 1
             ? std::get_if<Block>(&segment.blocks->front())
             : nullptr;
}

}  // namespace

std::size_t fittingLength(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text.size();
  const std::string_view beginning = text.substr(0, most);
  // Not so far back that the pieces get small.
  for (const std::string_view end : {"\n", "。", " "}) {
    const std::size_t at = beginning.rfind(end);
    if (at != npos && at > most / 2) return end == "\n" ? at : at + end.size();
  }
  std::size_t length = most;
  while (length > 1 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) --length;
  return length;
}

std::vector<BodySegment> bodySegments(const MarkdownBlocks& blocks) {
  Segments segments;
  MarkdownBlocks cut;
  for (const MarkdownBlock& block : blocks) {
    cut.clear();
    std::visit(Cut{cut}, block);
    for (MarkdownBlock& piece : cut) segments.add(std::move(piece));
  }
  return segments.take();
}

bool BodySegment::isSameAs(const BodySegment& other) const {
  if (kind != other.kind || standsClose != other.standsClose || !blocks || !other.blocks)
    return *this == other;
  return std::ranges::equal(*blocks, *other.blocks, [](const auto& a, const auto& b) {
    // One that looks the same may be of another line.
    const auto* const item = std::get_if<markdown::CheckItem>(&a);
    return a == b && (item == nullptr || item->line == std::get<markdown::CheckItem>(b).line);
  });
}

QString BodySegment::code() const {
  if (const auto* block = only<markdown::CodeBlock>(*this)) return qt(block->code);
  if (const auto* block = only<markdown::Mermaid>(*this)) return qt(block->code);
  return {};
}

QString BodySegment::language() const {
  const auto* block = only<markdown::CodeBlock>(*this);
  return block != nullptr ? qt(block->language.value_or("")) : QString();
}

QString BodySegment::title() const {
  const auto* block = only<MarkdownCallout>(*this);
  return block != nullptr ? qt(block->title) : QString();
}

QString BodySegment::calloutKind() const {
  const auto* block = only<MarkdownCallout>(*this);
  return block != nullptr ? qt(MarkdownCallout::nameOf(block->kind)) : QString();
}

}  // namespace nomely
