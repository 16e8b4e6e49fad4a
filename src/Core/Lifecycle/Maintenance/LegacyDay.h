#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nomely {

// A day's text as the oldest versions kept it, one file a day: a header with "tags:" and "mood:"
// between two lines "---", and sections that begin with "## " and a title.
//
// Every line that isn't blank is in what this gives: header lines of any other kind and the text
// before the first section stand at the beginning of the first section's text, a title that says
// more than a time at the beginning of its own.
struct LegacyDay {
  struct Section {
    std::optional<std::string> time;  // "HH:mm" that the title tells
    std::string body;
  };

  std::vector<std::string> tags;
  std::optional<std::int64_t> mood;
  std::vector<Section> sections;  // a text without any makes one, a blank one none

  // `text` is well-formed UTF-8. Line ends of any kind, a byte order mark and a missing header are
  // all right. Pure.
  [[nodiscard]] static LegacyDay parse(std::string_view text);

  // The items of a list on one line: `[工作, "a, b"]` → 工作 and "a, b"; `#a #b` → a and b; also
  // without brackets and with Chinese commas.
  [[nodiscard]] static std::vector<std::string> listItems(std::string_view list);
  // The first time in a title: "8:05 起床" → "08:05", "下午3：20" → "15:20".
  [[nodiscard]] static std::optional<std::string> timeIn(std::string_view title);
};

}  // namespace nomely
