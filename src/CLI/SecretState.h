#pragma once

#include <string_view>

#include "Platform/Settings/SecretBackend.h"

namespace nomely {

// What users and scripts are told of a secret: never its value.
[[nodiscard]] constexpr std::string_view secretStateText(SecretLookup::State state) {
  return state == SecretLookup::State::found  ? "已设置"
         : state == SecretLookup::State::none ? "未设置"
                                              : "读不到";
}
[[nodiscard]] constexpr std::string_view secretStateCode(SecretLookup::State state) {
  return state == SecretLookup::State::found  ? "set"
         : state == SecretLookup::State::none ? "none"
                                              : "unavailable";
}

}  // namespace nomely
