#include <fmt/format.h>

#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/Programs.h"
#include "CLI/UsageError.h"

namespace nomely {
namespace {

constexpr auto opener = "xdg-open";  // the desktop's, of the xdg-utils

class OpenCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add(referenceArgument(&reference_));
    syntax.add({.name = "NAME",
                .help = "附件的存储名或原名，只有一个附件时可省略",
                .target = &name_,
                .kind = WordKind::attachment});
    syntax.examples = {"nomely open @", "nomely open today/1 照片.jpg"};
  }

  void run(Session& session) override {
    const TimelineEntry entry = Arguments::memo(reference_, session);
    const StoreContext& storage = session.dayStore().context();
    const auto file = storage.paths.dayFolder(entry.date) / chosen(entry.memo);
    if (!storage.files.exists(file))
      throw NameNotFoundError(fmt::format("附件文件不在了：{}", file.string()));
    if (!Programs::find(opener, session.environment()))
      throw Error("open.noProgram",
                  fmt::format("没有找到 {}，无法用桌面程序打开：{}", opener, file.string()));
    const int status = Programs::run({opener, file.string()});
    if (status != 0)
      throw Error("open.failed",
                  fmt::format("{} 以状态 {} 退出，没能打开：{}", opener, status, file.string()));
    if (session.isJson()) session.printJson({{"file", file.string()}});
  }

 private:
  [[nodiscard]] std::string chosen(const Memo& memo) const {
    if (name_) return Arguments::attachment(memo, *name_);
    if (memo.attachments.empty()) throw NameNotFoundError("这条笔记没有附件");
    if (memo.attachments.size() > 1)
      throw UsageError(fmt::format("这条笔记有 {} 个附件，请写明打开哪一个：{}",
                                   memo.attachments.size(), fmt::join(memo.attachments, "、")));
    return memo.attachments.front();
  }

  std::string reference_;
  std::optional<std::string> name_;
};

}  // namespace

std::unique_ptr<Command> makeOpenCommand() {
  return std::make_unique<OpenCommand>();
}

}  // namespace nomely
