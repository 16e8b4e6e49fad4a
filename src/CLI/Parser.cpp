#include "CLI/Parser.h"

#include <algorithm>

#include <fmt/format.h>

#include "CLI/HelpText.h"
#include "CLI/SyntaxParsing.h"
#include "CLI/UsageError.h"

namespace nomely {
namespace {

constexpr auto versionText = "nomely " NOMELY_VERSION "\n";
constexpr auto helpCommand = "help";

std::size_t helpWidth() {
  constexpr std::size_t widest = 100;
  return std::min(Terminal::columns(), widest);
}

}  // namespace

Parser::Parser(Session& session)
    : session_(session),
      program_{
          .name = "nomely",
          .summary = "个人日记与笔记：每条笔记是一个 Markdown 文件。不带命令时显示今天的笔记。",
          .examples = {"nomely add \"早上跑步五公里\" --tag 运动", "nomely search 读书",
                       "nomely help add"}} {
  declareGlobalOptions();
  declareCommands();
}

void Parser::declareGlobalOptions() {
  GlobalOptions& options = session_.options;
  program_.arguments = {
      {.name = "--root",
       .help = "数据目录，默认 $NOMELY_ROOT，再默认在窗口的设置里选的，或 ~/NomelyData",
       .target = &options.root,
       .value = "DIR",
       .kind = WordKind::folder},
      {.name = "--json", .help = "以 JSON 输出", .target = &options.json},
      {.name = "--color",
       .help = "颜色：auto、always 或 never",
       .target = &options.color,
       .value = "WHEN",
       .choices = {"auto", "always", "never"}},
      {.name = "--no-input", .help = "不提问，不打开编辑器", .target = &options.noInput},
      {.name = "-y,--yes", .help = "所有确认都答“是”", .target = &options.yes},
      {.name = "-q,--quiet", .help = "不输出提示", .target = &options.quiet},
      {.name = "-v,--verbose", .help = "在标准错误输出日志", .target = &options.verbose},
      {.name = "-h,--help", .help = "显示帮助", .target = static_cast<bool*>(nullptr)},
      {.name = "--version", .help = "显示版本", .target = static_cast<bool*>(nullptr)},
  };
}

void Parser::declareCommands() {
  commands_ = allCommands();
  for (const CommandEntry& entry : commands_)
    entry.command->declare(program_.addPart(entry.name, entry.summary));
  program_.addPart(helpCommand, "显示命令的帮助")
      .add({.name = "COMMAND",
            .help = "命令，及其操作",
            .target = &helpNames_,
            .kind = WordKind::command});
}

std::string Parser::help(const std::vector<std::string>& names) const {
  HelpText::Chain chain{&program_};
  for (const std::string& name : names) {
    const Syntax* part = chain.back()->part(name);
    if (part == nullptr)
      throw UsageError(fmt::format("没有“{}”这个命令。全部命令：nomely help", name));
    chain.push_back(part);
  }
  return HelpText::of(chain, helpWidth());
}

std::string Parser::helpOfChosen() const {
  HelpText::Chain chain{&program_};
  for (const Syntax* next = &program_; next != nullptr;) {
    const auto chosen = std::ranges::find_if(next->parts, &Syntax::isChosen);
    next = chosen == next->parts.end() ? nullptr : &*chosen;
    if (next != nullptr) chain.push_back(next);
  }
  return HelpText::of(chain, helpWidth());
}

Parser::Request Parser::parse(const std::vector<std::string>& words) {
  const ParsedAs parsed = parseWords(program_, words);
  if (parsed == ParsedAs::version) return {.help = versionText};
  if (parsed == ParsedAs::help) return {.help = helpOfChosen()};
  const auto chosen = std::ranges::find_if(program_.parts, &Syntax::isChosen);
  if (chosen == program_.parts.end()) return {};
  if (chosen->name == helpCommand) return {.help = help(helpNames_)};
  const auto found = std::ranges::find(commands_, chosen->name, &CommandEntry::name);
  return {.command = found->command.get(), .help = {}};
}

}  // namespace nomely
