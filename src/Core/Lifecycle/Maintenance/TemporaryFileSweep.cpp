#include "Core/Lifecycle/Maintenance/TemporaryFileSweep.h"

#include <algorithm>

#include "Core/Extensions/EngineNames.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

class Sweep {
 public:
  Sweep(const StoreContext& context, const std::stop_token& stop, const FolderVisitor& visit)
      : context_(context), stop_(stop), visit_(visit) {}

  std::size_t run() {
    if (context_.files.exists(context_.paths.rootURL)) visit(context_.paths.rootURL, 0);
    return count_;
  }

 private:
  void visit(const std::filesystem::path& folder, int depth) {
    throwIfStopped(stop_);
    try {
      const auto entries = context_.files.listAll(folder);
      if (visit_) visit_(folder, entries);
      // The gate is only taken where there is something to remove.
      if (std::ranges::any_of(entries, [](const DirectoryEntry& entry) {
            return FileManager::isTemporaryName(entry.name);
          }))
        count_ += context_.write([&] { return context_.gate.sweep(folder, context_.files); });
      if (depth == deepestDataFolder) return;
      for (const DirectoryEntry& entry : entries)
        if (entry.type == FileType::directory && !EngineNames::isFolder(entry.name))
          visit(folder / entry.name, depth + 1);
    } catch (const FileError& error) {
      Log::error(LogChannel::storage, "⚠️ sweepTemporaryFiles: {}", error.what());
    }
  }

  const StoreContext& context_;
  const std::stop_token& stop_;
  const FolderVisitor& visit_;
  std::size_t count_ = 0;
};

}  // namespace

std::size_t sweepTemporaryFiles(const StoreContext& context, const std::stop_token& stop,
                                const FolderVisitor& visit) {
  return Sweep(context, stop, visit).run();
}

}  // namespace nomely
