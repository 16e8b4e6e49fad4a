#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <sys/inotify.h>

#include "Platform/Files/FileError.h"
#include "Platform/Files/FileEvents.h"
#include "Platform/System/Descriptor.h"

namespace nomely {

// The inotify(7) watches of one stream: on the root, on those of its folders that are to be
// watched, and on the folders whose entries its path names. For one thread at a time.
class InotifyWatches {
 public:
  // What was read and not yet told.
  struct Seen {
    std::unordered_set<std::string> changed;
    bool isIncomplete = false;
    bool isRootTouched = false;

    [[nodiscard]] bool isEmpty() const { return changed.empty() && !isIncomplete; }
    // Many are told as "any file", so that a burst costs no memory.
    void add(const std::filesystem::path& file);
  };

  // Throws FileError.
  InotifyWatches(std::filesystem::path root, std::function<bool(const std::string&)> isWatched);

  [[nodiscard]] const std::optional<FolderIdentity>& root() const { return identity_; }
  // No longer once it was deleted or its disk is gone.
  [[nodiscard]] bool isRootWatched() const { return rootWatch_ >= 0; }
  // Can be read from when something has happened.
  [[nodiscard]] int descriptor() const { return inotify_.get(); }
  // Takes what has happened so far, without waiting.
  void read(Seen& seen);
  // Looks for folders that should be watched and are not.
  void retry(Seen& seen);

 private:
  // An entry of a folder that stands for the root.
  struct Name {
    int watch;
    std::string name;
  };

  void watchName(const std::filesystem::path& path);
  [[nodiscard]] int add(const std::filesystem::path& path, std::uint32_t mask) const;
  void scan(Seen& seen);
  void forgetAllBut(const std::vector<std::string>& names);
  [[nodiscard]] bool watchFolder(const std::string& name, const std::filesystem::path& path);
  [[nodiscard]] int addWithinLimit(const std::string& name, const std::filesystem::path& path);
  void unwatch(const std::string& name);
  [[nodiscard]] FileError refusal(int errorNumber) const;
  void tellOfLimit() const;

  void take(const inotify_event& event, std::string_view name, Seen& seen);
  void takeOfRoot(std::uint32_t mask, const std::string& name, Seen& seen);
  void folderCame(const std::string& name, Seen& seen);

  std::filesystem::path root_;  // canonical, once it is there
  std::function<bool(const std::string&)> isWatched_;
  Descriptor inotify_;
  std::vector<Name> names_;
  std::optional<FolderIdentity> identity_;
  int rootWatch_ = -1;
  std::map<std::string, int> watchOf_;             // by the folder's name
  std::unordered_map<int, std::string> folderOf_;  // the reverse
  bool isPartial_ = false;
};

}  // namespace nomely
