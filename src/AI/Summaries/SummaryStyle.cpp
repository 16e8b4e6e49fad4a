#include "AI/Summaries/SummaryStyle.h"

#include <array>

#include "AI/Summaries/SummaryPrompts.h"

namespace nomely {

std::span<const SummaryStyleInfo> SummaryStyleInfo::all() {
  using enum SummaryStyle;
  namespace Prompts = SummaryPrompts;
  static constexpr std::array<SummaryStyleInfo, 5> styles{{
      {diary, "diary", "日记版", false, Prompts::monthlyDiary, Prompts::annualDiary},
      {warm, "warm", "温情版", false, Prompts::monthlyWarm, Prompts::annualWarm},
      {proPattern, "proPattern", "模式洞察", true, Prompts::monthlyProPattern,
       Prompts::annualProPattern},
      {proValue, "proValue", "价值澄清", true, Prompts::monthlyProValue, std::nullopt},
      {proSecondOrder, "proSecondOrder", "二阶思考", true, Prompts::monthlyProSecondOrder,
       std::nullopt},
  }};
  return styles;
}

const SummaryStyleInfo& SummaryStyleInfo::of(SummaryStyle style) {
  return all()[static_cast<std::size_t>(style)];
}

}  // namespace nomely
