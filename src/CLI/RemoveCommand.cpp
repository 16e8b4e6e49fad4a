#include <fmt/format.h>

#include "CLI/Arguments.h"
#include "CLI/Command.h"

namespace nomely {
namespace {

class RemoveCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add(referenceArgument(&references_));
    syntax.examples = {"nomely rm today/2 today/3"};
  }

  void run(Session& session) override {
    const std::vector<TimelineEntry> entries = Arguments::memos(references_, session);
    Json removed = Json::array();
    for (const TimelineEntry& entry : entries) {
      const std::string subdir = session.memos().trash(entry.date, entry.memo).trashSubdir;
      removed.push_back({{"date", entry.date.string()},
                         {"seqNumber", entry.memo.seqNumber},
                         {"trashSubdir", subdir}});
      session.say(fmt::format("已移入回收站：{}/{}。恢复：nomely trash restore {}",
                              entry.date.string(), entry.memo.seqNumber, subdir));
    }
    if (session.isJson()) session.printJson(removed);
  }

 private:
  std::vector<std::string> references_;
};

}  // namespace

std::unique_ptr<Command> makeRemoveCommand() {
  return std::make_unique<RemoveCommand>();
}

}  // namespace nomely
