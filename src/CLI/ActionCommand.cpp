#include "CLI/ActionCommand.h"

#include <algorithm>

#include <fmt/format.h>

#include "CLI/UsageError.h"

namespace nomely {

CLI::App& ActionCommand::add(CLI::App& app, const std::string& name, const std::string& summary,
                             Action action) {
  app.require_subcommand(0, 1);
  CLI::App& place = *app.add_subcommand(name, summary)->group("操作");
  place.set_help_flag("-h,--help", "显示帮助");
  entries_.push_back({&place, std::move(action)});
  return place;
}

CLI::App& ActionCommand::addDefault(CLI::App& app, const std::string& name,
                                    const std::string& summary, const Action& action) {
  default_ = action;
  return add(app, name, summary + "（默认）", action);
}

void ActionCommand::run(Session& session) {
  const auto named = std::ranges::find_if(entries_, &CLI::App::parsed, &Entry::app);
  if (named != entries_.end()) return named->action(session);
  if (default_) return default_(session);
  std::vector<std::string> names;
  names.reserve(entries_.size());
  for (const Entry& entry : entries_) names.push_back(entry.app->get_name());
  throw UsageError(fmt::format("请写明要做什么：{}", fmt::join(names, "、")));
}

}  // namespace nomely
