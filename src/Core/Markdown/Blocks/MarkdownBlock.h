#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Core/Markdown/Tables/MarkdownTable.h"

namespace nomely {

// An alert box.
struct MarkdownCallout {
  enum class Kind { note, tip, important, warning, caution };

  Kind kind = Kind::note;
  std::string title;
  std::string body;

  // The kind's name as in "[!NOTE]", but in lower case: "note".
  [[nodiscard]] static std::string_view nameOf(Kind kind) {
    constexpr std::array<std::string_view, 5> names{"note", "tip", "important", "warning",
                                                    "caution"};
    return names.at(static_cast<std::size_t>(kind));
  }

  friend bool operator==(const MarkdownCallout&, const MarkdownCallout&) = default;
};

// The cases of a block. Texts are inline Markdown.
namespace markdown {

struct Paragraph {
  std::string text;  // may hold line feeds
  friend bool operator==(const Paragraph&, const Paragraph&) = default;
};
struct Heading {
  int level = 1;  // 1 to 3
  std::string text;
  friend bool operator==(const Heading&, const Heading&) = default;
};
struct BulletItem {
  std::string text;
  friend bool operator==(const BulletItem&, const BulletItem&) = default;
};
struct NumberedItem {
  std::string number;  // the digits as written
  std::string text;
  friend bool operator==(const NumberedItem&, const NumberedItem&) = default;
};
// Equal to another that looks the same, wherever each stands.
struct CheckItem {
  bool checked = false;
  std::string text;
  std::size_t line = 0;  // of the text that was parsed; the first is 0
  friend bool operator==(const CheckItem& a, const CheckItem& b) {
    return a.checked == b.checked && a.text == b.text;
  }
};
struct Blockquote {
  std::string text;
  friend bool operator==(const Blockquote&, const Blockquote&) = default;
};
struct CodeBlock {
  std::string code;  // verbatim
  std::optional<std::string> language;
  friend bool operator==(const CodeBlock&, const CodeBlock&) = default;
};
struct Mermaid {
  std::string code;  // source of a diagram
  friend bool operator==(const Mermaid&, const Mermaid&) = default;
};
struct HorizontalRule {
  friend bool operator==(const HorizontalRule&, const HorizontalRule&) = default;
};

}  // namespace markdown

// A list is no block of its own: each item is one.
using MarkdownBlock =
    std::variant<markdown::Paragraph, markdown::Heading, markdown::BulletItem,
                 markdown::NumberedItem, markdown::CheckItem, markdown::Blockquote, MarkdownCallout,
                 markdown::CodeBlock, markdown::Mermaid, MarkdownTable, markdown::HorizontalRule>;
using MarkdownBlocks = std::vector<MarkdownBlock>;

// The case's name: "paragraph", "heading", "bulletItem".
[[nodiscard]] inline std::string_view kindName(const MarkdownBlock& block) {
  constexpr std::array<std::string_view, 11> names{
      "paragraph", "heading",   "bulletItem", "numberedItem", "checkItem",     "blockquote",
      "callout",   "codeBlock", "mermaid",    "table",        "horizontalRule"};
  return names.at(block.index());
}

}  // namespace nomely
