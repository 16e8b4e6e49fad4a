#pragma once

#include <cstddef>
#include <string>

#include "CLI/Terminal.h"
#include "Core/Markdown/Tables/MarkdownTable.h"

namespace nomely {

// A table in lines of text, its cells broken over several where the columns have to be narrow.
[[nodiscard]] std::string drawTable(const MarkdownTable& table, const Style& style,
                                    std::size_t width);

}  // namespace nomely
