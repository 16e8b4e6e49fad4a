#include "CLI/MemoSelection.h"

#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include "CLI/Arguments.h"
#include "CLI/UsageError.h"

namespace nomely {

void MemoSelection::declare(Syntax& syntax) {
  const bool isToday = default_ == Default::today;
  const auto date = [&](const char* name, const char* help, std::optional<std::string>& target) {
    syntax.add(
        {.name = name, .help = help, .target = &target, .value = "DATE", .kind = WordKind::date});
  };
  date("--day", isToday ? "某一天，默认今天" : "某一天", day_);
  date("--from", "从哪一天起", from_);
  date("--to", "到哪一天为止", to_);
  syntax.add({.name = "--all", .help = "主时间线上的全部笔记", .target = &all_});
  syntax.add({.name = "--tag",
              .help = "有此标签或其下级的，可重复",
              .target = &tags_,
              .value = "TAG",
              .kind = WordKind::tag});
  syntax.add({.name = "--untagged", .help = "没有标签的", .target = &untagged_});
  syntax.add({.name = "--images", .help = "有图片的", .target = &images_});
  syntax.add({.name = "--links", .help = "有链接的", .target = &links_});
  syntax.add({.name = "--audio",
              .help = isToday ? "有录音的，最大的在前" : "有录音的",
              .target = &audio_});
  syntax.add({.name = "--files", .help = "有其他附件的", .target = &files_});
  syntax.add({.name = "--pinned", .help = "置顶的", .target = &pinned_});
  syntax.add({.name = "--on-this-day",
              .help = "往年此日的，默认今天的月和日",
              .target = &onThisDay_,
              .value = "DATE",
              .kind = WordKind::date,
              .mayLackValue = true});
  syntax.add({.name = "-n,--limit", .help = "最多几条", .target = &limit_, .value = "N"});
  syntax.add({.name = "--reverse", .help = "倒过来，最早的在前", .target = &reverse_});
}

bool MemoSelection::hasConditions() const {
  return day_ || from_ || to_ || onThisDay_ || !tags_.empty() || untagged_ || images_ || links_ ||
         audio_ || files_ || pinned_;
}

std::optional<Day> MemoSelection::day(const Session& session) const {
  const bool asksForNothing = !hasConditions() && !all_ && !limit_;
  if (asksForNothing && default_ == Default::today) return session.clock().today();
  if (day_) return Arguments::day(*day_, session.clock());
  return std::nullopt;
}

std::optional<Day> MemoSelection::wholeDay(const Session& session) const {
  const std::optional<Day> only = day(session);
  const MemoFilter whole{.from = only, .to = only};
  return filter(session) == whole ? only : std::nullopt;
}

MemoFilter MemoSelection::filter(const Session& session) const {
  const auto read = [&](const std::optional<std::string>& date) -> std::optional<Day> {
    if (!date) return std::nullopt;
    return Arguments::day(*date, session.clock());
  };
  MemoFilter filter{.from = read(from_), .to = read(to_), .tags = Arguments::tags(tags_)};
  if (filter.from && filter.to && *filter.from > *filter.to)
    throw UsageError(fmt::format("--from {} 在 --to {} 之后，请对调", filter.from->string(),
                                 filter.to->string()));
  if (const auto only = day(session)) {
    filter.from = filter.from ? std::max(*filter.from, *only) : *only;
    filter.to = filter.to ? std::min(*filter.to, *only) : *only;
  }
  if (onThisDay_)
    filter.onThisDay = onThisDay_->empty() ? session.clock().today()
                                           : Arguments::day(*onThisDay_, session.clock());
  // "-n 20" alone: of what the timeline shows.
  filter.mainTimeline = all_ || (default_ == Default::today && limit_ && !hasConditions());
  filter.untagged = untagged_;
  filter.images = images_;
  filter.links = links_;
  filter.audio = audio_;
  filter.files = files_;
  filter.pinned = pinned_;
  return filter;
}

RootScan::Order MemoSelection::order() const {
  return reverse_ ? RootScan::Order::oldestFirst : RootScan::Order::newestFirst;
}

std::optional<std::size_t> MemoSelection::limit() const {
  if (!limit_) return std::nullopt;
  return static_cast<std::size_t>(*limit_);
}

void MemoSelection::tellOfMore(const Session& session, std::size_t limit) {
  session.say(fmt::format("只列出了 {} 条，还有更多。用 -n 列出更多。", limit));
}

bool MemoSelection::forEach(Session& session, const std::stop_token& stop,
                            const std::function<void(const MemoEntry&)>& visit) const {
  const MemoFilter chosen = filter(session);
  const std::size_t most = limit().value_or(std::numeric_limits<std::size_t>::max() - 1);
  const auto scan = session.scan(stop);
  std::size_t count = 0;
  bool isCut = false;
  const auto take = [&](const MemoEntry& entry) {
    isCut = count == most;
    if (isCut) return false;
    ++count;
    visit(entry);
    return true;
  };
  if (!audio_) {
    scan->forEach(chosen, order(), take);
    return isCut;
  }
  // The smallest come first when the order is turned round: then all have to be held.
  auto largest =
      scan->audioBySize(chosen, reverse_ ? std::numeric_limits<std::size_t>::max() : most + 1);
  if (reverse_) std::ranges::reverse(largest);
  (void)std::ranges::all_of(largest, [&](const SizedEntry& sized) { return take(sized.entry); });
  return isCut;
}

}  // namespace nomely
