#include "Core/Extensions/TagUtilities.h"

#include <algorithm>
#include <array>

#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::string_view fullWidthSolidus = "／";
constexpr std::array<std::string_view, 3> edgeMarks{"#", "，", ","};

std::string_view withoutEdgeMarks(std::string_view text) {
  const auto strip = [&](std::string_view mark) {
    if (text.starts_with(mark))
      text.remove_prefix(mark.size());
    else if (text.ends_with(mark))
      text.remove_suffix(mark.size());
    else
      return false;
    return true;
  };
  while (std::ranges::any_of(edgeMarks, strip)) {
  }
  return text;
}

}  // namespace

std::vector<std::string> TagUtilities::uniqueTags(const std::vector<std::string>& tags) {
  std::vector<std::string> unique;
  for (const std::string& tag : tags) {
    const std::string_view trimmed = trimSpaceAndBreaks(tag);
    if (!trimmed.empty() && std::ranges::find(unique, trimmed) == unique.end())
      unique.emplace_back(trimmed);
  }
  return unique;
}

std::optional<std::string> TagUtilities::cleanTag(std::string_view typed) {
  std::string tag(withoutEdgeMarks(trimSpaceAndBreaks(typed)));
  for (std::size_t at = tag.find(fullWidthSolidus); at != std::string::npos;
       at = tag.find(fullWidthSolidus, at))
    tag.replace(at, fullWidthSolidus.size(), "/");
  if (tag.empty() || tag.starts_with('/') || tag.ends_with('/') ||
      tag.find("//") != std::string::npos)
    return std::nullopt;
  return tag;
}

}  // namespace nomely
