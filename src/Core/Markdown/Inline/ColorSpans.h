#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Core/Markdown/Text/ByteRange.h"

namespace nomely {

// A span of a body that gives its text a colour or a size:
//   <span style="color: #RRGGBB">…</span>  <span style="font-size:18px">…</span>
struct SpanMatch {
  struct Color {
    std::string hex;  // with its number sign
    friend bool operator==(const Color&, const Color&) = default;
  };
  struct FontSize {
    std::int64_t px = 0;
    friend bool operator==(const FontSize&, const FontSize&) = default;
  };

  ByteRange range;         // with its tags
  ByteRange contentRange;  // between them
  std::variant<Color, FontSize> kind;

  friend bool operator==(const SpanMatch&, const SpanMatch&) = default;
};

// Finds and rewrites such spans. Each call finds what the expression above it matches, in time
// linear in the text. Pure.
namespace ColorSpans {

// <span\s+style=\"color:\s*(#[0-9A-Fa-f]{6})\">([\s\S]*?)</span>
[[nodiscard]] std::vector<SpanMatch> colors(std::string_view text);
// <span\s+style=\"font-size:\s*(\d+)px\">([\s\S]*?)</span>
// Spans whose number parseDecimal refuses are left out.
[[nodiscard]] std::vector<SpanMatch> sizes(std::string_view text);
// <span\s+style=\"color:\s*#[0-9A-Fa-f]{6}\">
[[nodiscard]] std::size_t openingCount(std::string_view text);

// Moves the markers "**" or "*" around a colour span to inside of its tags and around the text
// beside it, as emphasis is not recognised across the tags:
// `**a<span style="color: #FF0000">b</span>c**` →
// `**a**<span style="color: #FF0000">**b**</span>**c**`
[[nodiscard]] std::string normalizeColorSpansInsideMarkdown(std::string_view text,
                                                            std::string_view marker);
// The same for the text between two markers, given without them: `a<span …>b</span>c` gives the
// result above.
[[nodiscard]] std::string normalizeColorSpans(std::string_view inMarkedContent,
                                              std::string_view marker);

}  // namespace ColorSpans

}  // namespace nomely
