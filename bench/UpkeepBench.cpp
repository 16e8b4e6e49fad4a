#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Core/Lifecycle/Maintenance/StartupMaintenance.h"
#include "Core/Storage/RootMarkers.h"
#include "bench/Comparison.h"
#include "bench/LargeRoot.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

// Lists a folder and all below it, and looks at the attributes of each entry.
std::size_t listAndStat(int folder) {
  DIR* const listing = ::fdopendir(folder);
  if (listing == nullptr) throw std::runtime_error("can't be listed");
  std::size_t count = 0;
  while (const dirent* entry = ::readdir(listing)) {
    if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0) continue;
    struct stat found {};
    if (::fstatat(folder, entry->d_name, &found, AT_SYMLINK_NOFOLLOW) != 0) continue;
    ++count;
    if (S_ISDIR(found.st_mode))
      count += listAndStat(::openat(folder, entry->d_name, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  }
  ::closedir(listing);
  return count;
}

// A pass over a root on which the work of the first one is done.
Steps laterPass(const LargeRoot& root) {
  const StoreContext context = contextFor(root.folder);
  const RootMarkers markers(context.paths, context.files);
  context.write([&] {
    markers.setColorSpansCleaned();
    markers.setMigratedSchemaVersion(MemoFrontmatter::currentSchemaVersion);
  });
  const auto service = std::make_shared<MemoService>(context);
  const auto defaults = std::make_shared<UserDefaults>(workspace() / "state", context.files);
  return {.floor =
              [folder = root.folder](std::size_t) {
                if (listAndStat(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) == 0)
                  throw std::runtime_error("nothing there");
              },
          .ours =
              [service, defaults](std::size_t) {
                if (StartupMaintenance(*service, *defaults, {}).run({}).changed)
                  throw std::runtime_error("there was something to do");
              }};
}

}  // namespace

void registerUpkeep() {
  registerComparison({.what = "a later maintenance pass, list and stat as floor",
                      .prepare = [] { return laterPass(rootInMemory()); },
                      .goal = {.ratio = 3}});
  registerComparison({.what = "the same on the disk",
                      .prepare = [] { return laterPass(rootOnDisk()); },
                      .goal = {.ratio = 3}});
}

}  // namespace nomely::bench
