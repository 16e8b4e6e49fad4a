#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// A piece of a long line that has no line breaks, as text pasted from a chat often is.
struct SplitSegment {
  enum class Kind { heading, bulletItem, paragraph };

  Kind kind = Kind::paragraph;
  std::string text;

  friend bool operator==(const SplitSegment&, const SplitSegment&) = default;
};

// Cuts such a line; nothing but white space at the cuts is lost. Time in proportion to the text.
// Pure.
namespace SmartSplit {

// Cuts before dates, numbered items, "Q1：", "Day1 " and tags; where there is none, after the
// sentences of Chinese text, else before numbers inside the text. One paragraph of the whole
// text where nothing is found.
[[nodiscard]] std::vector<SplitSegment> smartSplit(std::string_view text);

// What a piece is, by its beginning.
[[nodiscard]] SplitSegment classifySegment(std::string_view text);

[[nodiscard]] std::vector<SplitSegment> splitChineseParagraphs(std::string_view text);
[[nodiscard]] std::vector<SplitSegment> splitNumberedItems(std::string_view text);

// Whether lines are so short that each means to stand alone, as in a poem.
[[nodiscard]] bool shouldPreserveShortLineParagraphs(std::span<const std::string_view> lines);

}  // namespace SmartSplit

}  // namespace nomely
