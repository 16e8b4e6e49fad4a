#include "Core/Markdown/Frontmatter/MemoFileParts.h"

#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

bool isFence(std::string_view line) {
  // Most lines begin with a letter, and only "-" or white space begins a fence.
  constexpr auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
  return !line.empty() && !isLetter(line.front()) && trimHorizontal(line) == MemoFileParts::fence;
}

}  // namespace

std::string_view takeLine(std::string_view& rest) {
  const std::size_t end = rest.find('\n');
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  return line;
}

std::variant<MemoFileParts, ParseError::Kind> MemoFileParts::of(std::string_view content) {
  std::string_view rest = content;
  if (!isFence(takeLine(rest))) return ParseError::Kind::missingFrontmatter;
  const std::string_view start = rest;
  while (!rest.empty()) {
    const std::string_view line = takeLine(rest);
    if (!isFence(line)) continue;
    const auto length = static_cast<std::size_t>(line.data() - start.data());
    return MemoFileParts{start.substr(0, length), rest};
  }
  return ParseError::Kind::unclosedFrontmatter;
}

bool MemoFileParts::holdsFence(std::string_view text) {
  while (!text.empty())
    if (isFence(takeLine(text))) return true;
  return false;
}

}  // namespace nomely
