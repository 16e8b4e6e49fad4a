#include "CLI/MemoSelection.h"

#include <algorithm>
#include <limits>

#include "CLI/Arguments.h"
#include "CLI/Checks.h"

namespace nomely {

void MemoSelection::declare(CLI::App& app) {
  auto* selection = app.add_option_group("selection");
  selection->add_option("--day", day_, "某一天，默认今天")->type_name("DATE");
  selection->add_flag("--all", all_, "主时间线上的全部笔记，最新的在前");
  selection->add_option("--tag", tag_, "有此标签（或其下级）的")->type_name("TAG");
  for (List& each : lists_) selection->add_flag(each.option, each.chosen, each.help);
  selection->require_option(0, 1);
  app.add_option("-n,--limit", limit_, "最多几条")->type_name("N")->check(Checks::positive("-n "));
}

const MemoSelection::List* MemoSelection::chosenList() const {
  const auto* const found = std::ranges::find_if(lists_, &List::chosen);
  return found == lists_.end() ? nullptr : found;
}

std::optional<Day> MemoSelection::day(const Session& session) const {
  if (all_ || tag_ || chosenList() != nullptr) return std::nullopt;
  return day_ ? Arguments::day(*day_, session.clock()) : session.clock().today();
}

void MemoSelection::forEach(Session& session,
                            const std::function<void(const MemoEntry&)>& visit) const {
  auto left = static_cast<std::size_t>(limit_.value_or(std::numeric_limits<std::int64_t>::max()));
  const TimelineQueryStore timeline(session.dayStore());
  if (all_)
    return timeline.forEachVisibleEntry([&](const MemoEntry& entry) {
      visit(entry);
      return --left > 0;
    });
  TimelineQueryStore::Entries entries;
  if (const auto chosen = day(session)) {
    for (Memo& memo : timeline.visibleMemos(*chosen))
      entries.push_back({*chosen, std::make_shared<const Memo>(std::move(memo))});
  } else {
    entries = tag_ ? timeline.entriesWithTag(Arguments::tag(*tag_))
                   : chosenList()->query(timeline, session.clock().today());
  }
  for (const MemoEntry& entry : entries) {
    if (left-- == 0) break;
    visit(entry);
  }
}

}  // namespace nomely
