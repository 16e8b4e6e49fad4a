#include "Core/Query/SearchSnippetKit.h"

#include <fmt/format.h>

#include "Core/Extensions/TagNames.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::size_t context = 40;  // characters on either side
constexpr std::string_view opening = ">>>";
constexpr std::string_view closing = "<<<";
constexpr std::string_view ellipsis = "...";

}  // namespace

std::string SearchSnippetKit::makeSnippet(std::string_view body, const TextNeedle& keyword) {
  const auto found = keyword.firstIn(body);
  if (!found) return std::string(body);
  const std::size_t begin = graphemesBefore(body, found->begin, context);
  const std::size_t end = graphemesAfter(body, found->end, context);
  return fmt::format("{}{}{}{}{}{}{}", begin > 0 ? ellipsis : "",
                     body.substr(begin, found->begin - begin), opening,
                     body.substr(found->begin, found->end - found->begin), closing,
                     body.substr(found->end, end - found->end), end < body.size() ? ellipsis : "");
}

std::vector<SearchSnippetKit::Run> SearchSnippetKit::highlightedByMarkers(
    std::string_view snippet) {
  std::vector<Run> runs;
  const auto add = [&](std::string_view text, bool isHighlighted) {
    if (!text.empty()) runs.push_back({std::string(text), isHighlighted});
  };
  for (;;) {
    const std::size_t open = snippet.find(opening);
    const std::size_t close =
        open == std::string_view::npos ? open : snippet.find(closing, open + opening.size());
    if (close == std::string_view::npos) break;
    add(snippet.substr(0, open), false);
    add(snippet.substr(open + opening.size(), close - open - opening.size()), true);
    snippet.remove_prefix(close + closing.size());
  }
  add(snippet, false);
  return runs;
}

std::string SearchSnippetKit::tagFallbackSnippet(std::string_view query,
                                                 const std::vector<std::string>& tags) {
  const TextNeedle needle(query);
  std::string named;
  for (const std::string& tag : tags)
    if (!TagNames::isHidden(tag) && needle.isIn(tag)) named += " #" + tag;
  return named.empty() ? fmt::format("命中「{}」", query) : "标签命中" + named;
}

}  // namespace nomely
