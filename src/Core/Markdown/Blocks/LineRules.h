#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "Core/Markdown/Blocks/MarkdownBlock.h"

namespace nomely {

// What the beginning of a line says. Each finds what the expression quoted with it finds, without
// the cost of one, in time proportional to the line. Pure.
namespace LineRules {

// \d{4}[.\-/]\d{1,2}[.\-/]\d{1,2} at the beginning: its bytes, with as many digits as there are;
// 0 for none.
[[nodiscard]] std::size_t dateLength(std::string_view text);
// ^(\d{4}[.\-/]\d{1,2}[.\-/]\d{1,2})\b
[[nodiscard]] bool beginsWithDate(std::string_view line);

// \d+ at the beginning, in bytes.
[[nodiscard]] std::size_t digitsLength(std::string_view text);

struct NumberedLine {
  std::string_view number;
  std::string_view text;
};
// ^(\d+)\.\s(.+)$
[[nodiscard]] std::optional<NumberedLine> numberedLine(std::string_view line);

struct CalloutLine {
  MarkdownCallout::Kind kind = MarkdownCallout::Kind::note;
  std::string_view title;
};
// ^\[!(NOTE|TIP|IMPORTANT|WARNING|CAUTION)\]\s*(.*)$ without regard to case.
[[nodiscard]] std::optional<CalloutLine> calloutLine(std::string_view line);

// Bytes before the first character where "." does not match.
[[nodiscard]] std::size_t lengthToLineBreak(std::string_view text);

// Nothing but "-", "*" and blanks, three characters or more.
[[nodiscard]] bool isRule(std::string_view line);

}  // namespace LineRules

}  // namespace nomely
