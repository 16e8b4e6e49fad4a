#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

#include "Core/Markdown/Tables/MarkdownTable.h"

namespace nomely {

// Pipe tables among the lines of a body. A pipe always parts cells, after a backslash too; the
// alignment that a separator asks for is not kept. Pure.
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
