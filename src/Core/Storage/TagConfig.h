#pragma once

#include <map>
#include <string>
#include <string_view>

#include "Core/Storage/ConfigField.h"

namespace nomely {

// How tags look and are sorted, kept in tags.yaml. A value.
struct TagConfig {
  static constexpr std::string_view fileName = "tags.yaml";

  enum class SortMode { latestDate, count, name, activity };

  std::map<std::string, std::string> colors = {};  // by tag
  std::map<std::string, std::string> emojis = {};  // by tag
  SortMode sortMode = SortMode::latestDate;

  // The looks of `from` and of what is below it become those of `to`, unless that has its own;
  // with an empty `to` they go.
  void move(std::string_view from, std::string_view to);

  friend bool operator==(const TagConfig&, const TagConfig&) = default;
};

[[nodiscard]] ConfigFields configFields(TagConfig& config);

}  // namespace nomely
