#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Time/Day.h"

namespace nomely::FlomoMarkup {

// What stands in one note of an exported page. Pure; each takes time that grows with its text
// alone, whatever that is.

struct Moment {
  Day date;
  std::string time;  // "HH:mm"
};
// "2026-03-05 21:30:00", "2026/03/05 21:30", "2026-03-05" (at "00:00"). Absent for any other text.
[[nodiscard]] std::optional<Moment> parseTime(std::string_view text);

// The text of `<div class="time">`; absent without one on a single line.
[[nodiscard]] std::optional<std::string_view> timeOf(std::string_view note);
// What stands between `<div class="content">` and its own end, inner `div`s included. Absent when
// it has no beginning, or nothing is closed after that.
[[nodiscard]] std::optional<std::string_view> contentOf(std::string_view note);
// The `src` of each picture and recording, entities decoded.
[[nodiscard]] std::vector<std::string> mediaOf(std::string_view note);
// The tags that stand as links, `<a class="tag">#读书</a>`, without "#".
[[nodiscard]] std::vector<std::string> linkedTagsOf(std::string_view content);

// The text of a content: without markup, entities decoded. Where a block's markup would leave two
// words glued, a line feed stands: "<p>a</p><p>b</p>" → "a\nb".
[[nodiscard]] std::string textOf(std::string_view content);
// The tags in such a text: "#读书 #a,b" → ["读书", "a"].
[[nodiscard]] std::vector<std::string> tagsIn(std::string_view text);

}  // namespace nomely::FlomoMarkup
