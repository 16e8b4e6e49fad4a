#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/MemoSelection.h"

namespace nomely {
namespace {

class ListCommand final : public Command {
 public:
  void declare(CLI::App& app) override { selection_.declare(app); }

  void run(Session& session) override {
    const PagedOutput pager(session.environment(), session.isJson());
    MemoListPrinter printer(session);
    selection_.forEach(session, [&](const MemoEntry& entry) {
      printer.add({entry.date, *entry.memo});
    });
    const auto day = selection_.day(session);
    if (day && printer.count() == 0 && !session.isJson())
      session.say(MemoOutput::dayHeading(*day) + "没有笔记。");
    printer.finish();
  }

 private:
  MemoSelection selection_;
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
