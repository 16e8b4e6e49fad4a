#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/MemoSelection.h"
#include "CLI/PagedOutput.h"
#include "Core/Extensions/DateFormatters.h"

namespace nomely {
namespace {

class ListCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    selection_.declare(syntax);
    syntax.add({.name = "--oneline", .help = "每条一行：引用、时间、首行", .target = &oneLine_});
    syntax.examples = {"nomely list --day 昨天", "nomely list --tag 读书 --from 2026-01-01",
                       "nomely list -n 20 --oneline"};
  }

  void run(Session& session) override {
    const auto day = selection_.wholeDay(session);
    const PagedOutput pager(session);
    MemoListPrinter printer(session, oneLine_ ? ListForm::oneLine : ListForm::full);
    const bool isCut = selection_.forEach(session, {}, [&](const MemoEntry& entry) {
      printer.add({entry.date, *entry.memo});
    });
    printer.finish();
    if (isCut) MemoSelection::tellOfMore(session, printer.count());
    if (printer.count() > 0 || !session.hasRoot()) return;
    session.say(day ? DateFormatters::dayHeading(*day) + "没有笔记。" : "没有这样的笔记。");
  }

 private:
  MemoSelection selection_{MemoSelection::Default::today};
  bool oneLine_ = false;
};

}  // namespace

std::unique_ptr<Command> makeListCommand() {
  return std::make_unique<ListCommand>();
}

void showToday(Session& session) {
  const Day today = session.clock().today();
  const PagedOutput pager(session);
  MemoListPrinter printer(session);
  if (!session.hasRoot()) {
    printer.finish();
    return session.say("还没有笔记。写一条：nomely add \"今天……\"；全部命令：nomely help");
  }
  session.scan()->forEach({.from = today, .to = today}, RootScan::Order::newestFirst,
                          [&](const MemoEntry& entry) {
                            printer.add({entry.date, *entry.memo});
                            return true;
                          });
  printer.finish();
  if (printer.count() > 0 || session.isJson()) return;
  session.say("今天还没有笔记。写一条：nomely add \"今天……\"；全部命令：nomely help");
}

}  // namespace nomely
