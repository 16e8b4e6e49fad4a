#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "Core/Models/Memo.h"
#include "Core/Storage/MemoStore.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

// Snapshots of memos as they were before each change, filed under the memo's stable identity so
// that they follow it wherever it moves. Stateless; safe on any thread.
class VersionStore {
 public:
  static constexpr std::size_t defaultMaxVersions = 20;

  explicit VersionStore(StoreContext context, std::size_t maxVersions = defaultMaxVersions);

  // Where that memo's snapshots lie; any identifier makes a safe folder name.
  [[nodiscard]] std::filesystem::path identityDirectory(std::string_view memoId) const;

  // Keeps a snapshot of the memo on disk, with the attachments that `newMemo` lets go of, before
  // `newMemo` replaces it, and drops the snapshots beyond `maxVersions`. Nothing happens when there
  // is no file, nothing changes, or the memo has no identity. Through the gate; a failure means
  // that the memo must not be overwritten. Throws what reading and writing a memo throws.
  void saveIfNeeded(Day day, std::int64_t seqNumber, const Memo& newMemo) const;

  // Whether a name read from a file stays inside its folder.
  [[nodiscard]] static bool isSafeFilename(std::string_view name);

 private:
  void keepAttachments(Day day, const Memo& current, const Memo& newMemo) const;
  void prune(const std::filesystem::path& folder) const;

  StoreContext context_;
  MemoStore memoStore_;
  DataWriteCoordinator& writes_;
  std::size_t maxVersions_;
};

}  // namespace nomely
