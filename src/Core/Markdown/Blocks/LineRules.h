#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "Core/Markdown/Blocks/MarkdownBlock.h"

namespace nomely {

// What kind of line its beginning makes it. Each call finds what the expression above it matches,
// without the cost of an expression, in time linear in the line. Pure.
namespace LineRules {

// The length in bytes of what \d{4}[.\-/]\d{1,2}[.\-/]\d{1,2} matches at the beginning; 0 for none.
[[nodiscard]] std::size_t dateLength(std::string_view text);
// ^(\d{4}[.\-/]\d{1,2}[.\-/]\d{1,2})\b
[[nodiscard]] bool beginsWithDate(std::string_view line);

// The length in bytes of what \d+ matches at the beginning; 0 for none.
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

// The number of bytes before the first line break, where "." does not match; all of `text` without
// one.
[[nodiscard]] std::size_t lengthToLineBreak(std::string_view text);

struct CheckLine {
  bool isChecked = false;
  std::string_view mark;  // what stands between the brackets
  std::string_view text;
};
// "- [ ] text", "- [x] text" or "- [X] text"; a box without text is none.
[[nodiscard]] std::optional<CheckLine> checkLine(std::string_view line);

// Nothing but "-", "*" and blanks, three characters or more.
[[nodiscard]] bool isRule(std::string_view line);

// Whether code in that language, as it stands behind the opening fence, is a diagram's source.
[[nodiscard]] bool isDiagram(std::string_view language);

}  // namespace LineRules

}  // namespace nomely
