#include <algorithm>

#include <fmt/format.h>

#include "CLI/Command.h"
#include "CLI/Parser.h"

namespace nomely {
namespace {

// A command, or one of its actions.
struct Completed {
  std::string name;
  std::string summary;
  std::vector<std::string> options;  // "--tag"
  bool takesFiles = false;
  std::vector<Completed> actions;

  [[nodiscard]] std::vector<std::string> actionNames() const {
    std::vector<std::string> names;
    names.reserve(actions.size());
    for (const Completed& action : actions) names.push_back(action.name);
    return names;
  }
  // What may follow the command's name.
  [[nodiscard]] std::vector<std::string> words() const {
    if (name == "completion") return {"bash", "zsh", "fish"};
    std::vector<std::string> all = actionNames();
    all.insert(all.end(), options.begin(), options.end());
    return all;
  }
};

std::vector<std::string> optionNames(const Syntax& syntax) {
  std::vector<std::string> names;
  for (const Argument& argument : syntax.arguments)
    if (!argument.isPositional()) names.push_back(argument.names().back());
  return names;
}

bool takesFiles(const Syntax& syntax) {
  return std::ranges::any_of(
      syntax.arguments, [](const Argument& argument) { return argument.kind == WordKind::file; });
}

std::vector<Completed> completed(const Syntax& syntax) {
  std::vector<Completed> commands;
  for (const Syntax* part : syntax.shownParts())
    commands.push_back(
        {part->name, part->summary, optionNames(*part), takesFiles(*part), completed(*part)});
  return commands;
}

std::string bashCase(const std::string& pattern, const Completed& command) {
  return fmt::format("      {}) words=\"{}\"; actions=\"{}\"; files={} ;;\n", pattern,
                     fmt::join(command.words(), " "), fmt::join(command.actionNames(), " "),
                     command.takesFiles ? 1 : 0);
}

std::string bashScript(const Syntax& app) {
  const Completed program{"nomely", "", optionNames(app), false, completed(app)};
  std::string cases;
  for (const Completed& command : program.actions) {
    if (command.name != "help") cases += bashCase(command.name, command);
    for (const Completed& action : command.actions)
      cases += bashCase(fmt::format("\"{} {}\"", command.name, action.name), action);
  }
  return fmt::format(R"(_nomely() {{
  local current="${{COMP_WORDS[COMP_CWORD]}}" previous="${{COMP_WORDS[COMP_CWORD-1]}}"
  local commands="{0}" globals="{1}" words="{0}" actions="{0}" files=0 command="" word
  case "$previous" in
    --root) COMPREPLY=($(compgen -d -- "$current")); return ;;
    --color) COMPREPLY=($(compgen -W "auto always never" -- "$current")); return ;;
  esac
  for word in "${{COMP_WORDS[@]:1:COMP_CWORD-1}}"; do
    case " $actions " in *" $word "*) command="${{command:+$command }}$word" ;; *) continue ;; esac
    case "$command" in
      help) words="$commands"; actions="" ;;
{2}    esac
  done
  COMPREPLY=($(compgen -W "$words $globals" -- "$current"))
  if ((files)); then COMPREPLY+=($(compgen -f -- "$current")); fi
}}
complete -o filenames -F _nomely nomely
)",
                     fmt::join(program.actionNames(), " "), fmt::join(program.options, " "), cases);
}

// With the options of its actions, for a script that goes by the command alone.
std::vector<std::string> wordsOfAll(const Completed& command) {
  std::vector<std::string> words = command.words();
  for (const Completed& action : command.actions)
    words.insert(words.end(), action.options.begin(), action.options.end());
  return words;
}

std::string zshScript(const Syntax& app) {
  const std::string globals = fmt::format("{}", fmt::join(optionNames(app), " "));
  std::string names;
  std::string cases;
  for (const Completed& command : completed(app)) {
    names += fmt::format("    '{}:{}'\n", command.name, command.summary);
    cases += fmt::format("    {}) compadd -- {} ;;\n", command.name,
                         fmt::join(wordsOfAll(command), " "));
  }
  return fmt::format(
      "#compdef nomely\n_nomely() {{\n  local -a commands\n  commands=(\n{}  )\n"
      "  if (( CURRENT == 2 )); then\n    _describe '命令' commands\n    compadd -- {}\n"
      "    return\n  fi\n  case $words[2] in\n{}  esac\n  compadd -- {}\n  _files\n}}\n"
      "compdef _nomely nomely\n",
      names, globals, cases, globals);
}

// What a command or an action takes, where `condition` holds.
std::string fishLines(const std::string& condition, const Completed& command) {
  std::string lines;
  for (const std::string& option : command.options)
    lines += fmt::format("complete -c nomely -n '{}' -l {}\n", condition, option.substr(2));
  if (command.takesFiles) lines += fmt::format("complete -c nomely -n '{}' -F\n", condition);
  return lines;
}

std::string fishScript(const Syntax& app) {
  std::string script = "complete -c nomely -f\n";
  for (const std::string& option : optionNames(app))
    script += fmt::format("complete -c nomely -l {}\n", option.substr(2));
  for (const Completed& command : completed(app)) {
    script += fmt::format("complete -c nomely -n __fish_use_subcommand -a {} -d '{}'\n",
                          command.name, command.summary);
    const std::string condition = "__fish_seen_subcommand_from " + command.name;
    script += fishLines(condition, command);
    for (const Completed& action : command.actions) {
      script += fmt::format("complete -c nomely -n '{}' -a {} -d '{}'\n", condition, action.name,
                            action.summary);
      script += fishLines(
          fmt::format("{}; and __fish_seen_subcommand_from {}", condition, action.name), action);
    }
  }
  return script +
         "complete -c nomely -n '__fish_seen_subcommand_from completion' -a 'bash zsh fish'\n";
}

class CompletionCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add({.name = "SHELL",
                .help = "bash、zsh 或 fish",
                .target = &shell_,
                .choices = {"bash", "zsh", "fish"},
                .isRequired = true});
  }

  void run(Session& session) override {
    const Parser parser(session);
    if (shell_ == "bash") return session.print(bashScript(parser.syntax()));
    if (shell_ == "zsh") return session.print(zshScript(parser.syntax()));
    session.print(fishScript(parser.syntax()));
  }

 private:
  std::string shell_;
};

}  // namespace

std::unique_ptr<Command> makeCompletionCommand() {
  return std::make_unique<CompletionCommand>();
}

}  // namespace nomely
