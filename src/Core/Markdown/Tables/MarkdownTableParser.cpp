#include "Core/Markdown/Tables/MarkdownTableParser.h"

#include <algorithm>

#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::size_t leastCells = 2;
// Many headers over many short rows would make a small text a huge table: it ends where that many
// cells have been added.
constexpr std::size_t mostAdded = 200'000;

std::vector<std::string> cellsIn(std::string_view line) {
  std::string_view rest = trimHorizontal(line);
  if (rest.starts_with('|')) rest.remove_prefix(1);
  if (rest.ends_with('|')) rest.remove_suffix(1);
  std::vector<std::string> cells;
  for (std::size_t bar = rest.find('|'); bar != std::string_view::npos; bar = rest.find('|')) {
    cells.emplace_back(trimHorizontal(rest.substr(0, bar)));
    rest.remove_prefix(bar + 1);
  }
  cells.emplace_back(trimHorizontal(rest));
  return cells;
}

// The cells of a line of a table; absent for any other line.
std::optional<std::vector<std::string>> rowIn(std::string_view line) {
  if (line.find('|') == std::string_view::npos) return std::nullopt;
  std::vector<std::string> cells = cellsIn(line);
  if (cells.size() < leastCells) return std::nullopt;
  return cells;
}

bool isRule(std::string_view cell) {
  return cell.size() >= 3 && cell.find_first_not_of("-:") == std::string_view::npos &&
         cell.find('-') != std::string_view::npos;
}

bool isSeparator(std::string_view line) {
  const auto cells = rowIn(line);
  return cells && std::ranges::all_of(*cells, isRule);
}

}  // namespace

std::optional<MarkdownTableParser::Result> MarkdownTableParser::parse(
    std::span<const std::string_view> lines, std::size_t startIndex) {
  if (startIndex >= lines.size() || lines.size() - startIndex < 2) return std::nullopt;
  auto headers = rowIn(lines[startIndex]);
  if (!headers || !isSeparator(lines[startIndex + 1])) return std::nullopt;
  Result result{{std::move(*headers), {}}, startIndex + 2};
  const std::size_t width = result.table.headers.size();
  std::size_t added = 0;
  for (; result.nextIndex < lines.size(); ++result.nextIndex) {
    auto row = rowIn(lines[result.nextIndex]);
    if (!row) break;
    added += width - std::min(row->size(), width);
    if (added > mostAdded) break;
    row->resize(width);
    result.table.rows.push_back(std::move(*row));
  }
  return result;
}

}  // namespace nomely
