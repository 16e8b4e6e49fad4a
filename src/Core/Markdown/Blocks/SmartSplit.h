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

// Cuts such a line into pieces. Only white space at the cuts is lost. Linear in the text. Pure.
namespace SmartSplit {

// Cuts before dates, numbered items, "Q1：", "Day1 " and tags; a text with none of them after the
// sentences of Chinese, else before numbers inside it. A text without any place to cut is one
// paragraph.
[[nodiscard]] std::vector<SplitSegment> smartSplit(std::string_view text);

// The kind of a piece, decided by its beginning.
[[nodiscard]] SplitSegment classifySegment(std::string_view text);

[[nodiscard]] std::vector<SplitSegment> splitChineseParagraphs(std::string_view text);
[[nodiscard]] std::vector<SplitSegment> splitNumberedItems(std::string_view text);

// Whether the lines are so short that each is a paragraph of its own, as in a poem.
[[nodiscard]] bool shouldPreserveShortLineParagraphs(std::span<const std::string_view> lines);

}  // namespace SmartSplit

}  // namespace nomely
