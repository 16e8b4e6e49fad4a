#pragma once

#include <vector>

#include "Core/Markdown/Tables/MarkdownTable.h"

namespace nomely {

// Widths that fit a table into its card. Pure.
namespace MarkdownTableLayout {

// What a view passes that does not know its width yet.
constexpr double unknownContainerWidth = 640;

// The width of each column's text in points; one for a table without headers. A narrow table is
// not stretched, and columns that can't be narrower go beyond the container.
[[nodiscard]] std::vector<double> columnWidths(const MarkdownTable& table, double containerWidth);

}  // namespace MarkdownTableLayout

}  // namespace nomely
