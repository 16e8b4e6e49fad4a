#include <limits>

#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/UsageError.h"

namespace nomely {
namespace {

class ListCommand final : public Command {
 public:
  void declare(CLI::App& app) override {
    auto* selection = app.add_option_group("selection");
    selection->add_option("--day", day_, "某一天，默认今天")->type_name("DATE");
    selection->add_flag("--all", all_, "主时间线上的全部笔记，最新的在前");
    selection->require_option(0, 1);
    app.add_option("-n,--limit", limit_, "最多显示几条")->type_name("N");
  }

  void run(Session& session) override {
    const std::size_t limit = limitOf();
    const TimelineQueryStore timeline(session.dayStore());
    const PagedOutput pager(session.environment(), session.isJson());
    MemoListPrinter printer(session);
    if (all_)
      timeline.forEachVisibleEntry([&](const MemoEntry& entry) {
        if (printer.count() < limit) printer.add({entry.date, *entry.memo});
        return printer.count() < limit;
      });
    else
      listDay(session, timeline, printer, limit);
    printer.finish();
  }

 private:
  [[nodiscard]] std::size_t limitOf() const {
    if (!limit_) return std::numeric_limits<std::size_t>::max();
    const std::int64_t limit = Arguments::integer(*limit_, "-n");
    if (limit < 1) throw UsageError("-n 需要一个不小于 1 的整数");
    return static_cast<std::size_t>(limit);
  }

  void listDay(const Session& session, const TimelineQueryStore& timeline, MemoListPrinter& printer,
               std::size_t limit) const {
    const Day day = day_ ? Arguments::day(*day_, session.clock()) : session.clock().today();
    for (Memo& memo : timeline.visibleMemos(day))
      if (printer.count() < limit) printer.add({day, std::move(memo)});
    if (printer.count() == 0 && !session.isJson())
      session.say(MemoOutput::dayHeading(day) + "没有笔记。");
  }

  std::optional<std::string> day_;
  std::optional<std::string> limit_;
  bool all_ = false;
};

}  // namespace

std::unique_ptr<Command> makeListCommand() {
  return std::make_unique<ListCommand>();
}

void showToday(Session& session) {
  const Day today = session.clock().today();
  const TimelineQueryStore timeline(session.dayStore());
  MemoListPrinter printer(session);
  for (Memo& memo : timeline.visibleMemos(today)) printer.add({today, std::move(memo)});
  printer.finish();
  if (printer.count() > 0 || session.isJson()) return;
  session.say("今天还没有笔记。写一条：nomely add \"今天……\"；全部命令：nomely help");
}

}  // namespace nomely
