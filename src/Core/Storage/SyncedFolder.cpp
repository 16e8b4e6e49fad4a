#include "Core/Storage/SyncedFolder.h"

#include <algorithm>
#include <iterator>

#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

namespace fs = std::filesystem;

using Engine = SyncedFolder::Engine;

struct Mark {
  const char* name;
  Engine engine;
};

// Only what stands in the folder that an engine keeps: "~/.dropbox" is where one keeps its state.
constexpr Mark marks[] = {{".stfolder", Engine::syncthing},
                          {".git", Engine::git},
                          {".dropbox.cache", Engine::cloud},
                          {".SynologyWorkingDirectory", Engine::cloud},
                          {".nextcloudsync.log", Engine::cloud},
                          {".owncloudsync.log", Engine::cloud},
                          {".sync/ID", Engine::cloud}};

// Far more than anybody writes into one.
constexpr std::uint64_t longestFile = std::uint64_t{1} << 20;

}  // namespace

SyncedFolder::SyncedFolder(const StoreContext& context)
    : context_(context), root_(context.gate.root()) {
  for (fs::path folder = root_;; folder = folder.parent_path()) {
    lookIn(folder);
    if (folder == folder.parent_path()) break;
  }
}

void SyncedFolder::lookIn(const fs::path& folder) {
  for (const Mark& mark : marks) {
    if (isBy(mark.engine)) continue;
    try {
      if (context_.files.exists(folder / mark.name)) places_.push_back({mark.engine, folder});
    } catch (const FileError&) {
      // A folder that may not be looked into.
    }
  }
}

// A time to come is that of a clock that was set back.
bool SyncedFolder::isNewHere(const StoreContext& context, const fs::path& file) {
  const auto attributes = context.files.attributes(file, LinkPolicy::noFollow);
  if (!attributes) return false;
  const auto age = context.clock.now() - attributes->changed;
  return age >= Moment::duration::zero() && age < std::chrono::days(1);
}

bool SyncedFolder::isBy(Engine engine) const {
  return std::ranges::find(places_, engine, &Place::engine) != places_.end();
}

fs::path SyncedFolder::folderOf(Engine engine) const {
  const auto place = std::ranges::find(places_, engine, &Place::engine);
  return place == places_.end() ? root_ : place->folder;
}

std::vector<SyncedFolder::Told> SyncedFolder::filesOf(Engine engine) const {
  std::vector<Told> files;
  const auto add = [&](const fs::path& folder, EngineRules content) {
    files.push_back({folder / content.name(), std::move(content)});
  };
  if (engine == Engine::syncthing) {
    // It reads the file of the folder that it keeps, and none below.
    const fs::path folder = folderOf(engine);
    add(folder,
        EngineRules::syncthingIgnore(folder == root_ ? "" : root_.lexically_relative(folder)));
  } else if (engine == Engine::git) {
    add(root_, EngineRules::gitIgnore());
    add(root_, EngineRules::gitAttributes());
    // A working tree that begins above holds other things, too, and merges them in its own way.
    if (context_.files.isDirectory(root_ / ".git")) add(root_, EngineRules::gitSettings());
  }
  return files;
}

std::vector<SyncedFolder::Gap> SyncedFolder::gaps(Engine engine) const {
  std::vector<Gap> gaps;
  for (const Told& told : filesOf(engine)) {
    const std::string text = context_.files.read(told.file, longestFile).value_or("");
    if (auto missing = told.content.missingFrom(text); !missing.empty())
      gaps.push_back({told.file, std::move(missing)});
  }
  return gaps;
}

std::vector<SyncedFolder::Gap> SyncedFolder::gaps() const {
  std::vector<Gap> all;
  for (const Place& place : places_) std::ranges::move(gaps(place.engine), std::back_inserter(all));
  return all;
}

std::vector<SyncedFolder::Gap> SyncedFolder::fill(Engine engine) const {
  context_.paths.createRoot(context_.files);
  // As for a root that is replaced: what another machine sends into an empty one may be older than
  // today's format.
  return context_.gate.replaceRoot([&] {
    std::vector<Gap> filled;
    for (const Told& told : filesOf(engine)) {
      const std::string text = context_.files.read(told.file, longestFile).value_or("");
      auto missing = told.content.missingFrom(text);
      if (missing.empty()) continue;
      context_.files.writeAtomically(told.file, told.content.completed(text));
      filled.push_back({told.file, std::move(missing)});
    }
    return filled;
  });
}

}  // namespace nomely
