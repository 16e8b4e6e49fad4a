#pragma once

#include "Core/Storage/DiskPaths.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Time/Clock.h"

namespace nomely {

// What every store is built from. Cheap to copy; the clock must outlive the stores.
struct StoreContext {
  DiskPaths paths;
  FileManager files;
  const Clock& clock;
};

}  // namespace nomely
