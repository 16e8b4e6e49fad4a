#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Core/Storage/StoreContext.h"
#include "Platform/Files/FileEvents.h"

namespace nomely {

// Drafts that their root did not take: it is gone or full, may not be written, or has a draft of
// someone else's in their place. Each lies in a file of its own in a folder of this machine, which
// only its user can read, and says to which root it belongs. Stateless; safe on any thread. Throws
// FileError.
class StrandedDrafts {
 public:
  struct Draft {
    std::string name;                           // of its file among the root's drafts
    std::string bytes;                          // of that file
    std::optional<std::string> inPlaceOf = {};  // its bytes as the process last knew them
  };

  // `folder` need not exist; empty: there is no such folder, and nothing can be kept.
  StrandedDrafts(StoreContext context, std::filesystem::path folder)
      : context_(std::move(context)), folder_(std::move(folder)) {}

  [[nodiscard]] bool isPossible() const { return !folder_.empty(); }
  // Where the next one may lie; nobody else gets the same.
  [[nodiscard]] std::filesystem::path newFile() const;
  // Keeps it there, in place of what is kept there already. `root` is the folder that the root was
  // when it was last seen, by which it is known again when it was moved.
  void write(const std::filesystem::path& file, const Draft& draft,
             const std::optional<FolderIdentity>& root) const;
  void remove(const std::filesystem::path& file) const { context_.files.removeFile(file); }

  // The folder that the root is; absent when there is none.
  [[nodiscard]] std::optional<FolderIdentity> presentRoot() const;
  // Those that belong to the root, which is there. What can't be read stays where it is.
  [[nodiscard]] std::vector<std::pair<std::filesystem::path, Draft>> ofRoot() const;

 private:
  StoreContext context_;
  std::filesystem::path folder_;
};

}  // namespace nomely
