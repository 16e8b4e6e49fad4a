#include <fmt/format.h>

#include "CLI/Command.h"
#include "CLI/HelpText.h"
#include "CLI/Parser.h"

namespace nomely {
namespace {

// Characters that roff (groff_man(7)) would take for its own.
std::string roff(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '\\')
      escaped += "\\e";
    else if (c == '-')
      escaped += "\\-";
    else
      escaped += c;
  }
  if (escaped.starts_with('.') || escaped.starts_with('\'')) escaped.insert(0, "\\&");
  return escaped;
}

std::string optionsOf(const Syntax& syntax) {
  std::string text;
  for (const Argument& argument : syntax.arguments)
    text += fmt::format(".TP\n.B {}\n{}\n", roff(HelpText::heading(argument)), roff(argument.help));
  return text;
}

std::string actionsOf(const Syntax& command) {
  std::string text;
  for (const Syntax* action : command.shownParts())
    text += fmt::format(".TP\n.B {} {}\n{}\n.RS\n{}.RE\n", command.name, action->name,
                        roff(action->summary), optionsOf(*action));
  return text;
}

constexpr auto opening = R"(.TH NOMELY 1
.SH 名称
nomely \- 个人日记与笔记
.SH 概要
.B nomely
[全局选项] [命令] [参数]
.SH 说明
每条笔记是数据目录下某一天文件夹里的一个 Markdown 文件（YAML 头加正文），任何程序都能读。
不带命令时显示今天的笔记。
.SS 日期
2026\-03\-01、today/今天、yesterday/昨天、\-N（N 天前）。
.SS 笔记
日期/编号（2026\-03\-01/7、today/7），或 memo_ 开头的标识，至少给出其后 8 个字符。
.SS 正文
写在命令后；“\-”为标准输入。省略时在终端打开 $VISUAL 或 $EDITOR，否则读标准输入。
)";

constexpr auto closing = R"(.SH 退出状态
0 完成；1 操作失败；2 用法不对；3 笔记已在别处改动；4 没有这个名字；130 被中断。
.SH 环境变量
.B NOMELY_ROOT
数据目录。
.B VISUAL\fR,
.B EDITOR
编辑器。
.B PAGER
长列表的分页程序。
.B NO_COLOR
不用颜色。
.SH 文件
~/NomelyData，$XDG_CONFIG_HOME/nomely，$XDG_STATE_HOME/nomely
)";

class ManualCommand final : public Command {
 public:
  void declare(Syntax&) override {}

  void run(Session& session) override {
    const Parser parser(session);
    std::string page = opening;
    page += ".SH 全局选项\n" + optionsOf(parser.syntax()) + ".SH 命令\n";
    for (const Syntax* command : parser.syntax().shownParts()) {
      page += fmt::format(".SS {}\n{}\n", command->name, roff(command->summary));
      page += optionsOf(*command) + actionsOf(*command);
    }
    session.print(page + closing);
  }
};

}  // namespace

std::unique_ptr<Command> makeManualCommand() {
  return std::make_unique<ManualCommand>();
}

}  // namespace nomely
