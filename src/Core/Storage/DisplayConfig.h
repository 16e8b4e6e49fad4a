#pragma once

#include <string_view>

#include "Core/Storage/ConfigField.h"

namespace nomely {

// How memos look in a window, kept in display-config.yaml. A value.
struct DisplayConfig {
  static constexpr std::string_view fileName = "display-config.yaml";

  enum class LinkDisplayMode { text, card };

  double tagFontSize = 12;   // points
  double bodyFontSize = 14;  // points
  bool seriesNumberAscending = false;
  bool defaultShowsSeriesNumber = false;
  LinkDisplayMode linkDisplayMode = LinkDisplayMode::text;

  friend bool operator==(const DisplayConfig&, const DisplayConfig&) = default;
};

[[nodiscard]] ConfigFields configFields(DisplayConfig& config);

}  // namespace nomely
