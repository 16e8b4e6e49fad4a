#include <algorithm>
#include <array>

#include "Browser/MonthOverviewStore.h"
#include "Platform/Text/Unicode.h"

namespace nomely::MonthOverviewStore {
namespace {

constexpr std::size_t longest = 40;
constexpr std::string_view commentEnd = "-->";

bool saysNothing(std::string_view line) {
  constexpr std::array<std::string_view, 4> openings{"#", "- ", "* ", ">"};
  constexpr std::array<std::string_view, 3> rules{"---", "***", "___"};
  return line.empty() ||
         std::ranges::any_of(openings, [&](auto opening) { return line.starts_with(opening); }) ||
         std::ranges::find(rules, line) != rules.end();
}

// Bold, code and italic marks are made of these two alone.
std::string withoutMarks(std::string_view line) {
  std::string plain(line);
  std::erase_if(plain, [](char c) { return c == '*' || c == '`'; });
  return std::string(trimHorizontal(plain));
}

std::string shortened(const std::string& line) {
  const std::string_view start = graphemePrefix(line, longest);
  return start.size() == line.size() ? line : std::string(start) + "…";
}

}  // namespace

std::string previewLine(std::string_view body) {
  bool inComment = false;
  for (std::size_t begin = 0; begin <= body.size();) {
    const std::size_t end = std::min(body.find('\n', begin), body.size());
    const std::string_view line = trimHorizontal(body.substr(begin, end - begin));
    begin = end + 1;
    if (inComment || line.starts_with("<!--")) {
      inComment = !line.ends_with(commentEnd);
      continue;
    }
    if (saysNothing(line)) continue;
    if (const std::string plain = withoutMarks(line); !plain.empty()) return shortened(plain);
  }
  return "（无正文）";
}

}  // namespace nomely::MonthOverviewStore
