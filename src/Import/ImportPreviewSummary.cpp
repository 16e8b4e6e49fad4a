#include "Import/ImportPreviewSummary.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace nomely {

std::string ImportPreviewSummary::confirmationText() const {
  std::vector<std::string> lines{
      fmt::format("来源：{}", sourceName),       fmt::format("新笔记：{}", newItems),
      fmt::format("重复跳过：{}", skippedItems), fmt::format("涉及天数：{}", daysAffected),
      fmt::format("日期范围：{}", dateRange),
  };
  const auto addIf = [&](std::size_t count, const std::string& line) {
    if (count > 0) lines.push_back(line);
  };
  addIf(undatedItems, fmt::format("时间无法识别：{} 条（记在今天）", undatedItems));
  addIf(emptyBodyCount, fmt::format("空正文跳过：{} 条（仅图片/附件，暂不支持）", emptyBodyCount));
  addIf(imageCount + audioCount, fmt::format("媒体：{} 张图片，{} 个音频", imageCount, audioCount));
  addIf(missingAttachments, fmt::format("缺失附件：{} 个", missingAttachments));
  addIf(repairedItems, fmt::format("补上附件：{} 条已有的笔记", repairedItems));
  addIf(tags.size(), fmt::format("标签：{}", fmt::join(tags, "、")));
  lines.emplace_back("开始导入前会自动创建备份。");
  return fmt::format("{}", fmt::join(lines, "\n"));
}

std::string ImportPreviewSummary::nothingNewText() const {
  return fmt::format("{} 条笔记都已存在，无需重复导入。", skippedItems);
}

std::string ImportPreviewSummary::dateRangeText(const std::set<Day>& dates) {
  if (dates.empty()) return "无";
  if (dates.size() == 1) return dates.begin()->string();
  return fmt::format("{} ~ {}", dates.begin()->string(), dates.rbegin()->string());
}

}  // namespace nomely
