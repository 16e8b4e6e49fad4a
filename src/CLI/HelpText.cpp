#include "CLI/HelpText.h"

#include <algorithm>

#include <fmt/format.h>

#include "CLI/TextWrapping.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

struct Row {
  std::string left;
  std::string right;
};

std::string placeOf(const Argument& argument) {
  const std::string name = argument.name + (argument.collects() ? "..." : "");
  return argument.isRequired ? name : "[" + name + "]";
}

void addPlaces(std::string& line, const Syntax& syntax) {
  for (const Argument& argument : syntax.arguments)
    if (argument.isPositional()) line += " " + placeOf(argument);
}

bool hasOptions(const Syntax& syntax) {
  return !std::ranges::all_of(syntax.arguments, &Argument::isPositional);
}

// A heading and its rows, in two columns where there is room for both.
std::string section(const std::string& title, const std::vector<Row>& rows, std::size_t width) {
  if (rows.empty()) return {};
  constexpr std::size_t indent = 2;
  constexpr std::size_t widestColumn = 28;
  constexpr std::size_t narrowestText = 30;
  std::size_t column = 0;
  for (const Row& row : rows) {
    const std::size_t needed = indent + displayWidth(row.left) + 2;
    if (needed <= widestColumn) column = std::max(column, needed);
  }
  const bool inColumns = width >= column + narrowestText;
  if (!inColumns) column = 2 * indent + 2;
  std::string text = "\n" + title + "\n";
  for (const auto& [left, right] : rows) {
    std::string line = std::string(indent, ' ') + left;
    const bool fits = inColumns && displayWidth(line) + 2 <= column;
    if (fits)
      line.append(column - displayWidth(line), ' ');
    else
      line.append("\n").append(column, ' ');
    text += line;
    text += wrapText(right, width - std::min(width, column), column);
    text += '\n';
  }
  return text;
}

std::vector<Row> rowsOf(const Syntax& syntax, bool positional) {
  std::vector<Row> rows;
  for (const Argument& argument : syntax.arguments)
    if (argument.isPositional() == positional && !argument.help.empty())
      rows.push_back({HelpText::heading(argument), argument.help});
  return rows;
}

std::vector<Row> rowsOfParts(const Syntax& syntax) {
  std::vector<Row> rows;
  for (const Syntax* part : syntax.shownParts()) {
    std::string left = part->name;
    addPlaces(left, *part);
    rows.push_back({std::move(left), part->summary});
  }
  return rows;
}

}  // namespace

std::string HelpText::heading(const Argument& argument) {
  if (argument.isPositional()) return argument.name + (argument.collects() ? "..." : "");
  std::string text = fmt::format("{}", fmt::join(argument.names(), ", "));
  if (argument.isFlag()) return text;
  return text + (argument.mayLackValue ? " [" + argument.value + "]" : " " + argument.value);
}

std::string HelpText::usage(const Chain& chain) {
  std::string line;
  for (const Syntax* syntax : chain) {
    line += (line.empty() ? "" : " ") + syntax->name;
    addPlaces(line, *syntax);
  }
  const Syntax& last = *chain.back();
  if (chain.size() == 1) return line + " [命令] [参数]";
  if (!last.parts.empty()) line += " [操作]";
  if (hasOptions(last)) line += " [选项]";
  return line;
}

std::string HelpText::of(const Chain& chain, std::size_t width) {
  const Syntax& last = *chain.back();
  constexpr std::size_t afterLabel = 6;
  std::string text =
      wrapText("用法：" + usage(chain), width - std::min(width, afterLabel), afterLabel) + "\n\n";
  text += wrapText(last.summary, width, 0) + "\n";
  const bool isProgram = chain.size() == 1;
  text += section("参数：", rowsOf(last, true), width);
  text += section(isProgram ? "命令：" : "操作：", rowsOfParts(last), width);
  if (!isProgram) text += section("选项：", rowsOf(last, false), width);
  if (!last.examples.empty()) text += "\n例：\n";
  for (const std::string& example : last.examples)
    text += "  " + wrapText(example, width - std::min<std::size_t>(width, 2), 4) + "\n";
  return text + section("全局选项：", rowsOf(*chain.front(), false), width);
}

}  // namespace nomely
