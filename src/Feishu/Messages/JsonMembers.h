#pragma once

#include <string>

#include "Platform/Text/Json.h"

namespace nomely {

// A member of a foreign object: null when `json` is no object or lacks it.
[[nodiscard]] inline const Json& memberOf(const Json& json, const char* name) {
  static const Json none;
  const auto found = json.is_object() ? json.find(name) : json.end();
  return json.is_object() && found != json.end() ? *found : none;
}

// Its text; empty when it is none.
[[nodiscard]] inline std::string textOf(const Json& json, const char* name) {
  const Json& member = memberOf(json, name);
  return member.is_string() ? member.get<std::string>() : std::string();
}

}  // namespace nomely
