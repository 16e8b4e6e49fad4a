#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Text/RegularExpression.h"

namespace nomely {

// The tags that a text holds as "#tag". A tag begins after white space or at the start of the
// text; code, HTML-like tags and colours hold none, and neither does a line that is nothing but one
// long "#word": that is a heading typed without its blank. Pure; safe on any thread. A text without
// a "#" that could begin a tag costs one pass over its bytes.
namespace TagParser {

// Positions are UTF-16 units of the masked text.
struct Match {
  std::string tag;
  TextRange fullRange;  // the blank or line break before it included
  TextRange tagRange;   // without the "#"

  friend bool operator==(const Match&, const Match&) = default;
};

// The tags that begin in `range`, in order. A range is taken as a text of its own: a tag may begin
// at its start, and ends at its end at the latest.
[[nodiscard]] std::vector<Match> matches(std::string_view text,
                                         std::optional<TextRange> range = {});

// The tags without repetition, in order of first appearance.
[[nodiscard]] std::vector<std::string> tags(std::string_view text);

// The text with everything that can't hold a tag replaced by blanks: "`#a` #b" → "     #b". One
// blank stands for each grapheme cluster, so that positions shift after one of several UTF-16
// units; line feeds and carriage returns stay.
[[nodiscard]] std::string maskedForTagParsing(std::string_view text);

// The text without its tags and the white space before each, trimmed at both ends. Positions in the
// masked text are used as positions in the text; a tag whose range splits a surrogate pair there is
// kept.
[[nodiscard]] std::string removingInlineTags(std::string_view text);

}  // namespace TagParser

}  // namespace nomely
