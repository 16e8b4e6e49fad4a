#pragma once

#include <functional>
#include <string>
#include <vector>

#include "CLI/Command.h"

namespace nomely {

// A command made of actions, as `trash restore NAME` and `trash empty` are of `trash`: each takes
// arguments of its own and refuses those of the others.
class ActionCommand : public Command {
 public:
  // Runs the action that was named, else the default one. Throws UsageError when there is neither.
  void run(Session& session) final;

 protected:
  using Action = std::function<void(Session&)>;

  // Declares an action of the command and returns it for its arguments.
  Syntax& add(Syntax& command, const std::string& name, const std::string& summary, Action action);
  // The same for the one that runs when none is named, too.
  Syntax& addDefault(Syntax& command, const std::string& name, const std::string& summary,
                     const Action& action);

 private:
  struct Entry {
    const Syntax* syntax;
    Action action;
  };

  std::vector<Entry> entries_;
  Action default_;
};

}  // namespace nomely
