#pragma once

#include <string>
#include <string_view>

#include "CLI/Terminal.h"
#include "Core/Markdown/Text/StyledText.h"

namespace nomely {

// A text with weights, colours and links as a terminal shows it; nothing in it can drive the
// terminal.
[[nodiscard]] std::string drawStyled(const StyledText& text, const Style& style);

// `text` with the terminal's `codes` on each of its lines: pagers forget a style where a line ends.
[[nodiscard]] std::string styledLines(std::string_view text, std::string_view codes,
                                      const Style& style);

}  // namespace nomely
