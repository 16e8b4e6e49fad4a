#include "CLI/HistoryDiff.h"

#include <vector>

#include <fmt/format.h>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Markdown/Text/TextLines.h"
#include "Platform/Text/LineDiff.h"

namespace nomely {
namespace {

// The file of the memo, but for the time of its last change, which is never the same.
std::string fileOf(const Memo& memo) {
  MemoFrontmatter header = memo.frontmatter();
  header.updatedAt.reset();
  return MemoFrontmatterParser::serialize(header, memo.body);
}

std::string headingOf(const DiffHunk& hunk) {
  std::size_t before = 0;
  std::size_t after = 0;
  for (const DiffLine& line : hunk.lines) {
    if (line.kind != DiffLine::Kind::added) ++before;
    if (line.kind != DiffLine::Kind::removed) ++after;
  }
  // A stretch without lines is named by the line before it.
  return fmt::format("@@ -{},{} +{},{} @@", hunk.firstBefore + (before > 0 ? 1 : 0), before,
                     hunk.firstAfter + (after > 0 ? 1 : 0), after);
}

std::string drawn(const DiffLine& line, const Style& style) {
  const std::string text = Terminal::printable(line.text);
  switch (line.kind) {
    case DiffLine::Kind::removed:
      return style.withCodes("31", "-" + text);
    case DiffLine::Kind::added:
      return style.withCodes("32", "+" + text);
    case DiffLine::Kind::same:
      break;
  }
  return " " + text;
}

}  // namespace

HistoryDiff::HistoryDiff(const Memo& before, const Memo& after)
    : before_(fileOf(before)), after_(fileOf(after)) {}

std::string HistoryDiff::text(const Style& style) const {
  const std::vector<std::string_view> before = linesOf(before_);
  const std::vector<std::string_view> after = linesOf(after_);
  std::string text;
  for (const DiffHunk& hunk : lineDiff(before, after)) {
    text += style.tag(headingOf(hunk)) + "\n";
    for (const DiffLine& line : hunk.lines) text += drawn(line, style) + "\n";
  }
  return text;
}

}  // namespace nomely
