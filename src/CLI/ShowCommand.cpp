#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/UsageError.h"

namespace nomely {
namespace {

class ShowCommand final : public Command {
 public:
  void declare(CLI::App& app) override {
    app.add_option("REF", reference_, "笔记：日期/编号，或 memo_ 标识")->required();
    app.add_flag("--raw", raw_, "原样输出笔记文件");
  }

  void run(Session& session) override {
    if (raw_ && session.isJson()) throw UsageError("--raw 与 --json 不能同时使用");
    const TimelineEntry entry = Arguments::memo(reference_, session);
    if (session.isJson()) return session.printJson(MemoOutput::json(entry));
    if (!raw_) return session.print(MemoOutput::drawn(entry, session.style()));
    const DayStore& store = session.dayStore();
    const auto file = store.paths().memoFile(entry.date, entry.memo.seqNumber);
    session.print(store.context().files.read(file).value_or(""));
  }

 private:
  std::string reference_;
  bool raw_ = false;
};

}  // namespace

std::unique_ptr<Command> makeShowCommand() {
  return std::make_unique<ShowCommand>();
}

}  // namespace nomely
