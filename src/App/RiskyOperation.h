#pragma once

#include <string>

#include "Platform/Error.h"

namespace nomely {

// Something that is hard to take back, before which a backup is made.
struct RiskyOperation {
  std::string label;                   // "flomo 导入"
  const char* stopped = "已停止导入";  // what is said when that backup fails
};

inline const RiskyOperation deletingByTag{.label = "删除笔记", .stopped = "没有删除"};

// The backup before it failed, so it was not begun.
class ImportSafetyError : public Error {
 public:
  ImportSafetyError(const RiskyOperation& operation, const std::string& reason)
      : Error("backup.required",
              operation.label + "前自动备份失败，" + operation.stopped + "：" + reason) {}
};

}  // namespace nomely
