#include "Core/Storage/MaintenanceWork.h"

#include "Core/Storage/WriteError.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {

bool MaintenanceWork::concernsWholeRoot(const Error& error) {
  if (const auto* file = dynamic_cast<const FileError*>(&error))
    return file->kind() == FileError::Kind::readOnly || file->kind() == FileError::Kind::noSpace;
  if (const auto* write = dynamic_cast<const WriteError*>(&error))
    return write->kind() == WriteError::Kind::maintenance;
  return dynamic_cast<const CancellationError*>(&error) != nullptr;
}

void MaintenanceWork::logOrRethrow(std::string_view what) {
  try {
    throw;
  } catch (const Error& error) {
    if (concernsWholeRoot(error)) throw;
    Log::error(LogChannel::storage, "{}：{}", what, error.what());
  }
}

void MaintenanceWork::requireWritable(const StoreContext& context) {
  context.write([&] {
    FileSystem& system = context.files.fileSystem();
    // A temporary's name: should the process end here, a sweep takes it away.
    const std::filesystem::path probe = context.paths.rootURL / ".nomely-probe.tmp";
    system.remove(probe);
    (void)system.open(probe, FileSystem::OpenMode::createNew, LinkPolicy::noFollow);
    system.remove(probe);
  });
}

}  // namespace nomely
