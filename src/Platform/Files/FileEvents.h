#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Concurrency/SerialQueue.h"

namespace nomely {

// Which folder a path names.
struct FolderIdentity {
  std::uint64_t device = 0;
  std::uint64_t fileNumber = 0;  // unique within its device

  friend bool operator==(const FolderIdentity&, const FolderIdentity&) = default;
};

// What happened to files since the batch before.
struct FileEventBatch {
  // Files that came, went or have another content, each once. Their paths go through the root's
  // canonical path. Those with hidden names are left out.
  std::vector<std::filesystem::path> changed = {};
  // Some changes are not in the list: any file may have changed.
  bool isIncomplete = false;
};

struct FileEventRequest {
  std::filesystem::path root;
  // Of a folder in the root, by its name: whether the files in it are watched as those of the root
  // are. Where not all of them can be, those with the greatest names are.
  std::function<bool(const std::string& name)> isWatched;
  SerialQueue& queue;  // all calls come there; must outlive the stream
  // From the first change to the batch that tells of it, which thus comes at most once in that
  // time.
  std::chrono::milliseconds latency{1000};
  std::function<void(const FileEventBatch& batch)> onBatch;
  // At once: the root's path may name another folder than the one that is watched, or none, or one
  // again. Whoever is told looks, and asks for another stream where it does.
  std::function<void()> onRootTouched;
};

// Tells of changes until it is destroyed, on the queue; after that nothing is called any more.
class FileEventStream {
 public:
  virtual ~FileEventStream() = default;
  // The folder that is watched. Absent: there is none, or none any more, and the stream tells when
  // one comes.
  [[nodiscard]] virtual std::optional<FolderIdentity> root() const = 0;
  // Watches what could not be watched so far, where there is any. Returns at once.
  virtual void retry() = 0;
};

// What the system tells of changed files, also of those that other programs change. What happens on
// a network's other machines, mounts over the root, and moves of folders far above it are told by
// no system: who needs to know looks now and then.
class FileEvents {
 public:
  virtual ~FileEvents() = default;
  // What changes from its return on is told. Takes about ten microseconds a folder. Throws
  // FileError when nothing can be watched there, as without the folder that holds the root.
  [[nodiscard]] virtual std::unique_ptr<FileEventStream> watch(FileEventRequest request) = 0;
};

// The real one. Stateless.
[[nodiscard]] FileEvents& systemFileEvents();

}  // namespace nomely
