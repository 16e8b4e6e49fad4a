#include "AI/Writing/BeautifyPreset.h"

#include <array>

namespace nomely {

std::span<const BeautifyPreset> BeautifyPreset::all() {
  static constexpr std::array<BeautifyPreset, 13> presets{{
      {1, "整理成笔记", "整理成笔记：把零散内容整理成标题、小节和列表。"},
      {2, "润色表达", "润色表达：保持原意，让文字更顺、更自然。"},
      {3, "扩写细节", "扩写细节：补充背景、细节和表达，让内容更完整。"},
      {4, "提炼摘要", "提炼摘要：提取核心要点，生成简短摘要。"},
      {5, "提炼行动项", "提炼行动项：从内容里找出待办、下一步和决策事项。"},
      {6, "改成清单", "改成清单：把段落改成项目符号列表。"},
      {7, "改成日报", "改成日报：整理成今日完成、问题、明日计划。"},
      {8, "改成会议纪要", "改成会议纪要：整理成结论、讨论点、待办和负责人。"},
      {9, "生成标题", "生成标题：只生成一个更合适的标题。"},
      {10, "重点加粗", "重点加粗：保留原文，只把关键词和重点加粗。"},
      {11, "中英翻译", "中英翻译：中文转英文，英文转中文。"},
      {12, "压缩变短", "压缩变短：删掉啰嗦表达，保留重点。"},
      {13, "保持原意重新排版", "保持原意重新排版：只做 Markdown 排版，不改内容。"},
  }};
  return presets;
}

std::span<const BeautifyPreset> BeautifyPreset::first() {
  return all().first(7);
}

}  // namespace nomely
