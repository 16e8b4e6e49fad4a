#include "CLI/Command.h"

namespace nomely {
namespace {

// What may stand at the cursor is the program's own knowledge (`nomely complete`); the scripts ask
// the program that stands on the line and hand its answer to their shell.

constexpr auto bashScript = R"(# nomely completion bash
_nomely() {
  local answer
  answer=$("${1/#\~\//$HOME/}" complete bash "${COMP_LINE:0:COMP_POINT}" "$2" 2>/dev/null) || return
  mapfile -t COMPREPLY <<<"$answer"
  case ${COMPREPLY[0]} in
    partial) compopt -o nospace ;;
    files) compopt -o default ;;
    folders) compopt -o dirnames ;;
  esac
  COMPREPLY=("${COMPREPLY[@]:1}")
}
complete -o nosort -F _nomely nomely
)";

constexpr auto zshScript = R"(#compdef nomely
# nomely completion zsh
_nomely() {
  local program=${(Q)words[1]} line
  local -a answer values shown
  answer=("${(@f)$("${program/#\~\//$HOME/}" complete zsh "${(@Q)words[2,CURRENT-1]}" "${(Q)PREFIX}" 2>/dev/null)}")
  case $answer[1] in
    files | folders)
      [[ $PREFIX == --*=* ]] && compset -P 1 '*='
      if [[ $answer[1] == files ]]; then _files; else _files -/; fi
      return ;;
  esac
  for line in "${(@)answer[2,-1]}"; do
    values+=("${line%%$'\t'*}")
    shown+=("${line/$'\t'/  -- }")
  done
  [[ $answer[1] == partial ]] && set -- -S ''
  compadd "$@" -V nomely -l -d shown -a values
}
if [[ $funcstack[1] == _nomely ]]; then _nomely; else compdef _nomely nomely; fi
)";

constexpr auto fishScript = R"(# nomely completion fish
function __nomely_answer
    set -l words (commandline -opc)
    set -l current (commandline -ct)
    set -l program (string replace -r '^~/' "$HOME/" -- $words[1])
    set -e words[1]
    set -g __nomely_words ($program complete fish $words "$current" 2>/dev/null)
    set -l kind "$__nomely_words[1]"
    set -e __nomely_words[1]
    if test "$kind" = folders
        set -g __nomely_words (__fish_complete_directories "$current" '')
    end
    test "$kind" != files
end
complete -c nomely -n __nomely_answer -f -k -a '$__nomely_words'
)";

class CompletionCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add({.name = "SHELL",
                .help = "bash、zsh 或 fish",
                .target = &shell_,
                .choices = {"bash", "zsh", "fish"},
                .isRequired = true});
    syntax.examples = {"source <(nomely completion bash)", "source <(nomely completion zsh)",
                       "nomely completion fish | source"};
  }

  void run(Session& session) override {
    session.print(shell_ == "bash" ? bashScript : shell_ == "zsh" ? zshScript : fishScript);
  }

 private:
  std::string shell_;
};

}  // namespace

std::unique_ptr<Command> makeCompletionCommand() {
  return std::make_unique<CompletionCommand>();
}

}  // namespace nomely
