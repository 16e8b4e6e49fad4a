#include "Core/Storage/MemoTemplate.h"

namespace nomely {

ConfigFields configFields(MemoTemplate& record) {
  using enum ConfigField::Presence;
  return {{.key = "name", .target = &record.name},
          {.key = "content", .target = &record.content},
          {.key = "isEnabled", .target = &record.isEnabled, .presence = defaulted},
          {.key = "isPinned", .target = &record.isPinned, .presence = defaulted}};
}

}  // namespace nomely
