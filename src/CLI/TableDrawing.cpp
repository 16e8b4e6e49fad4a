#include "CLI/TableDrawing.h"

#include <algorithm>
#include <vector>

#include "CLI/StyledTextDrawing.h"
#include "Core/Markdown/MarkdownTextView.h"
#include "Core/Markdown/Tables/MarkdownTableLayout.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// The layout counts in points; a column of the terminal is a Latin letter.
constexpr double pointsPerColumn = 8;
constexpr std::string_view divider = " │ ";

struct Cell {
  std::vector<StyledText> lines;
};
using Row = std::vector<Cell>;

StyledText cellText(std::string_view text) {
  return MarkdownTextView::inlineAttributed(MarkdownTextView::prepared(Terminal::printable(text)));
}

// The text in lines of at most `width` columns, broken between any two characters.
Cell wrapped(const StyledText& text, std::size_t width) {
  Cell cell;
  cell.lines.emplace_back();
  std::size_t used = 0;
  std::size_t begin = 0;
  for (const StyledText::Run& run : text.runs) {
    std::string_view rest = std::string_view(text.text).substr(begin, run.length);
    begin += run.length;
    while (!rest.empty()) {
      const std::string_view character = graphemePrefix(rest, 1);
      const std::size_t columns = displayWidth(character);
      if (used > 0 && used + columns > width) {
        cell.lines.emplace_back();
        used = 0;
      }
      cell.lines.back().append(character, run.style);
      used += columns;
      rest.remove_prefix(character.size());
    }
  }
  return cell;
}

std::string drawRow(const Row& row, const std::vector<std::size_t>& widths, const Style& style) {
  std::size_t height = 1;
  for (const Cell& cell : row) height = std::max(height, cell.lines.size());
  std::string drawn;
  for (std::size_t line = 0; line < height; ++line) {
    std::string text;
    for (std::size_t column = 0; column < row.size(); ++column) {
      const StyledText part =
          line < row[column].lines.size() ? row[column].lines[line] : StyledText();
      const std::size_t used = displayWidth(part.text);
      if (column > 0) text += style.dim(divider);
      text += drawStyled(part, style);
      if (column + 1 < row.size())
        text.append(widths[column] - std::min(used, widths[column]), ' ');
    }
    drawn += text + "\n";
  }
  return drawn;
}

}  // namespace

std::string drawTable(const MarkdownTable& table, const Style& style, std::size_t width) {
  std::vector<std::vector<StyledText>> rows;
  rows.reserve(table.rows.size() + 1);
  const auto addRow = [&](const std::vector<std::string>& cells) {
    std::vector<StyledText>& row = rows.emplace_back();
    row.reserve(cells.size());
    for (const std::string& cell : cells) row.push_back(cellText(cell));
  };
  addRow(table.headers);
  for (StyledText& header : rows.front())
    header.restyle([](TextStyle& its) { its.weight = FontWeight::bold; });
  for (const auto& cells : table.rows) addRow(cells);

  const std::vector<double> points =
      MarkdownTableLayout::columnWidths(table, static_cast<double>(width) * pointsPerColumn);
  std::vector<std::size_t> widths(table.headers.size());
  for (std::size_t column = 0; column < widths.size(); ++column) {
    // What the layout leaves as a margin is of no use here.
    for (const auto& row : rows)
      widths[column] = std::max(widths[column], displayWidth(row[column].text));
    const auto most = static_cast<std::size_t>(points[column] / pointsPerColumn);
    widths[column] = std::max<std::size_t>(std::min(widths[column], most), 1);
  }

  std::string drawn;
  for (const auto& row : rows) {
    Row cells;
    cells.reserve(row.size());
    for (std::size_t column = 0; column < row.size(); ++column)
      cells.push_back(wrapped(row[column], widths[column]));
    drawn += drawRow(cells, widths, style);
    if (&row != &rows.front()) continue;
    std::string line;
    for (std::size_t column = 0; column < widths.size(); ++column) {
      if (column > 0) line += "─┼─";
      for (std::size_t i = 0; i < widths[column]; ++i) line += "─";
    }
    drawn += style.dim(line) + "\n";
  }
  return drawn;
}

}  // namespace nomely
