#include "App/TrashErasing.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace nomely {

std::string TrashErasing::warning(std::size_t count) {
  return fmt::format("将永久删除 {} 条笔记，此操作不可撤销。", count);
}

std::string TrashErasing::emptyingWarning(const TrashContents& contents) {
  std::string text = fmt::format("将永久删除回收站中的所有 {} 条笔记", contents.entries.size());
  if (!contents.others.empty())
    text += fmt::format("、{} 个不是笔记的条目（{}）", contents.others.size(),
                        fmt::join(contents.others, "、"));
  if (contents.attachmentFiles > 0)
    text += fmt::format("、{} 个取下的附件", contents.attachmentFiles);
  return text + "，此操作不可撤销。";
}

bool TrashErasing::isEmpty(const TrashContents& contents) {
  return contents.entries.empty() && contents.others.empty() && contents.attachmentFiles == 0;
}

std::vector<TrashEntry> TrashErasing::between(std::vector<TrashEntry> entries, Day first,
                                              Day last) {
  std::erase_if(entries, [&](const TrashEntry& entry) {
    return entry.originalDate < first || entry.originalDate > last;
  });
  return entries;
}

}  // namespace nomely
