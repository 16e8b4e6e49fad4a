#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Models/Memo.h"
#include "Core/Storage/MemoStore.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

struct VersionEntry {
  Uuid id = Uuid::random();  // drawn anew in each listing
  Moment timestamp;
  Memo memo;
  std::string filename;  // of the snapshot, relative to `.versions`
};

// A snapshot names an attachment that is no longer anywhere; nothing was changed.
class MissingAttachmentError : public Error {
 public:
  explicit MissingAttachmentError(const std::string& name);
};

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

  // Newest first. `memoId` absent: that of the memo on disk. Files that can't be read, or that are
  // another memo's, are passed over; snapshots of an earlier layout, in other folders of
  // `.versions`, are found too. Reads without the gate. Throws what reading the memo throws.
  [[nodiscard]] std::vector<VersionEntry> listVersions(
      Day day, std::int64_t seqNumber, const std::optional<std::string>& memoId) const;

  // Puts a snapshot in the memo's place, and the state that it replaces becomes a snapshot itself.
  // Attachments that the snapshot names and the day lacks come back; one that is nowhere stops it.
  // Through the gate. Throws WriteError (identityChanged for a snapshot that is not this memo's,
  // conflict, missingMemo), MissingAttachmentError, and what reading and writing a memo throws.
  void restore(Day day, std::int64_t seqNumber, const VersionEntry& version,
               const std::optional<Memo>& expected) const;

  // Removes every snapshot of the memo, for good. Through the gate.
  void deleteAllVersions(Day day, std::int64_t seqNumber,
                         const std::optional<std::string>& memoId) const;

  // The time that a snapshot's file name tells, "1795235666.834093_9D0DBF25-….md"; absent when it
  // is no such name, and the file then no snapshot.
  [[nodiscard]] static std::optional<Moment> timestampOf(std::string_view fileName);

  // Whether a name read from a file stays inside its folder.
  [[nodiscard]] static bool isSafeFilename(std::string_view name);

 private:
  // saveIfNeeded without dropping any; the folder of the snapshots when one was added.
  [[nodiscard]] std::optional<std::filesystem::path> keepSnapshot(Day day, std::int64_t seqNumber,
                                                                  const Memo& newMemo) const;
  void keepAttachments(Day day, const Memo& current, const Memo& newMemo) const;
  void prune(const std::filesystem::path& folder) const;
  [[nodiscard]] std::optional<std::string> identityOf(
      Day day, std::int64_t seqNumber, const std::optional<std::string>& memoId) const;
  [[nodiscard]] std::optional<VersionEntry> entryOf(const std::filesystem::path& file,
                                                    std::int64_t seqNumber,
                                                    std::string_view memoId) const;
  [[nodiscard]] std::filesystem::path snapshotFile(const VersionEntry& version) const;
  void bringBackAttachments(Day day, const Memo& restored) const;

  StoreContext context_;
  MemoStore memoStore_;
  DataWriteCoordinator& writes_;
  std::size_t maxVersions_;
};

}  // namespace nomely
