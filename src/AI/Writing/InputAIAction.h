#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace nomely {

// What the quick input can have done to its text, in the order of its menu.
enum class InputAIAction { organize, polish, expand, summarize, translate, greeting };

struct InputAIActionInfo {
  // What becomes of the text in the box.
  enum class Effect {
    replace,  // the reply; the text from before is kept
    append,   // the text with the reply below `heading`
    greet,    // the reply; the text from before goes
  };

  InputAIAction action;
  std::string_view name;  // in English, for commands and their help
  std::string_view title;
  std::string_view subtitle;
  std::string_view symbol;
  Effect effect;
  std::string_view heading;
  std::string_view prompt;

  [[nodiscard]] static std::span<const InputAIActionInfo> all();
  [[nodiscard]] static const InputAIActionInfo& of(InputAIAction action);
  // Stands in the menu below the actions.
  static constexpr std::string_view menuNote =
      "先处理当前输入框内容。替换类动作会保留原文，可在输入框下方查看。";
};

}  // namespace nomely
