#pragma once

#include <stop_token>
#include <string>

#include "AI/Vendor/AIService.h"
#include "AI/Writing/InputAIAction.h"
#include "Platform/Time/Day.h"

namespace nomely {

// The quick input's actions on text, one request each. Made anew for each run, with the settings of
// the moment.
class AIWritingAssistant {
 public:
  AIWritingAssistant(const AIConfig& config, HttpClient& http) : service_(config, http) {}

  // Has `text` worked on; for a greeting, `text` is what dateInfo tells. Throws as AIService::chat,
  // and AIFeatureOffError.
  [[nodiscard]] AIService::Reply perform(InputAIAction action, const std::string& text,
                                         const std::stop_token& stop);

  // "今天是2026年3月1日 星期日，今年第9周。"
  [[nodiscard]] static std::string dateInfo(Day today);

 private:
  AIService service_;
};

}  // namespace nomely
