#include "Core/Storage/TagConfig.h"

#include <array>

#include "Core/Extensions/TagNames.h"

namespace nomely {

void TagConfig::move(std::string_view from, std::string_view to) {
  for (auto* looks : {&colors, &emojis}) {
    std::map<std::string, std::string> kept;
    for (const bool isOwn : {true, false})
      for (const auto& [tag, look] : *looks)
        if (TagNames::isOrIsBelow(tag, from) != isOwn)
          if (const auto name = TagNames::moved(tag, from, to)) kept.emplace(*name, look);
    *looks = std::move(kept);
  }
}

ConfigFields configFields(TagConfig& config) {
  static constexpr std::array<std::string_view, 4> modes{"date", "count", "name", "activity"};
  return {{.key = "colors", .target = &config.colors},
          {.key = "emojis", .target = &config.emojis},
          {.key = "sortMode", .target = choiceOf(config.sortMode, modes)}};
}

}  // namespace nomely
