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

MemoPlace MemoService::placeFor(const VersionEntry& version, const std::string& memoId) const {
  const std::optional<MemoPlace> last = versions_.lastPlaceOf(memoId);
  const auto isFree = [&](const MemoPlace& place) {
    return place.seqNumber >= 1 &&
           !context_.files.exists(context_.paths.memoFile(place.day, place.seqNumber));
  };
  if (last && isFree(*last)) return *last;
  Day day = version.memo.dayMade().value_or(context_.clock.today());
  if (last) day = last->day;
  if (const auto broken = dayOfUnreadable(memoId)) day = *broken;
  return {day, days_.nextSeqNumber(day)};
}

MemoService::Restored MemoService::restoreVanished(const VersionEntry& version) const {
  return context_.write([&]() -> Restored {
    const std::string memoId = version.memo.memoId.value_or("");
    const std::vector<TrashEntry> trash = trashed();
    const auto trashedIt = std::ranges::find_if(
        trash, [&](const TrashEntry& entry) { return entry.memo.memoId == memoId; });
    if (trashedIt != trash.end()) throw InTrashError(trashedIt->trashSubdir);
    const MemoPlace place = placeFor(version, memoId);
    return {place.day, versions_.restoreVanished(version, place.day, place.seqNumber)};
  });
}

}  // namespace nomely
