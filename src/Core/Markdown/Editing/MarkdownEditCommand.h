#pragma once

#include <cstdint>
#include <string>
#include <variant>

namespace nomely {

namespace MarkdownEdit {

struct Heading {
  std::int64_t level = 1;  // taken as the nearest of 1 to 6
};
struct InsertBlock {
  std::u16string block;
};
struct FontSize {
  double size = 0;  // pixels, rounded; has to fit 64 bits
};
struct Bold {};
struct Italic {};
struct InlineCode {};
struct Link {};
struct Quote {};
struct Checklist {};
struct UnorderedList {};
struct OrderedList {};
struct CodeBlock {};

}  // namespace MarkdownEdit

// A change of the text that a toolbar button or a key asks for.
using MarkdownEditCommand =
    std::variant<MarkdownEdit::Heading, MarkdownEdit::InsertBlock, MarkdownEdit::FontSize,
                 MarkdownEdit::Bold, MarkdownEdit::Italic, MarkdownEdit::InlineCode,
                 MarkdownEdit::Link, MarkdownEdit::Quote, MarkdownEdit::Checklist,
                 MarkdownEdit::UnorderedList, MarkdownEdit::OrderedList, MarkdownEdit::CodeBlock>;

// The focus editor's request to its text view.
using FocusEditorFormatCommand = MarkdownEditCommand;

}  // namespace nomely
