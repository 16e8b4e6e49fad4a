#include "AI/Writing/AIWritingAssistant.h"

#include "AI/Vendor/AIError.h"
#include "Platform/Time/ChineseDates.h"

namespace nomely {

AIService::Reply AIWritingAssistant::perform(InputAIAction action, const std::string& text,
                                             const std::stop_token& stop) {
  if (!service_.config().features.writingAssistant)
    throw AIFeatureOffError("ai.features.writingAssistant");
  return service_.chat({.system = std::string(InputAIActionInfo::of(action).prompt),
                        .user = text,
                        .maxTokens = 2048},
                       stop);
}

std::string AIWritingAssistant::dateInfo(Day today) {
  return ChineseDates("今天是yyyy年M月d日 EEEE，今年第w周。").format(today);
}

}  // namespace nomely
