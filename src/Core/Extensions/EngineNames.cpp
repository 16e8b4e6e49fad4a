#include "Core/Extensions/EngineNames.h"

#include <algorithm>
#include <array>

namespace nomely::EngineNames {
namespace {

using namespace std::string_view_literals;

// ".git" may be a file, which names the folder elsewhere.
constexpr std::array folders{".git"sv,
                             ".stfolder"sv,
                             ".stversions"sv,
                             ".dropbox.cache"sv,
                             ".SynologyWorkingDirectory"sv,
                             ".sync"sv,
                             ".tmp.drivedownload"sv};

constexpr std::array ownFiles{".stignore"sv,        ".gitignore"sv,         ".gitattributes"sv,
                              ".gitmodules"sv,      ".gitkeep"sv,           ".dropbox"sv,
                              ".dropbox.attr"sv,    ".nextcloudsync.log"sv, ".owncloudsync.log"sv,
                              ".sync-exclude.lst"sv};

bool isBetween(std::string_view name, std::string_view begin, std::string_view end) {
  return name.size() > begin.size() + end.size() && name.starts_with(begin) && name.ends_with(end);
}

// ".sync_3f2504e0.db", to which SQLite adds "-wal" and "-shm".
bool isStateOfCloudClient(std::string_view name) {
  return (name.starts_with(".sync_") || name.starts_with("._sync_")) &&
         name.find(".db") != std::string_view::npos;
}

}  // namespace

bool isFolder(std::string_view name) {
  // ".stfolder.removed-20261121-101530"
  return std::ranges::find(folders, name) != folders.end() || name.starts_with(".stfolder.");
}

bool isTemporary(std::string_view name) {
  return isBetween(name, ".syncthing.", ".tmp") || isBetween(name, "~syncthing~", ".tmp") ||
         // ".007.md.~1a2b3c4d", "007.md.!sync"
         (name.starts_with('.') && name.find(".~") != std::string_view::npos) ||
         isBetween(name, "", ".!sync");
}

bool isOwnFile(std::string_view name) {
  return std::ranges::find(ownFiles, name) != ownFiles.end() || isStateOfCloudClient(name);
}

bool isAny(std::string_view name) {
  return isFolder(name) || isTemporary(name) || isOwnFile(name);
}

}  // namespace nomely::EngineNames
