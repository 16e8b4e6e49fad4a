#include "Core/Storage/TagConfig.h"

#include <array>

namespace nomely {

ConfigFields configFields(TagConfig& config) {
  static constexpr std::array<std::string_view, 4> modes{"date", "count", "name", "activity"};
  return {{.key = "colors", .target = &config.colors},
          {.key = "emojis", .target = &config.emojis},
          {.key = "sortMode", .target = choiceOf(config.sortMode, modes)}};
}

}  // namespace nomely
