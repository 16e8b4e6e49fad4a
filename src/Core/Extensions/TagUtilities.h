#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// Tags as a user types them, brought into the form in which they are stored. Pure.
namespace TagUtilities {

// Each tag trimmed of white space and line breaks, the empty ones dropped, the first of equals
// kept.
[[nodiscard]] std::vector<std::string> uniqueTags(const std::vector<std::string>& tags);

// "#工作／计划，" → "工作/计划". Absent when nothing is left or a level is empty ("a//b").
[[nodiscard]] std::optional<std::string> cleanTag(std::string_view typed);
// What is said of one for which that is absent.
[[nodiscard]] std::string whyNoTag(std::string_view typed);

}  // namespace TagUtilities

}  // namespace nomely
