#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "Core/Markdown/Tables/MarkdownTable.h"

namespace nomely {

// Pipe tables among the lines of a body. Every pipe separates cells, also one after a backslash:
// "a\|b" is two cells. The alignment in the separator line is ignored. Pure.
namespace MarkdownTableParser {

struct Result {
  MarkdownTable table;
  std::size_t nextIndex = 0;  // the first line after the table

  friend bool operator==(const Result&, const Result&) = default;
};

// The table whose header is line `startIndex`; absent when none begins there.
[[nodiscard]] std::optional<Result> parse(std::span<const std::string_view> lines,
                                          std::size_t startIndex);

}  // namespace MarkdownTableParser

}  // namespace nomely
