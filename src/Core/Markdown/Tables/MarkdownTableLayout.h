#pragma once

#include <vector>

#include "Core/Markdown/Tables/MarkdownTable.h"

namespace nomely {

// Column widths with which a table fits into its card. Pure.
namespace MarkdownTableLayout {

// What a view passes that does not know its width yet.
constexpr double unknownContainerWidth = 640;

// The width of each column's text in points; one width for a table without headers. A narrow table
// is not stretched; a table whose columns are all at their least width may be wider than the
// container.
[[nodiscard]] std::vector<double> columnWidths(const MarkdownTable& table, double containerWidth);

}  // namespace MarkdownTableLayout

}  // namespace nomely
