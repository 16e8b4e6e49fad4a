#include "AI/Writing/InputAIAction.h"

#include <array>

#include "AI/Writing/WritingPrompts.h"

namespace nomely {

std::span<const InputAIActionInfo> InputAIActionInfo::all() {
  using enum InputAIAction;
  static constexpr std::array<InputAIActionInfo, 6> actions{{
      {organize, "organize", "整理成笔记", "替换输入，并保留原文", "text.justify.left",
       Effect::replace, "", WritingPrompts::organize},
      {polish, "polish", "润色表达", "替换输入，并保留原文", "wand.and.stars", Effect::replace, "",
       WritingPrompts::polish},
      {expand, "expand", "扩写细节", "替换输入，并保留原文", "text.badge.plus", Effect::replace, "",
       WritingPrompts::expand},
      {summarize, "summarize", "追加摘要", "在当前内容下方追加摘要", "text.badge.minus",
       Effect::append, "摘要", WritingPrompts::summarize},
      {translate, "translate", "追加翻译", "在当前内容下方追加译文", "globe", Effect::append,
       "翻译", WritingPrompts::translate},
      {greeting, "greeting", "每日问候", "生成一段温暖的每日问候", "sun.max", Effect::greet, "",
       WritingPrompts::greeting},
  }};
  return actions;
}

const InputAIActionInfo& InputAIActionInfo::of(InputAIAction action) {
  return all()[static_cast<std::size_t>(action)];
}

}  // namespace nomely
