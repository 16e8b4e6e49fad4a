#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/TextInput.h"
#include "CLI/UsageError.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

class AppendCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add(referenceArgument(&reference_));
    syntax.add({.name = "TEXT",
                .help = "要加的一段，可以是几个词；“-”为标准输入，省略则打开编辑器",
                .target = &text_});
    syntax.examples = {"nomely append @ 晚上又跑了两公里"};
  }

  void run(Session& session) override {
    TimelineEntry entry = Arguments::memo(reference_, session);
    TextInput input(session);
    const std::string text = input.read(Arguments::joined(text_), "").value_or("");
    if (trimSpaceAndBreaks(text).empty()) {
      input.accept();
      throw UsageError("没有要加的文字，笔记未改动");
    }
    entry.memo = session.memos().append(entry.date, entry.memo, text);
    input.accept();
    MemoOutput::printStored(entry, session);
  }

 private:
  std::string reference_;
  std::vector<std::string> text_;
};

}  // namespace

std::unique_ptr<Command> makeAppendCommand() {
  return std::make_unique<AppendCommand>();
}

}  // namespace nomely
