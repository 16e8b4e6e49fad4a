#include "CLI/ActionCommand.h"

#include <algorithm>

#include <fmt/format.h>

#include "CLI/UsageError.h"

namespace nomely {

Syntax& ActionCommand::add(Syntax& command, const std::string& name, const std::string& summary,
                           Action action) {
  Syntax& part = command.addPart(name, summary);
  entries_.push_back({&part, std::move(action)});
  return part;
}

Syntax& ActionCommand::addDefault(Syntax& command, const std::string& name,
                                  const std::string& summary, const Action& action) {
  default_ = action;
  return add(command, name, summary + "（默认）", action);
}

void ActionCommand::run(Session& session) {
  const auto named =
      std::ranges::find_if(entries_, [](const Entry& entry) { return entry.syntax->isChosen; });
  if (named != entries_.end()) return named->action(session);
  if (default_) return default_(session);
  std::vector<std::string> names;
  names.reserve(entries_.size());
  for (const Entry& entry : entries_) names.push_back(entry.syntax->name);
  throw UsageError(fmt::format("请写明要做什么：{}", fmt::join(names, "、")));
}

}  // namespace nomely
