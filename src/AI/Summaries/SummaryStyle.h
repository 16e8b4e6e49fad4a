#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace nomely {

// From which angle a summary is written.
enum class SummaryStyle { diary, warm, proPattern, proValue, proSecondOrder };

struct SummaryStyleInfo {
  SummaryStyle style;
  std::string_view name;
  std::string_view titleSuffix;
  bool isPro;  // the figures of the month stand above the reply
  std::string_view monthlyPrompt;
  std::optional<std::string_view> annualPrompt;  // absent: not for a year

  [[nodiscard]] static std::span<const SummaryStyleInfo> all();
  [[nodiscard]] static const SummaryStyleInfo& of(SummaryStyle style);
};

}  // namespace nomely
