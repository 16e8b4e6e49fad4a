#pragma once

#include <string>

#include "CLI/Terminal.h"
#include "Core/Storage/TagConfig.h"
#include "Platform/Text/Json.h"

namespace nomely {

// Colours and emojis of tags on a terminal and in JSON. `config` must outlive it.
class TagLooks {
 public:
  explicit TagLooks(const TagConfig& config) : config_(config) {}

  // "🏃 #运动".
  [[nodiscard]] std::string text(const std::string& tag, const Style& style) const;
  // Adds "color" and "emoji" where the tag has them.
  void addTo(Json& json, const std::string& tag) const;

  // "#RRGGBB" of "#rrggbb", "rgb" or a colour's name. Throws UsageError.
  [[nodiscard]] static std::string colorNamed(const std::string& text);
  // One character. Throws UsageError.
  [[nodiscard]] static std::string checkedEmoji(const std::string& text);

 private:
  const TagConfig& config_;
};

}  // namespace nomely
