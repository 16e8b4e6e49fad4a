#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Text/RegularExpression.h"

namespace nomely {

// The tags that a text holds as "#tag". A tag begins after white space or at the start of the
// text; code, HTML-like tags and colours hold none, and neither does a line that is nothing but one
// long "#word": that is a heading typed without its blank. Pure; safe on any thread. A text in
// which nothing can begin a tag costs one look at its bytes.
namespace TagParser {

// Positions are UTF-16 units of the masked text.
struct Match {
  std::string tag;
  TextRange fullRange;  // the blank or line break before it included
  TextRange tagRange;   // without the "#"

  friend bool operator==(const Match&, const Match&) = default;
};

// The tags that begin in `range`, in order. A range stands for itself: its start counts as the
// start of the text, and a tag ends with it at the latest.
[[nodiscard]] std::vector<Match> matches(std::string_view text,
                                         std::optional<TextRange> range = {});

// The tags without repetition, in order of first appearance.
[[nodiscard]] std::vector<std::string> tags(std::string_view text);

// The text with what can't hold a tag blanked: one blank for each character that a reader counts,
// line feeds and carriage returns kept. So positions move where such a character is more than one
// UTF-16 unit.
[[nodiscard]] std::string maskedForTagParsing(std::string_view text);

// The text without its tags and the white space before each, trimmed at both ends. Positions
// in the masked text are taken for positions in the text; what is no whole characters there stays.
[[nodiscard]] std::string removingInlineTags(std::string_view text);

}  // namespace TagParser

}  // namespace nomely
