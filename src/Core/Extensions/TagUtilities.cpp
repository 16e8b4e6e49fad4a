#include "Core/Extensions/TagUtilities.h"

#include <algorithm>
#include <array>
#include <unordered_set>

#include <fmt/format.h>

#include "Platform/Text/Replacing.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

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
  std::unordered_set<std::string_view> seen;
  for (const std::string& tag : tags) {
    const std::string_view trimmed = trimSpaceAndBreaks(tag);
    if (!trimmed.empty() && seen.insert(trimmed).second) unique.emplace_back(trimmed);
  }
  return unique;
}

std::optional<std::string> TagUtilities::cleanTag(std::string_view typed) {
  std::string tag = replacingAll(withoutEdgeMarks(trimSpaceAndBreaks(typed)), "／", "/");
  if (tag.empty() || tag.starts_with('/') || tag.ends_with('/') ||
      tag.find("//") != std::string::npos)
    return std::nullopt;
  return tag;
}

std::string TagUtilities::whyNoTag(std::string_view typed) {
  return fmt::format(
      "“{}”不能作标签：标签不能为空，也不能以“/”开头、结尾或含有“//”。例如 生活/读书", typed);
}

}  // namespace nomely
