#pragma once

#include <string_view>
#include <variant>

#include "Core/Markdown/Frontmatter/ParseError.h"

namespace nomely {

// A memo file's text cut into the YAML between the two lines "---" and what follows them. Views.
struct MemoFileParts {
  static constexpr std::string_view fence = "---";

  std::string_view header;
  std::string_view body;  // blank lines that lead it included

  // The parts of `content`, or the reason why it has no header.
  [[nodiscard]] static std::variant<MemoFileParts, ParseError::Kind> of(std::string_view content);

  // Whether a line of `text` would end a header: "---", blanks around it aside.
  [[nodiscard]] static bool holdsFence(std::string_view text);
};

// Removes the first line and its line feed from `rest` and returns it without the line feed.
std::string_view takeLine(std::string_view& rest);

}  // namespace nomely
