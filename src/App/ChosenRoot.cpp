#include "App/ChosenRoot.h"

#include <algorithm>

#include "Core/Extensions/EngineNames.h"
#include "Core/Storage/DiskPaths.h"
#include "Platform/Settings/UserDefaults.h"

namespace nomely {
namespace {

constexpr std::string_view key = "dataRoot";

bool isOfRoot(const DirectoryEntry& entry) {
  const auto has = [&](const std::filesystem::path& folder) { return entry.name == folder; };
  const DiskPaths paths{};
  return entry.type == FileType::directory &&
         (has(paths.metaFolder()) || has(paths.versionsFolder()) || has(paths.configFolder()) ||
          Day::parse(entry.name));
}

}  // namespace

std::filesystem::path ChosenRoot::of(std::string_view named, const Environment& environment,
                                     const FileManager& files) {
  std::string root(named);
  if (root.empty()) root = overruledBy(environment);
  if (root.empty()) root = UserDefaults(environment.stateFolder(), files).string(key).value_or("");
  if (root.empty()) return DiskPaths::usualRoot(environment);
  return std::filesystem::absolute(root).lexically_normal();
}

void ChosenRoot::settleOn(const std::filesystem::path& root, const Environment& environment,
                          const FileManager& files) {
  UserDefaults defaults(environment.stateFolder(), files);
  if (root == DiskPaths::usualRoot(environment))
    defaults.remove(key);
  else
    defaults.setString(key, root.string());
}

std::string ChosenRoot::overruledBy(const Environment& environment) {
  return environment.get("NOMELY_ROOT").value_or("");
}

std::filesystem::path ChosenRoot::within(const std::filesystem::path& folder,
                                         const FileManager& files) {
  if (!files.exists(folder)) return folder;
  std::vector<DirectoryEntry> entries = files.listAll(folder);
  // One that an engine is to fill is as good as empty.
  std::erase_if(entries,
                [](const DirectoryEntry& entry) { return EngineNames::isAny(entry.name); });
  if (entries.empty() || std::ranges::any_of(entries, isOfRoot)) return folder;
  return folder / "NomelyData";
}

}  // namespace nomely
