#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"

namespace nomely {
namespace {

class MoveCommand final : public Command {
 public:
  void declare(CLI::App& app) override {
    app.add_option("REF", reference_, "笔记：日期/编号，或 memo_ 标识")->required();
    app.add_option("DATE", date_, "移到哪一天")->required();
  }

  void run(Session& session) override {
    const Day to = Arguments::day(date_, session.clock());
    TimelineEntry entry = Arguments::memo(reference_, session);
    if (entry.date == to)
      session.say("笔记已在这一天，未改动。");
    else
      entry = {to, session.memos().move(entry.date, entry.memo, to)};
    MemoOutput::print(entry, session);
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
