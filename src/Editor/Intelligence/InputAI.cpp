#include "Editor/Intelligence/InputAI.h"

#include <fmt/format.h>

#include "Platform/Text/Unicode.h"

namespace nomely {

InputAI::InputAI(AIAccess access) : access_(std::move(access)), jobs_(access_.executor) {}

void InputAI::performAI(InputAIAction action) {
  if (isAIProcessing.get()) return;
  const std::string sent = inputText.get();
  const bool isGreeting = action == InputAIAction::greeting;
  if (!isGreeting && trimSpaceAndBreaks(sent).empty()) return;
  isAIProcessing.set(true);
  aiError.set(std::nullopt);
  aiStatusMessage.set(std::nullopt);
  aiNotice.set(std::nullopt);
  const Day today = access_.clock.today();
  jobs_.run(
      [this, action, text = isGreeting ? AIWritingAssistant::dateInfo(today) : sent](
          const std::stop_token& stop) {
        return AIWritingAssistant(access_.config(), access_.http).perform(action, text, stop);
      },
      [this, action, sent](Outcome<AIService::Reply>&& outcome) {
        if (outcome.value) {
          applyAIResult(outcome.value->text, action, sent);
          isAIProcessing.set(false);
          aiStatusMessage.set("已生成问候");
          if (outcome.value->isCutOff) aiNotice.set(std::string(AIService::cutOffNotice));
        } else {
          aiError.set(outcome.message());
          isAIProcessing.set(false);
        }
      });
}

void InputAI::applyAIResult(const std::string& result, InputAIAction action,
                            const std::string& sent) {
  using enum InputAIActionInfo::Effect;
  const std::string trimmed(trimSpaceAndBreaks(result));
  if (trimmed.empty()) return;
  const InputAIActionInfo& info = InputAIActionInfo::of(action);
  if (info.effect == append) {
    inputText.set(fmt::format("{}\n\n---\n## {}\n{}", inputText.get(), info.heading, trimmed));
    return;
  }
  // A greeting takes the place of the text that it was asked over, not of what came meanwhile.
  if (info.effect == replace || inputText.get() != sent) keepOriginal(sent);
  inputText.set(trimmed);
}

void InputAI::keepOriginal(const std::string& sent) {
  const std::string& box = inputText.get();
  const bool isBlank = trimSpaceAndBreaks(box).empty();
  if (!originalTextBeforeAI.get()) {
    originalTextBeforeAI.set(isBlank ? sent : box);
    attachmentsSnapshotBeforeAI.set(pending.get());
  } else if (box != sent && !isBlank) {
    originalTextBeforeAI.set(*originalTextBeforeAI.get() + "\n\n" + box);
  }
}

void InputAI::forgetOriginal() {
  originalTextBeforeAI.set(std::nullopt);
  attachmentsSnapshotBeforeAI.set(std::nullopt);
}

}  // namespace nomely
