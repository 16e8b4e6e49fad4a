#pragma once

#include <string>

#include "Core/Storage/ConfigField.h"
#include "Platform/System/Uuid.h"

namespace nomely {

// A text to begin a memo with. A value.
struct MemoTemplate {
  Uuid id = Uuid::random();  // drawn anew whenever one is read, never stored
  std::string name = {};
  std::string content = {};
  bool isEnabled = true;
  bool isPinned = false;

  friend bool operator==(const MemoTemplate&, const MemoTemplate&) = default;
};

[[nodiscard]] ConfigFields configFields(MemoTemplate& record);

}  // namespace nomely
