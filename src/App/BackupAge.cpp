#include "App/BackupAge.h"

#include <fmt/format.h>

namespace nomely {

std::string BackupAge::text(std::chrono::microseconds age) {
  if (age < std::chrono::hours(1)) return "不到一小时前";
  if (age < std::chrono::days(2))
    return fmt::format("{} 小时前", std::chrono::floor<std::chrono::hours>(age).count());
  return fmt::format("{} 天前", std::chrono::floor<std::chrono::days>(age).count());
}

bool BackupAge::isTooOld(std::chrono::microseconds age) {
  return age > std::chrono::days(7);
}

}  // namespace nomely
