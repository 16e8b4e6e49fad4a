#include <algorithm>

#include <fmt/format.h>

#include "CLI/Command.h"
#include "CLI/Parser.h"
#include "CLI/UsageError.h"

namespace nomely {
namespace {

struct CompletedCommand {
  std::string name;
  std::string summary;
  std::vector<std::string> options;  // "--tag"
  bool takesFiles = false;
};

std::vector<std::string> optionNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options())
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  // Options of a group belong to the command around it.
  for (const CLI::App* group :
       app.get_subcommands([](const CLI::App* sub) { return sub->get_name().empty(); }))
    for (std::string& name : optionNames(*group)) names.push_back(std::move(name));
  return names;
}

bool takesFiles(const CLI::App& app) {
  return std::ranges::any_of(app.get_options(), [](const CLI::Option* option) {
    return option->get_type_name().find("FILE") != std::string::npos ||
           option->get_name(true).find("FILE") != std::string::npos;
  });
}

std::vector<CompletedCommand> completedCommands(const CLI::App& app) {
  std::vector<CompletedCommand> commands;
  for (const CLI::App* command : app.get_subcommands(nullptr))
    if (!command->get_name().empty() && Parser::isShown(*command))
      commands.push_back({command->get_name(), command->get_description(), optionNames(*command),
                          takesFiles(*command)});
  return commands;
}

std::string joined(const std::vector<CompletedCommand>& commands) {
  std::string names;
  for (const CompletedCommand& command : commands) names += command.name + " ";
  names.pop_back();
  return names;
}

std::string bashScript(const CLI::App& app) {
  const auto commands = completedCommands(app);
  const auto globals = optionNames(app);
  std::string cases;
  for (const CompletedCommand& command : commands)
    cases += fmt::format("    {}) words=\"{}\"; files={} ;;\n", command.name,
                         fmt::join(command.options, " "), command.takesFiles ? 1 : 0);
  return fmt::format(R"(_nomely() {{
  local current="${{COMP_WORDS[COMP_CWORD]}}" previous="${{COMP_WORDS[COMP_CWORD-1]}}"
  local commands="{0}" globals="{1}" words="" files=0 command="" i
  case "$previous" in
    --root) COMPREPLY=($(compgen -d -- "$current")); return ;;
    --color) COMPREPLY=($(compgen -W "auto always never" -- "$current")); return ;;
  esac
  for ((i = 1; i < COMP_CWORD; i++)); do
    case " $commands " in *" ${{COMP_WORDS[i]}} "*) command="${{COMP_WORDS[i]}}"; break ;; esac
  done
  case "$command" in
    "") words="$commands" ;;
    completion) words="bash zsh fish" ;;
    help) words="$commands" ;;
{2}  esac
  COMPREPLY=($(compgen -W "$words $globals" -- "$current"))
  if ((files)); then COMPREPLY+=($(compgen -f -- "$current")); fi
}}
complete -o filenames -F _nomely nomely
)",
                     joined(commands), fmt::join(globals, " "), cases);
}

std::string zshScript(const CLI::App& app) {
  std::string script = "#compdef nomely\n_nomely() {\n  local -a commands\n  commands=(\n";
  for (const CompletedCommand& command : completedCommands(app))
    script += fmt::format("    '{}:{}'\n", command.name, command.summary);
  script += fmt::format(
      "  )\n  if (( CURRENT == 2 )); then\n    _describe '命令' commands\n"
      "    compadd -- {}\n    return\n  fi\n  case $words[2] in\n",
      fmt::join(optionNames(app), " "));
  for (const CompletedCommand& command : completedCommands(app))
    script += fmt::format("    {}) compadd -- {}{} ;;\n", command.name,
                          command.name == "completion" ? "bash zsh fish " : "",
                          fmt::join(command.options, " ")) +
              (command.takesFiles ? fmt::format("    # {}: files\n", command.name) : "");
  script += fmt::format("  esac\n  compadd -- {}\n  _files\n}}\ncompdef _nomely nomely\n",
                        fmt::join(optionNames(app), " "));
  return script;
}

std::string fishScript(const CLI::App& app) {
  std::string script = "complete -c nomely -f\n";
  for (const std::string& option : optionNames(app))
    script += fmt::format("complete -c nomely -l {}\n", option.substr(2));
  for (const CompletedCommand& command : completedCommands(app)) {
    script += fmt::format("complete -c nomely -n __fish_use_subcommand -a {} -d '{}'\n",
                          command.name, command.summary);
    const std::string condition = fmt::format("'__fish_seen_subcommand_from {}'", command.name);
    for (const std::string& option : command.options)
      script += fmt::format("complete -c nomely -n {} -l {}\n", condition, option.substr(2));
    if (command.takesFiles) script += fmt::format("complete -c nomely -n {} -F\n", condition);
  }
  return script +
         "complete -c nomely -n '__fish_seen_subcommand_from completion' -a 'bash zsh fish'\n";
}

class CompletionCommand final : public Command {
 public:
  void declare(CLI::App& app) override {
    app.add_option("SHELL", shell_, "bash、zsh 或 fish")->required();
  }

  void run(Session& session) override {
    const Parser parser(session);
    if (shell_ == "bash") return session.print(bashScript(parser.app()));
    if (shell_ == "zsh") return session.print(zshScript(parser.app()));
    if (shell_ == "fish") return session.print(fishScript(parser.app()));
    throw UsageError(fmt::format("不支持“{}”的补全：请用 bash、zsh 或 fish", shell_));
  }

 private:
  std::string shell_;
};

}  // namespace

std::unique_ptr<Command> makeCompletionCommand() {
  return std::make_unique<CompletionCommand>();
}

}  // namespace nomely
