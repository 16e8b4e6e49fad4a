#include "Import/FlomoImportResult.h"

#include <fmt/format.h>

namespace nomely {

std::string FlomoImportResult::text() const {
  std::string told =
      fmt::format("✅ 导入成功！共导入 {} 条笔记，涉及 {} 天。", memosImported, daysAffected);
  if (attachmentsImported > 0) told += fmt::format(" 导入 {} 个附件。", attachmentsImported);
  if (memosRepaired > 0) told += fmt::format(" 为 {} 条已有的笔记补上了附件。", memosRepaired);
  if (attachmentsMissing > 0)
    told += fmt::format(" {} 个附件未找到，建议选择 flomo 的 ZIP 包重新导入。", attachmentsMissing);
  return told;
}

}  // namespace nomely
