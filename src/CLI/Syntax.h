#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace nomely {

// What a word of the command line stands for; shells complete it by that.
enum class WordKind {
  text,
  reference,      // REF
  pastReference,  // REF, also of a note that is gone
  date,
  month,
  tag,
  file,
  folder,
  attachment,  // of the memo that the REF before it names
  trashEntry,
  backup,        // a file, or the name of one in the root
  setting,       // "ai.model"
  settingValue,  // of the setting before it
  command,       // of this program, then an action of it
};

// An option, a flag, or an argument that goes by its place.
struct Argument {
  // Where its words are put: of an option given twice the last, unless the target collects. A bool
  // is that of a flag, null for --help and --version, which parsing itself answers; an integer is
  // one from 1 on.
  using Target = std::variant<bool*, std::string*, std::optional<std::string>*,
                              std::vector<std::string>*, std::optional<std::int64_t>*>;

  std::string name;  // "--tag", "-n,--limit"; "REF" goes by its place
  std::string help;
  Target target;
  std::string value = {};  // how help calls an option's value: "TAG"
  WordKind kind = WordKind::text;
  std::vector<std::string> choices = {};  // the only words that it takes, if there are any
  bool isRequired = false;
  bool mayLackValue = false;  // an option that may stand without its value: an empty text then
  int words = 1;              // that one option takes: two in "--describe FILE TEXT"

  [[nodiscard]] bool isPositional() const { return !name.starts_with('-'); }
  [[nodiscard]] bool isFlag() const { return std::holds_alternative<bool*>(target); }
  [[nodiscard]] bool isAnsweredByParsing() const {
    return isFlag() && std::get<bool*>(target) == nullptr;
  }
  [[nodiscard]] bool collects() const {
    return std::holds_alternative<std::vector<std::string>*>(target);
  }
  // "-n", "--limit".
  [[nodiscard]] std::vector<std::string> names() const;
};

// The memo or memos that a command works on.
[[nodiscard]] Argument referenceArgument(Argument::Target target);

// What the program, one of its commands, or an action of a command takes. A tree, from which
// parsing, help, completion and the manual page are made.
struct Syntax {
  std::string name;
  std::string summary = {};                // empty: help, completion and manual say nothing of it
  std::vector<std::string> examples = {};  // whole command lines
  std::vector<Argument> arguments = {};
  std::deque<Syntax> parts = {};  // the program's commands, a command's actions
  bool isChosen = false;          // set by parsing

  void add(Argument argument) { arguments.push_back(std::move(argument)); }
  Syntax& addPart(std::string partName, std::string partSummary);
  // The part of that name that is shown; null when there is none.
  [[nodiscard]] const Syntax* part(std::string_view partName) const;
  [[nodiscard]] std::vector<const Syntax*> shownParts() const;
};

}  // namespace nomely
