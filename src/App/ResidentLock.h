#pragma once

#include "Core/Storage/StoreContext.h"
#include "Platform/Files/DirectoryLock.h"

namespace nomely {

// One process a root stays to run the chat bot and whatever else happens by itself: the one that
// holds this lock, on the folder ".meta".
class ResidentLock {
 public:
  explicit ResidentLock(const StoreContext& storage)
      : storage_(storage), lock_(storage.paths.metaFolder()) {}

  // False while another process has it. Where the file system has no locks, nobody is kept out, and
  // the log says so. Makes a missing root. Throws FileError, WriteError.
  [[nodiscard]] bool acquire();
  // Whether another process has it. Never throws.
  [[nodiscard]] static bool isHeld(const StoreContext& storage) noexcept;

 private:
  StoreContext storage_;
  DirectoryLock lock_;
};

}  // namespace nomely
