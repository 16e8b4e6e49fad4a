#include "CLI/Parser.h"

#include <algorithm>

#include <fmt/format.h>

#include "CLI/UsageError.h"

namespace nomely {
namespace {

constexpr auto versionText = "nomely " NOMELY_VERSION;

// CLI11's help with Chinese labels.
std::shared_ptr<CLI::Formatter> helpFormatter() {
  auto formatter = std::make_shared<CLI::Formatter>();
  formatter->column_width(26);
  formatter->label("Usage", "用法");
  formatter->label("OPTIONS", "选项");
  formatter->label("SUBCOMMAND", "命令");
  formatter->label("SUBCOMMANDS", "命令");
  formatter->label("Positionals", "参数");
  formatter->label("REQUIRED", "必需");
  formatter->label("Excludes", "不能同时用");
  formatter->label("TEXT", "");
  return formatter;
}

std::string behindColon(const std::string& text) {
  return text.substr(text.find(": ") + 2);
}
std::string beforeColon(const std::string& text) {
  return text.substr(0, text.find(':'));
}

// CLI11 speaks English; what it says is always one of these few things.
std::string chineseTextOf(const CLI::ParseError& error, bool namesCommand) {
  std::string said = error.what();
  switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) {
    case CLI::ExitCodes::RequiredError:
      if (said.ends_with(" is required"))
        return fmt::format("缺少 {}", said.substr(0, said.find(" is required")));
      return "这些选项一次只能用一个：" +
             said.substr(said.find('[') == std::string::npos ? 0 : said.find('['));
    case CLI::ExitCodes::ExtrasError:
      if (!namesCommand)
        return fmt::format("没有“{}”这个命令。全部命令：nomely help", behindColon(said));
      return fmt::format(
          "不认识或多余的参数：{}。含空格的文字请用引号括起，以“-”开头的文字请放在 -- 之后",
          behindColon(said));
    case CLI::ExitCodes::ArgumentMismatch:
      return fmt::format("{} 后面的参数个数不对", beforeColon(said));
    case CLI::ExitCodes::ExcludesError:
      return fmt::format("这两个选项不能同时使用：{}", said);
    default:
      return said;
  }
}

}  // namespace

Parser::Parser(Session& session)
    : session_(session), app_("个人日记与笔记：每条笔记是一个 Markdown 文件", "nomely") {
  app_.formatter(helpFormatter());
  app_.option_defaults()->group("选项");
  app_.set_help_flag("-h,--help", "显示帮助");
  app_.set_version_flag("--version", versionText, "显示版本");
  app_.require_subcommand(0, 1);
  app_.fallthrough();
  declareGlobalOptions();
  declareCommands();
}

void Parser::declareGlobalOptions() {
  GlobalOptions& options = session_.options;
  app_.add_option("--root", options.root, "数据目录，默认 $NOMELY_ROOT，再默认 ~/NomelyData")
      ->type_name("DIR");
  app_.add_flag("--json", options.json, "以 JSON 输出");
  app_.add_option("--color", options.color, "颜色：auto、always 或 never")->type_name("WHEN");
  app_.add_flag("--no-input", options.noInput, "不提问，不打开编辑器");
  app_.add_flag("-y,--yes", options.yes, "所有确认都答“是”");
  app_.add_flag("-q,--quiet", options.quiet, "不输出提示");
  app_.add_flag("-v,--verbose", options.verbose, "在标准错误输出日志");
}

void Parser::declareCommands() {
  commands_ = allCommands();
  for (const CommandEntry& entry : commands_) {
    CLI::App* app = app_.add_subcommand(entry.name, entry.summary);
    app->fallthrough();
    app->set_help_flag("-h,--help", "显示帮助");  // anew, to stand among the other options
    app->group(entry.summary.empty() ? "" : "命令");
    entry.command->declare(*app);
  }
  CLI::App* help = app_.add_subcommand("help", "显示命令的帮助");
  help->fallthrough()->group("命令");
  help->set_help_flag("-h,--help", "显示帮助");
  help->add_option("COMMAND", helpNames_, "命令")->expected(0, 1);
}

bool Parser::isShown(const CLI::App& command) {
  return !command.get_description().empty();
}

std::string Parser::helpFor(const std::vector<std::string>& names) const {
  // Not help(): that shows the command in use, which is this one.
  if (names.empty())
    return app_.get_formatter()->make_help(&app_, "nomely", CLI::AppFormatMode::Normal);
  const auto named = app_.get_subcommands(
      [&](const CLI::App* command) { return command->get_name() == names.front(); });
  if (named.empty())
    throw UsageError(fmt::format("没有“{}”这个命令。全部命令：nomely help", names.front()));
  return named.front()->help("nomely");
}

Parser::Request Parser::parse(std::vector<std::string> arguments) {
  std::ranges::reverse(arguments);  // the order in which CLI11 consumes a vector
  try {
    app_.parse(std::move(arguments));
  } catch (const CLI::CallForVersion&) {
    return {.help = std::string(versionText) + "\n"};
  } catch (const CLI::CallForHelp&) {
    const auto chosen = app_.get_subcommands();
    return {.help = chosen.empty() ? app_.help() : chosen.front()->help("nomely")};
  } catch (const CLI::ParseError& error) {
    throw UsageError(chineseTextOf(error, !app_.get_subcommands().empty()));
  }
  const std::string& color = session_.options.color;
  if (color != "auto" && color != "always" && color != "never")
    throw UsageError(fmt::format("--color 只能是 auto、always 或 never，不能是“{}”", color));
  const auto chosen = app_.get_subcommands();
  if (chosen.empty()) return {};
  if (chosen.front()->get_name() == "help") return {.help = helpFor(helpNames_)};
  const auto found = std::ranges::find(commands_, chosen.front()->get_name(), &CommandEntry::name);
  return {.command = found->command.get(), .help = {}};
}

}  // namespace nomely
