#include "Core/Markdown/Tables/MarkdownTableLayout.h"

#include <algorithm>
#include <numeric>

#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr double leastWidth = 84;
constexpr double mostWidth = 560;
constexpr double unitWidth = 8;     // of a Latin letter, about
constexpr double marginWidth = 60;  // beside a column's longest text
constexpr double cellPadding = 24;
constexpr int rounds = 8;

// In Latin letters: anything that is not a single ASCII character takes about two.
std::size_t displayLength(std::string_view text) {
  const bool isAscii =
      std::ranges::all_of(text, [](char c) { return static_cast<signed char>(c) >= 0; });
  if (isAscii && text.find('\r') == std::string_view::npos) return text.size();
  const std::u16string units = toUtf16(text);
  std::size_t length = 0;
  std::size_t begin = 0;
  for (const std::size_t end : graphemeEnds(units)) {
    const bool isNarrow = units[begin] < 0x80 && (end - begin == 1 || units[begin] == u'\r');
    length += isNarrow ? 1 : 2;
    begin = end;
  }
  return length;
}

double naturalWidth(const MarkdownTable& table, std::size_t column) {
  std::size_t longest = 0;
  const auto consider = [&](const std::vector<std::string>& cells) {
    if (column < cells.size()) longest = std::max(longest, displayLength(cells[column]));
  };
  consider(table.headers);
  std::ranges::for_each(table.rows, consider);
  return std::max(static_cast<double>(longest) * unitWidth + marginWidth, leastWidth);
}

}  // namespace

std::vector<double> MarkdownTableLayout::columnWidths(const MarkdownTable& table,
                                                      double containerWidth) {
  std::vector<double> widths(std::max<std::size_t>(table.headers.size(), 1));
  for (std::size_t column = 0; column < widths.size(); ++column)
    widths[column] = std::min(naturalWidth(table, column), mostWidth);
  const auto count = static_cast<double>(widths.size());
  const double total = std::accumulate(widths.begin(), widths.end(), 0.0);
  const double target = std::max(containerWidth - cellPadding * count, leastWidth * count);
  if (total <= target) return widths;

  // Columns held at the least width take from the others; a few rounds settle how much.
  double scale = target / total;
  const auto scaled = [&](double width) { return std::max(width * scale, leastWidth); };
  for (int round = 0; round < rounds; ++round) {
    const double sum =
        std::accumulate(widths.begin(), widths.end(), 0.0,
                        [&](double before, double width) { return before + scaled(width); });
    scale *= target / std::max(sum, 1.0);
  }
  std::ranges::transform(widths, widths.begin(), scaled);
  return widths;
}

}  // namespace nomely
