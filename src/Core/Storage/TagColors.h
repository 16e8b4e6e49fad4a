#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace nomely {

// The colours and emojis that a user may give a tag. Pure.
namespace TagColors {

struct NamedColor {
  const char* chinese;
  const char* english;
  const char* value;
};

inline constexpr std::array<NamedColor, 10> named{{{"红", "red", "#E5484D"},
                                                   {"橙", "orange", "#F76B15"},
                                                   {"黄", "yellow", "#E2A336"},
                                                   {"绿", "green", "#30A46C"},
                                                   {"青", "cyan", "#00A2C7"},
                                                   {"蓝", "blue", "#0090FF"},
                                                   {"紫", "purple", "#8E4EC6"},
                                                   {"粉", "pink", "#D6409F"},
                                                   {"棕", "brown", "#AD7F58"},
                                                   {"灰", "gray", "#8B8D98"}}};

// "#RRGGBB" of "#rrggbb", "rgb" or one of these names.
[[nodiscard]] std::optional<std::string> valueOf(const std::string& text);
// Whether `text` can be a tag's emoji: one character of one line.
[[nodiscard]] bool isEmoji(std::string_view text);
inline constexpr const char* notAnEmoji = "请只给一个表情，例如 🏃";

}  // namespace TagColors

}  // namespace nomely
