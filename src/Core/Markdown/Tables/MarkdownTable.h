#pragma once

#include <string>
#include <vector>

namespace nomely {

// The text of a table's cells; each row has as many as there are headers.
struct MarkdownTable {
  std::vector<std::string> headers;
  std::vector<std::vector<std::string>> rows;

  friend bool operator==(const MarkdownTable&, const MarkdownTable&) = default;
};

}  // namespace nomely
