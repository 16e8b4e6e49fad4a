#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/TextInput.h"
#include "CLI/UsageError.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

class EditCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add(referenceArgument(&reference_));
    syntax.add({.name = "TEXT",
                .help = "新的正文，可以是几个词；“-”为标准输入，省略则打开编辑器",
                .target = &text_});
    syntax.examples = {"nomely edit @", "nomely edit today/1 改好的正文"};
  }

  void run(Session& session) override {
    TimelineEntry entry = Arguments::memo(reference_, session);
    TextInput input(session);
    const std::string shown = MemoTextUtilities::textForEditing(entry.memo.body);
    const std::optional<std::string> body = input.read(Arguments::joined(text_), shown);
    if (body && entry.memo.attachments.empty() && trimSpaceAndBreaks(*body).empty()) {
      input.accept();
      throw UsageError("新的正文是空的，笔记未改动");
    }
    if (!body || *body == shown) {
      input.accept();
      session.say("正文没有变化，笔记未改动。");
    } else {
      entry.memo = session.memos().edit(entry.date, entry.memo, *body);
      input.accept();
      return MemoOutput::printStored(entry, session);
    }
    MemoOutput::print(entry, session);
  }

 private:
  std::string reference_;
  std::vector<std::string> text_;
};

}  // namespace

std::unique_ptr<Command> makeEditCommand() {
  return std::make_unique<EditCommand>();
}

}  // namespace nomely
