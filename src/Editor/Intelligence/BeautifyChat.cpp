#include "Editor/Intelligence/BeautifyChat.h"

#include "Platform/Text/Unicode.h"

namespace nomely {

BeautifyChat::BeautifyChat(AIAccess access, std::string text, Callbacks callbacks)
    : originalText(std::move(text)),
      access_(std::move(access)),
      callbacks_(std::move(callbacks)),
      jobs_(access_.executor) {}

std::span<const BeautifyPreset> BeautifyChat::visiblePresets() const {
  return showAllPresets.get() ? BeautifyPreset::all() : BeautifyPreset::first();
}

bool BeautifyChat::canSend() const {
  return !trimSpaceAndBreaks(inputText.get()).empty();
}

void BeautifyChat::sendMessage() {
  if (canSend()) send(std::string(trimSpaceAndBreaks(inputText.get())));
}

void BeautifyChat::send(const BeautifyPreset& preset) {
  send(std::string(preset.instruction));
}

void BeautifyChat::send(const std::string& instruction) {
  if (isProcessing.get()) return;
  add("user", instruction);
  inputText.set({});
  isProcessing.set(true);
  errorMessage.set(std::nullopt);
  notice.set(std::nullopt);
  jobs_.run(
      [this, task = AIBeautifier::Task{originalText, beautified.get(), instruction}](
          const std::stop_token& stop) {
        return AIBeautifier(access_.config(), access_.http).refine(task, stop);
      },
      [this](Outcome<AIService::Reply>&& outcome) { finish(std::move(outcome)); });
}

void BeautifyChat::finish(Outcome<AIService::Reply>&& outcome) {
  if (outcome.value) {
    add("ai", "已调整");
    beautified.set(outcome.value->text);
    copied.set(false);
    if (outcome.value->isCutOff) notice.set(std::string(AIService::cutOffNotice));
  } else {
    add("ai", "失败：" + outcome.message());
    errorMessage.set(outcome.message());
  }
  isProcessing.set(false);
}

void BeautifyChat::add(const std::string& role, const std::string& text) {
  chatMessages.modify([&](std::vector<Message>& messages) { messages.push_back({role, text}); });
}

}  // namespace nomely
