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

// Finds and rewrites such spans. Each finds what the expression quoted with it finds, in time
// proportional to the text. Pure.
namespace ColorSpans {

// <span\s+style=\"color:\s*(#[0-9A-Fa-f]{6})\">([\s\S]*?)</span>
[[nodiscard]] std::vector<SpanMatch> colors(std::string_view text);
// <span\s+style=\"font-size:\s*(\d+)px\">([\s\S]*?)</span>, but those with a number that is none.
[[nodiscard]] std::vector<SpanMatch> sizes(std::string_view text);
// <span\s+style=\"color:\s*#[0-9A-Fa-f]{6}\">
[[nodiscard]] std::size_t openingCount(std::string_view text);

// Puts each colour span between two markers, "**" or "*", out of their reach, and the markers
// inside the span as well as around what is beside it: emphasis would not be seen across its tags.
[[nodiscard]] std::string normalizeColorSpansInsideMarkdown(std::string_view text,
                                                            std::string_view marker);
// The same for what stands between two markers.
[[nodiscard]] std::string normalizeColorSpans(std::string_view inMarkedContent,
                                              std::string_view marker);

}  // namespace ColorSpans

}  // namespace nomely
