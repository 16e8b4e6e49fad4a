#include <fmt/format.h>

#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/MemoOutput.h"
#include "CLI/TextInput.h"
#include "CLI/UsageError.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

class AddCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add({.name = "TEXT",
                .help = "正文，可以是几个词；“-”为标准输入，省略则打开编辑器",
                .target = &text_});
    syntax.add({.name = "--date",
                .help = "日期，默认今天",
                .target = &date_,
                .value = "DATE",
                .kind = WordKind::date});
    syntax.add({.name = "--time", .help = "时间，默认现在", .target = &time_, .value = "HH:MM"});
    syntax.add({.name = "--tag",
                .help = "标签，可重复",
                .target = &tags_,
                .value = "TAG",
                .kind = WordKind::tag});
    syntax.add({.name = "--mood",
                .help = "心情，一个整数，常用 1（低落）到 5（很好）",
                .target = &mood_,
                .value = "N"});
    syntax.add({.name = "--attach",
                .help = "附件，可重复",
                .target = &files_,
                .value = "FILE",
                .kind = WordKind::file});
    syntax.examples = {"nomely add 早上跑步五公里 --tag 运动 --mood 4",
                       "nomely add --date 昨天 --attach 照片.jpg 爬山", "date | nomely add -"};
  }

  void run(Session& session) override {
    const std::vector<std::filesystem::path> files = Arguments::files(files_);
    const Day day = date_ ? Arguments::day(*date_, session.clock()) : session.clock().today();
    DayStore::NewMemo content;
    content.tags = Arguments::tags(tags_);
    if (time_) content.time = Arguments::time(*time_);
    if (mood_) content.mood = Arguments::integer(*mood_, "--mood");

    EditorDraft::tellOfLeftBehind(session);
    TextInput input(session);
    // With files, no text is needed, and no editor is opened for one.
    const bool asks = !text_.empty() || files.empty() || !Terminal::isInput();
    content.body = asks ? input.read(Arguments::joined(text_), "").value_or("") : "";
    if (files.empty() && trimSpaceAndBreaks(content.body).empty()) {
      input.accept();
      throw UsageError("正文是空的，没有新建笔记");
    }
    const bool isNewRoot = !session.hasRoot();
    const Memo memo = session.memos().create(day, std::move(content), files);
    input.accept();
    if (isNewRoot) session.tellOfNewRoot();
    MemoOutput::printStored({day, memo}, session);
  }

 private:
  std::vector<std::string> text_;
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
