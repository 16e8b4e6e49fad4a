#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "App/RiskyOperation.h"
#include "Core/Storage/TrashStore.h"

namespace nomely {

// What every face says and does before it destroys memos of the trash. Pure.
namespace TrashErasing {

// For Application::backupBeforeRiskyOperation.
inline const RiskyOperation deleting{"永久删除", "没有删除"};
inline const RiskyOperation emptying{"清空回收站", "没有清空"};

inline constexpr const char* emptyingQuestion = "确认清空回收站？";
inline constexpr const char* nothingBetween = "该范围内没有笔记";
inline constexpr const char* warningBetween = "将永久删除指定日期范围内回收站中的所有笔记";
[[nodiscard]] std::string warning(std::size_t count);
// Names all that goes, and not only what a list shows. Names are as they are on the disk.
[[nodiscard]] std::string emptyingWarning(const TrashContents& contents);
[[nodiscard]] bool isEmpty(const TrashContents& contents);

// Those that stood on a day from `first` to `last`.
[[nodiscard]] std::vector<TrashEntry> between(std::vector<TrashEntry> entries, Day first, Day last);

}  // namespace TrashErasing

}  // namespace nomely
