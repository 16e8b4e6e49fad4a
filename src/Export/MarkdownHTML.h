#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace nomely {

// How exported Markdown gets its looks.
enum class RenderMode {
  plain,   // bare elements, for a page with a style sheet
  styled,  // elements with styles of their own: light text on a dark background
};

// The picture of a diagram's source as an element, which goes where its code would; empty for one
// that has none, whose code stands there.
using DiagramElement = std::function<std::string(const std::string& code)>;

// A small converter from Markdown to what a plain browser shows, line by line: headings, lists,
// quotes, tables, code, running text. Pure; linear in the text. The text can't bring in any element
// or script of its own. Without `diagrams` all diagrams stay code.
[[nodiscard]] std::string markdownToHTML(std::string_view text, RenderMode mode,
                                         const DiagramElement& diagrams = {});

}  // namespace nomely
