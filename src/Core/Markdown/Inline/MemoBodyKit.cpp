#include "Core/Markdown/Inline/MemoBodyKit.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "Core/Markdown/Inline/ColorSpans.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr auto npos = std::string_view::npos;
constexpr double budget = 6;
constexpr double blankLineGap = 0.5;

bool isCjk(char32_t c) {
  return (c >= 0x4E00 && c <= 0x9FFF) || (c >= 0x3040 && c <= 0x30FF) ||
         (c >= 0xAC00 && c <= 0xD7AF) || (c >= 0x3400 && c <= 0x4DBF);
}

double charactersPerLine(std::string_view text) {
  constexpr double ideographs = 26;
  constexpr double letters = 24;  // more than of ideographs
  return (1 - MemoBodyKit::estimatedCJKRatio(text)) * letters + ideographs;
}

// The lines of a text, one after the other.
class LineReader {
 public:
  explicit LineReader(std::string_view text) : rest_(text) {}

  [[nodiscard]] bool isDone() const { return isDone_; }

  std::string_view next() {
    for (std::size_t at = 0; at < rest_.size(); ++at) {
      const auto byte = static_cast<unsigned char>(rest_[at]);
      const bool mayBreak = (byte >= 0x0A && byte <= 0x0D) || byte == 0xC2 || byte == 0xE2;
      if (!mayBreak) continue;
      const DecodedCharacter character = decodeFirst(rest_.substr(at));
      if (!isLineBreak(character.value)) continue;
      const std::string_view line = rest_.substr(0, at);
      rest_.remove_prefix(at + character.length);
      return line;
    }
    isDone_ = true;
    return rest_;
  }

 private:
  std::string_view rest_;
  bool isDone_ = false;
};

// What a line costs, or more than the budget for one that is longer than that.
double costWithinBudget(std::string_view line, double perLine) {
  const auto most = static_cast<std::size_t>(perLine * budget) + 1;
  return std::max(static_cast<double>(graphemeCountUpTo(line, most)) / perLine, 1.0);
}

bool isBlank(std::string_view line) {
  return trimHorizontal(line).empty();
}

std::string joined(const std::vector<std::string_view>& lines) {
  std::string text;
  for (const std::string_view line : lines) (text += line) += '\n';
  if (!text.empty()) text.pop_back();
  return text;
}

std::size_t countOf(std::string_view part, std::string_view text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != npos; at = text.find(part, at + part.size()))
    ++count;
  return count;
}

std::string trimmed(std::string_view text) {
  return std::string(trimSpaceAndBreaks(text));
}

// Of a code block that the cut left open, trimming its markers leaves two of the three of its
// fence.
std::string withoutFenceRest(std::string text) {
  constexpr std::string_view rest = "\n``";
  if (text.ends_with(rest))
    return trimmed(std::string_view(text).substr(0, text.size() - rest.size()));
  return text;
}

}  // namespace

double MemoBodyKit::estimatedCJKRatio(std::string_view text) {
  constexpr std::size_t looked = 400;
  std::string_view rest = graphemePrefix(text, looked);
  if (rest.empty()) return 0;
  std::size_t all = 0;
  std::size_t cjk = 0;
  for (; !rest.empty(); ++all) {
    const DecodedCharacter next = decodeFirst(rest);
    if (isCjk(next.value)) ++cjk;
    rest.remove_prefix(next.length);
  }
  return static_cast<double>(cjk) / static_cast<double>(all);
}

double MemoBodyKit::estimatedRenderLines(std::string_view text) {
  const double perLine = charactersPerLine(text);
  double lines = 0;
  for (LineReader reader(text); !reader.isDone();) {
    const std::string_view line = reader.next();
    lines += std::max(static_cast<double>(graphemeCount(line)) / perLine, 1.0);
    if (isBlank(line)) lines += blankLineGap;
  }
  return lines;
}

bool MemoBodyKit::shouldCollapse(std::string_view text) {
  const std::string_view body = trimSpaceAndBreaks(text);
  if (body.empty()) return false;
  const double perLine = charactersPerLine(body);
  double lines = 0;
  for (LineReader reader(body); !reader.isDone() && lines <= budget;) {
    const std::string_view line = reader.next();
    lines += costWithinBudget(line, perLine);
    if (isBlank(line)) lines += blankLineGap;
  }
  return lines > budget;
}

std::string MemoBodyKit::collapsedPreview(std::string_view text) {
  const std::string_view body = trimSpaceAndBreaks(text);
  const double perLine = charactersPerLine(body);
  std::vector<std::string_view> kept;
  double used = 0;
  LineReader reader(body);
  while (!reader.isDone()) {
    const std::string_view line = reader.next();
    const double cost = costWithinBudget(line, perLine);
    if (used + cost > budget) {
      const double left = perLine * (budget - used);
      if (left >= 1)
        kept.push_back(
            trimHorizontal(graphemePrefix(line, static_cast<std::size_t>(std::trunc(left)))));
      return withoutFenceRest(truncateUnclosedTable(
                 trimUnclosedInlineMarkers(closeOpenColorSpan(trimmed(joined(kept)))))) +
             "...";
    }
    kept.push_back(line);
    used += cost + (isBlank(line) ? blankLineGap : 0);
  }
  return std::string(body);
}

std::string MemoBodyKit::closeOpenColorSpan(std::string text) {
  constexpr std::string_view closing = "</span>";
  const std::size_t opened = ColorSpans::openingCount(text);
  for (std::size_t closed = countOf(closing, text); closed < opened; ++closed) text += closing;
  return text;
}

std::string MemoBodyKit::trimUnclosedInlineMarkers(std::string text) {
  for (const std::string_view marker : {"**", "*", "`"})
    if (countOf(marker, text) % 2 == 1) text.resize(text.rfind(marker));
  return trimmed(text);
}

std::string MemoBodyKit::truncateUnclosedTable(std::string text) {
  std::vector<std::string_view> lines;
  for (LineReader reader(text); !reader.isDone();) lines.push_back(reader.next());
  const auto hasPipe = [&](std::size_t line) { return lines[line].find('|') != npos; };
  std::size_t last = lines.size();
  while (last > 0 && !hasPipe(last - 1)) --last;
  if (last < 3 || !hasPipe(last - 2) || !hasPipe(last - 3)) return text;
  std::size_t first = last - 3;
  while (first > 0 && hasPipe(first - 1)) --first;
  lines.resize(first);
  std::string before = trimmed(joined(lines));
  return before.empty() ? text : before;
}

}  // namespace nomely
