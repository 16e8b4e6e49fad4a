#include <algorithm>
#include <ranges>

#include <fmt/format.h>

#include "Core/Service/MemoService.h"
#include "Core/Storage/MemoFile.h"

namespace nomely {

MemoService::InTrashError::InTrashError(const std::string& trashSubdir)
    : Error("history.inTrash",
            fmt::format("这条笔记在回收站里，请先取回：nomely trash restore {}", trashSubdir)) {}

std::optional<Day> MemoService::dayOfUnreadable(const std::string& memoId) const {
  for (const Day day : std::views::reverse(days_.listAllDates()))
    for (const std::int64_t number : days_.listNumbers(day)) {
      try {
        (void)days_.memoStore().read(day, number);
      } catch (const Error&) {
        const auto bytes =
            context_.files.read(context_.paths.memoFile(day, number), MemoFile::maxSize);
        if (bytes && bytes->find(memoId) != std::string::npos) return day;
      }
    }
  return std::nullopt;
}

MemoService::Restored MemoService::restoreVanished(const VersionEntry& version) const {
  return context_.write([&]() -> Restored {
    const std::string memoId = version.memo.memoId.value_or("");
    const std::vector<TrashEntry> trash = trashed();
    const auto trashedIt = std::ranges::find_if(
        trash, [&](const TrashEntry& entry) { return entry.memo.memoId == memoId; });
    if (trashedIt != trash.end()) throw InTrashError(trashedIt->trashSubdir);
    const Day day =
        dayOfUnreadable(memoId).value_or(version.memo.dayMade().value_or(context_.clock.today()));
    return {day, versions_.restoreVanished(version, day, days_.nextSeqNumber(day))};
  });
}

}  // namespace nomely
