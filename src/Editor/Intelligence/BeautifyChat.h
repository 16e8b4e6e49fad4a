#pragma once

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "AI/Writing/AIBeautifier.h"
#include "AI/Writing/BeautifyPreset.h"
#include "Editor/Intelligence/AIAccess.h"
#include "Editor/Intelligence/AIJobs.h"
#include "Platform/Concurrency/Observable.h"

namespace nomely {

// The beautify dialog without its view: each instruction refines what the last one made of the
// text. Main executor alone.
class BeautifyChat {
 public:
  template <typename Value>
  using Property = Published<BeautifyChat, Value>;

  struct Message {
    std::string role;  // "user" or "ai"
    std::string text;

    friend bool operator==(const Message&, const Message&) = default;
  };
  struct Callbacks {
    std::function<void(const std::string& result)> onApply;
    std::function<void()> onCancel;
  };

  // Texts of the view.
  static constexpr std::string_view prompt = "告诉 AI 怎么美化";
  static constexpr std::string_view example = "例如：美化一下、加个总结、用列表展示";
  static constexpr std::string_view placeholder = "输入调整指令...";
  static constexpr std::string_view copyTitle = "复制美化结果";

  BeautifyChat(AIAccess access, std::string originalText, Callbacks callbacks);

  const std::string originalText;

  // Which the view writes.
  Observable<std::string> inputText;
  Observable<bool> showAllPresets{false};
  Observable<bool> copied{false};

  Property<std::string> beautified;  // empty until the first success
  Property<std::vector<Message>> chatMessages;
  Property<bool> isProcessing{false};
  Property<std::optional<std::string>> errorMessage;
  // What has to be said of the last reply besides: that it was cut off.
  Property<std::optional<std::string>> notice;

  [[nodiscard]] std::span<const BeautifyPreset> visiblePresets() const;
  [[nodiscard]] bool canSend() const;

  // What is typed, and a preset. Nothing happens while an instruction is under way.
  void sendMessage();
  void send(const BeautifyPreset& preset);

  void apply() const { callbacks_.onApply(beautified.get()); }
  void cancel() const { callbacks_.onCancel(); }

 private:
  void send(const std::string& instruction);
  void finish(Outcome<AIService::Reply>&& outcome);
  void add(const std::string& role, const std::string& text);

  AIAccess access_;
  Callbacks callbacks_;
  AIJobs jobs_;
};

}  // namespace nomely
