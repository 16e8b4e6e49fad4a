#pragma once

#include <span>
#include <string_view>

namespace nomely {

// An instruction that the beautifier offers.
struct BeautifyPreset {
  int number;  // from 1, in the order of the list
  std::string_view title;
  std::string_view instruction;

  [[nodiscard]] static std::span<const BeautifyPreset> all();
  // Those that are offered before a user asks for all.
  [[nodiscard]] static std::span<const BeautifyPreset> first();
};

}  // namespace nomely
