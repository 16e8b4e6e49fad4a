#include "CLI/Arguments.h"
#include "CLI/Checks.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/TextInput.h"
#include "CLI/UsageError.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

class AddCommand final : public Command {
 public:
  void declare(CLI::App& app) override {
    app.add_option("TEXT", text_, "正文；“-”为标准输入，省略则打开编辑器");
    app.add_option("--date", date_, "日期，默认今天")->type_name("DATE");
    app.add_option("--time", time_, "时间，默认现在")->type_name("HH:MM");
    app.add_option("--tag", tags_, "标签，可重复")->type_name("TAG")->allow_extra_args(false);
    app.add_option("--mood", mood_, "心情，一个整数")->type_name("N");
    app.add_option("--attach", files_, "附件，可重复")
        ->type_name("FILE")
        ->allow_extra_args(false)
        ->check(Checks::existingFile());
  }

  void run(Session& session) override {
    const Day day = date_ ? Arguments::day(*date_, session.clock()) : session.clock().today();
    DayStore::NewMemo content;
    content.tags = Arguments::tags(tags_);
    if (time_) content.time = Arguments::time(*time_);
    if (mood_) content.mood = Arguments::integer(*mood_, "--mood");

    TextInput input(session);
    // With files, no text is needed, and no editor is opened for one.
    const bool asks = text_.has_value() || files_.empty() || !Terminal::isInput();
    content.body = asks ? input.read(text_, "").value_or("") : "";
    if (files_.empty() && trimSpaceAndBreaks(content.body).empty()) {
      input.accept();
      throw UsageError("正文是空的，没有新建笔记");
    }
    const Memo memo =
        session.memos().create(day, std::move(content), {files_.begin(), files_.end()});
    input.accept();
    MemoOutput::print({day, memo}, session);
  }

 private:
  std::optional<std::string> text_;
  std::optional<std::string> date_;
  std::optional<std::string> time_;
  std::optional<std::string> mood_;
  std::vector<std::string> tags_;
  std::vector<std::string> files_;
};

}  // namespace

std::unique_ptr<Command> makeAddCommand() {
  return std::make_unique<AddCommand>();
}

}  // namespace nomely
