#include "Core/Storage/DisplayConfig.h"

#include <array>

namespace nomely {

ConfigFields configFields(DisplayConfig& config) {
  using enum ConfigField::Presence;
  static constexpr std::array<std::string_view, 2> modes{"text", "card"};
  constexpr double smallest = 6;
  constexpr double largest = 96;
  return {
      {.key = "tagFontSize", .target = &config.tagFontSize, .least = smallest, .most = largest},
      {.key = "bodyFontSize", .target = &config.bodyFontSize, .least = smallest, .most = largest},
      {.key = "seriesNumberAscending",
       .target = &config.seriesNumberAscending,
       .presence = defaulted},
      {.key = "defaultShowsSeriesNumber",
       .target = &config.defaultShowsSeriesNumber,
       .presence = defaulted},
      {.key = "linkDisplayMode",
       .target = choiceOf(config.linkDisplayMode, modes),
       .presence = defaulted}};
}

}  // namespace nomely
