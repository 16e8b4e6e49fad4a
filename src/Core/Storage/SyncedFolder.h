#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "Core/Storage/EngineRules.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

// Whether a root lies in a folder that other programs (engines) keep alike on several machines, and
// whether they have been told what not to move. A value; any thread.
class SyncedFolder {
 public:
  enum class Engine {
    syncthing,
    git,
    cloud,  // a client that moves whatever lies in its folder
  };
  struct Place {
    Engine engine;
    std::filesystem::path folder;  // that it keeps: the root, or one above
  };
  // A file that tells an engine what not to move and how to merge, and what it still has to say.
  struct Gap {
    std::filesystem::path file;
    std::vector<std::string> missing;  // whole lines
  };

  // Looks for the marks of engines in the root and above it: a few calls a folder. What can't be
  // looked at shows none.
  explicit SyncedFolder(const StoreContext& context);

  // Whether a file came here less than a day ago, so that what belongs to it may still be on its
  // way. Throws FileError.
  [[nodiscard]] static bool isNewHere(const StoreContext& context,
                                      const std::filesystem::path& file);

  [[nodiscard]] bool isSynced() const { return !places_.empty(); }
  [[nodiscard]] bool isBy(Engine engine) const;
  // Each engine's nearest folder.
  [[nodiscard]] const std::vector<Place>& places() const { return places_; }

  // What the files of that engine lack, one a file, complete ones left out. None for a cloud's:
  // they take no such file. Throws FileError.
  [[nodiscard]] std::vector<Gap> gaps(Engine engine) const;
  // The same of all engines that were found.
  [[nodiscard]] std::vector<Gap> gaps() const;
  // Fills them, in the gate, keeping what stands there, and returns what they were. A missing root
  // is made, without a claim that all in it will have been written here. Throws FileError.
  std::vector<Gap> fill(Engine engine) const;

 private:
  struct Told {
    std::filesystem::path file;
    EngineRules content;
  };

  void lookIn(const std::filesystem::path& folder);
  // The folder that the engine keeps, or will once it is told to.
  [[nodiscard]] std::filesystem::path folderOf(Engine engine) const;
  [[nodiscard]] std::vector<Told> filesOf(Engine engine) const;

  StoreContext context_;
  std::filesystem::path root_;
  std::vector<Place> places_;
};

}  // namespace nomely
