#pragma once

#include <chrono>
#include <string>

namespace nomely {

// How old the newest backup is, as every face tells it. Pure.
namespace BackupAge {

// "不到一小时前", "5 小时前", "3 天前".
[[nodiscard]] std::string text(std::chrono::microseconds age);
// With a backup a day nobody loses more than that; beyond a week users are told to make one.
[[nodiscard]] bool isTooOld(std::chrono::microseconds age);

}  // namespace BackupAge

}  // namespace nomely
