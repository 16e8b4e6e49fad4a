#include <fmt/format.h>

#include "CLI/Command.h"
#include "CLI/HelpText.h"
#include "CLI/ManualText.h"
#include "CLI/Parser.h"
#include "Platform/Text/Replacing.h"

namespace nomely {
namespace {

// Chinese may be broken between any two characters, but not before a closing mark or after an
// opening one; groff has to be told. No word is cut, and nothing is stretched to the margin.
constexpr auto opening = R"(.class [han] \[u2E80]-\[u2FDF] \[u3041]-\[u9FFF] \[uF900]-\[uFAFF]
.class [closing] \[u3001] \[u3002] \[u300D] \[u300F] \[u201D] \[u2026] \[uFF01] \[uFF09] \[uFF0C] \[uFF1A] \[uFF1B] \[uFF1F]
.class [opening] \[u300C] \[u300E] \[u201C] \[uFF08]
.cflags 512 \C'[han]'
.cflags 640 \C'[closing]'
.cflags 768 \C'[opening]'
.TH NOMELY 1 "" "nomely )" NOMELY_VERSION R"(" "Nomely"
.nh
.ad l
.SH 名称
nomely \- 个人日记与笔记
)";

// Plain text for groff_man(7): characters that it would take for its own, or print as others.
std::string roff(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '\\':
        escaped += "\\e";
        break;
      case '-':
        escaped += "\\-";
        break;
      case '"':
        escaped += "\\(dq";
        break;
      case '\'':
        escaped += "\\(aq";
        break;
      case '`':
        escaped += "\\(ga";
        break;
      case '~':
        escaped += "\\(ti";
        break;
      case '^':
        escaped += "\\(ha";
        break;
      default:
        escaped += c;
    }
  }
  // After these a line may end before a word of Latin letters too.
  for (const auto& [mark, breakable] :
       {std::pair("、", "、\\:"), std::pair("，", "，\\:"), std::pair("；", "；\\:")})
    escaped = replacingAll(escaped, mark, breakable);
  if (escaped.starts_with('.')) escaped.insert(0, "\\&");
  return escaped;
}

std::string entry(std::string_view term, std::string_view text) {
  return fmt::format(".TP\n.B {}\n{}\n", roff(term), roff(text));
}

std::string argumentsOf(const Syntax& syntax) {
  std::string text;
  for (const Argument& argument : syntax.arguments)
    text += entry(HelpText::heading(argument), argument.help);
  return text;
}

std::string examplesOf(const Syntax& syntax) {
  std::string text;
  for (const std::string& example : syntax.examples)
    text += fmt::format("{}\n{}\n", text.empty() ? ".PP\n例：\n.RS 4" : ".br", roff(example));
  return text.empty() ? text : text + ".RE\n";
}

std::string actionOf(const HelpText::Chain& chain) {
  const Syntax& action = *chain.back();
  return entry(HelpText::usage(chain), action.summary) + ".RS\n" + argumentsOf(action) +
         examplesOf(action) + ".RE\n";
}

std::string commandOf(const Syntax& program, const Syntax& command) {
  std::string text =
      fmt::format(".SS {}\n.B {}\n.PP\n{}\n", command.name,
                  roff(HelpText::usage({&program, &command})), roff(command.summary));
  text += argumentsOf(command);
  for (const Syntax* action : command.shownParts()) text += actionOf({&program, &command, action});
  return text + examplesOf(command);
}

std::string sectionOf(const ManualSection& section) {
  std::string text = fmt::format(".SH {}\n{}\n", section.title, roff(section.text));
  for (const auto& [term, meaning] : section.entries) text += entry(term, meaning);
  return section.closing.empty() ? text : text + ".PP\n" + roff(section.closing) + "\n";
}

class ManualCommand final : public Command {
 public:
  void declare(Syntax&) override {}

  void run(Session& session) override {
    const Parser parser(session);
    const Syntax& program = parser.syntax();
    std::string page = opening;
    page += sectionOf({.title = "概要", .text = "nomely [全局选项] [命令] [参数]"});
    page += sectionOf(
        {.title = "说明",
         .text =
             "每条笔记是数据目录下某一天文件夹里的一个 Markdown 文件（YAML 头加正文），任何程序都"
             "能读。不带命令时显示今天的笔记。选项可以写在命令之前或之后；一个选项写了两次，后一"
             "次算数，标明可重复的除外。nomely help 命令 显示一个命令的用法。"});
    page += ".SH 全局选项\n" + argumentsOf(program) + ".SH 命令\n";
    for (const Syntax* command : program.shownParts()) page += commandOf(program, *command);
    for (const ManualSection& section : manualSections()) page += sectionOf(section);
    session.print(page);
  }
};

}  // namespace

std::unique_ptr<Command> makeManualCommand() {
  return std::make_unique<ManualCommand>();
}

}  // namespace nomely
