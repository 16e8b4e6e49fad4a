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
  void declare(CLI::App& app) override {
    app.add_option("REF", reference_, "笔记：日期/编号，或 memo_ 标识")->required();
    app.add_option("TEXT", text_, "新的正文；“-”为标准输入，省略则打开编辑器");
  }

  void run(Session& session) override {
    TimelineEntry entry = Arguments::memo(reference_, session);
    TextInput input(session);
    const std::string shown = MemoTextUtilities::textForEditing(entry.memo.body);
    const std::optional<std::string> body = input.read(text_, shown);
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
    }
    MemoOutput::print(entry, session);
  }

 private:
  std::string reference_;
  std::optional<std::string> text_;
};

}  // namespace

std::unique_ptr<Command> makeEditCommand() {
  return std::make_unique<EditCommand>();
}

}  // namespace nomely
