#include "CLI/Parser.h"

#include <algorithm>

#include <fmt/format.h>

#include "CLI/Checks.h"
#include "CLI/UsageError.h"
#include "CLI/UsageText.h"

namespace nomely {
namespace {

constexpr auto versionText = "nomely " NOMELY_VERSION;

// CLI11's help with Chinese words.
class HelpFormatter final : public CLI::Formatter {
 public:
  HelpFormatter() {
    constexpr std::size_t firstColumn = 26;
    column_width(firstColumn);
    label("Usage", "用法");
    label("OPTIONS", "选项");
    label("SUBCOMMAND", "命令");
    label("SUBCOMMANDS", "命令");
    label("Positionals", "参数");
    label("REQUIRED", "必需");
    label("Excludes", "不能同时用");
    label("TEXT", "");
    label("INT", "");
  }

  [[nodiscard]] std::string make_expanded(const CLI::App* sub) const override {
    const std::string text = Formatter::make_expanded(sub);
    // A group of options has no name to show.
    return sub->get_name().empty() ? text.substr(text.find('\n') + 1) : text;
  }

  [[nodiscard]] std::string make_description(const CLI::App* app) const override {
    if (app->get_require_option_max() == 1) return "一次只能用一个：\n";
    return app->get_description() + "\n";
  }
};

// "nomely history REF show"
std::string nameOf(const CLI::App& app) {
  if (app.get_parent() == nullptr) return app.get_name();
  std::string name = nameOf(*app.get_parent());
  for (const CLI::Option* option : app.get_parent()->get_options())
    if (option->get_positional()) name += " " + option->get_name(true);
  return name + " " + app.get_name();
}

// Not App::help(): that shows the command in use.
std::string helpOf(const CLI::App& app) {
  return app.get_formatter()->make_help(&app, nameOf(app), CLI::AppFormatMode::Normal);
}

}  // namespace

Parser::Parser(Session& session)
    : session_(session), app_("个人日记与笔记：每条笔记是一个 Markdown 文件", "nomely") {
  app_.formatter(std::make_shared<HelpFormatter>());
  app_.option_defaults()->group("选项")->disable_flag_override()->multi_option_policy(
      CLI::MultiOptionPolicy::TakeLast);
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
  app_.add_option("--color", options.color, "颜色：auto、always 或 never")
      ->type_name("WHEN")
      ->check(Checks::oneOf({"auto", "always", "never"}));
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
  help->add_option("COMMAND", helpNames_, "命令，及其操作")->expected(0, 2);
}

bool Parser::isShown(const CLI::App& command) {
  return !command.get_description().empty();
}

std::string Parser::help(const std::vector<std::string>& names) const {
  const CLI::App* app = &app_;
  for (const std::string& name : names) {
    const auto known = namedSubcommands(*app);
    const auto found = std::ranges::find(known, name, &CLI::App::get_name);
    if (found == known.end())
      throw UsageError(fmt::format("没有“{}”这个命令。全部命令：nomely help", name));
    app = *found;
  }
  return helpOf(*app);
}

Parser::Request Parser::parse(const std::vector<std::string>& arguments) {
  try {
    // In the order in which CLI11 takes them.
    app_.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
  } catch (const CLI::CallForVersion&) {
    return {.help = std::string(versionText) + "\n"};
  } catch (const CLI::CallForHelp&) {
    std::vector<std::string> names;
    for (auto next = app_.get_subcommands(); !next.empty(); next = next.front()->get_subcommands())
      names.push_back(next.front()->get_name());
    return {.help = help(names)};
  } catch (const CLI::ParseError& error) {
    throw UsageError(usageText(error, app_, arguments));
  }
  const auto chosen = app_.get_subcommands();
  if (chosen.empty()) return {};
  if (chosen.front()->get_name() == "help") return {.help = help(helpNames_)};
  const auto found = std::ranges::find(commands_, chosen.front()->get_name(), &CommandEntry::name);
  return {.command = found->command.get(), .help = {}};
}

}  // namespace nomely
