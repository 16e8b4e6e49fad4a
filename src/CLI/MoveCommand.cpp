#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"

namespace nomely {
namespace {

class MoveCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add(referenceArgument(&reference_));
    syntax.add({.name = "DATE",
                .help = "移到哪一天",
                .target = &date_,
                .kind = WordKind::date,
                .isRequired = true});
    syntax.examples = {"nomely move today/3 昨天"};
  }

  void run(Session& session) override {
    const Day to = Arguments::day(date_, session.clock());
    TimelineEntry entry = Arguments::memo(reference_, session);
    if (entry.date == to)
      session.say("笔记已在这一天，未改动。");
    else
      entry = {to, session.memos().move(entry.date, entry.memo, to)};
    MemoOutput::printStored(entry, session);
  }

 private:
  std::string reference_;
  std::string date_;
};

}  // namespace

std::unique_ptr<Command> makeMoveCommand() {
  return std::make_unique<MoveCommand>();
}

}  // namespace nomely
