#include "Core/Lifecycle/Backup/BackupPruning.h"

#include <algorithm>
#include <functional>
#include <set>

#include "Core/Extensions/PathNames.h"
#include "Platform/Time/Day.h"

namespace nomely::BackupPruning {
namespace {

constexpr std::string_view prefix = "nomely-auto-";

}  // namespace

bool isAutomatic(std::string_view name) {
  return name.starts_with(prefix) && lowerCaseExtension(name) == "zip";
}

std::vector<std::string> superfluous(std::vector<std::string> names, std::size_t most,
                                     const std::vector<std::string>& kept) {
  constexpr std::size_t dayLength = 10;
  constexpr std::size_t protectedDays = 3;
  std::erase_if(names, [](const std::string& name) { return !isAutomatic(name); });
  std::ranges::sort(names, std::greater());
  std::set<Day> days;
  std::vector<std::string> removed;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const auto day =
        Day::parse(std::string_view(names[i]).substr(prefix.size()).substr(0, dayLength));
    const bool isItsDays = day && days.size() < protectedDays && days.insert(*day).second;
    if (i >= most && !isItsDays && std::ranges::find(kept, names[i]) == kept.end())
      removed.push_back(names[i]);
  }
  return removed;
}

}  // namespace nomely::BackupPruning
