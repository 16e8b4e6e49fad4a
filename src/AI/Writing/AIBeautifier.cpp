#include "AI/Writing/AIBeautifier.h"

#include <fmt/format.h>

#include "AI/Vendor/AIError.h"
#include "AI/Writing/WritingPrompts.h"

namespace nomely {

AIService::Reply AIBeautifier::refine(const Task& task, const std::stop_token& stop) {
  if (!service_.config().features.beautify) throw AIFeatureOffError("ai.features.beautify");
  return service_.chat(
      {.system = std::string(WritingPrompts::refine),
       .user = fmt::format("【原始笔记】\n{}\n\n【当前内容】\n{}\n\n【用户要求】\n{}\n\n"
                           "请根据用户要求修改当前内容，只返回修改后的 Markdown。",
                           task.original, task.current.empty() ? task.original : task.current,
                           task.instruction),
       .maxTokens = 2048},
      stop);
}

}  // namespace nomely
