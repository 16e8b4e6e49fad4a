#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Models/Memo.h"
#include "Core/Storage/MemoPlace.h"
#include "Core/Storage/MemoStore.h"
#include "Core/Storage/StoreContext.h"
#include "Platform/Error.h"

namespace nomely {

struct VersionEntry {
  Uuid id = Uuid::random();  // drawn anew in each listing
  Moment timestamp;
  Memo memo;
  std::string filename;  // of the snapshot, relative to `.versions`
};

// The bytes of a memo file from before a write dropped something of it, such as a comment.
struct OriginalFile {
  Moment timestamp;      // of the rewriting
  std::string filename;  // relative to `.versions`
};

// Thrown when a snapshot names an attachment that no longer exists anywhere; nothing was changed.
class MissingAttachmentError : public Error {
 public:
  explicit MissingAttachmentError(const std::string& name);
};

// Snapshots of memos as they were before each change, filed under the memo's stable identity so
// that they follow it wherever it moves. Stateless; safe on any thread.
class VersionStore {
 public:
  static constexpr std::size_t defaultMaxVersions = 20;
  // Beside the snapshots, which don't say where their memo stood.
  static constexpr const char* placeFileName = "place.txt";

  explicit VersionStore(StoreContext context, std::size_t maxVersions = defaultMaxVersions);

  // Where that memo's snapshots lie; any identifier makes a safe folder name.
  [[nodiscard]] std::filesystem::path identityDirectory(std::string_view memoId) const;

  // To be called before `newMemo` replaces the memo on disk: keeps a snapshot of that, with the
  // attachments that `newMemo` no longer names, and drops the snapshots beyond `maxVersions`.
  // Nothing happens when there is no file, nothing changes, or the memo has no identity. Through
  // the gate; a failure means that the memo must not be overwritten. Throws what reading and
  // writing a memo throws.
  void saveIfNeeded(Day day, std::int64_t seqNumber, const Memo& newMemo) const;

  // Keeps the memo file as it is, under a name that is no snapshot's, if writing the memo again
  // would drop something of it: comments or header keys that we don't know. The same bytes are kept
  // once. Returns whether they are kept now. Through the gate; throws what reading the memo throws.
  bool keepOriginal(Day day, std::int64_t seqNumber, std::string_view memoId) const;
  // Keeps `content` in the same way, without the test whether writing would drop something.
  bool keepBytes(std::string_view memoId, std::string_view content, unsigned permissions) const;

  // A state of a memo that came from another machine.
  struct ForeignState {
    std::string_view content;  // of its file
    Moment written;            // which a list of the memo's versions shows
    unsigned permissions = 0600;
  };
  enum class Kept {
    asSnapshot,
    asOriginal,
    ofRemoval,  // a snapshot of its own, though its bytes be kept: see isOfRemoval
  };
  // Keeps it, under a name that is drawn from what it holds: every machine that keeps it makes the
  // same file. The same bytes are kept once, and nothing is dropped for them. Through the gate.
  void keepState(std::string_view memoId, const ForeignState& state, Kept as) const;
  // Whether a snapshot's name says that the memo was taken from a place where its text stood twice.
  [[nodiscard]] static bool isOfRemoval(std::string_view name);
  // Keeps a copy of that file among the attachments of the memo's snapshots. False when there is
  // another file of that name already. Through the gate.
  [[nodiscard]] bool keepAttachment(std::string_view memoId,
                                    const std::filesystem::path& file) const;

  // What keepOriginal kept of that memo, newest first; a folder that can't be listed has none.
  [[nodiscard]] std::vector<OriginalFile> originals(std::string_view memoId) const;
  // The bytes of one. Throws FileError.
  [[nodiscard]] std::string contentOf(const OriginalFile& original) const;

  // Where the memo stood when its newest snapshot was taken. Absent when that isn't known.
  [[nodiscard]] std::optional<MemoPlace> lastPlaceOf(std::string_view memoId) const;

  // The identities that begin with `prefix` and have snapshots, whether or not their memo still
  // exists.
  [[nodiscard]] std::vector<std::string> identities(std::string_view prefix) const;

  // Newest first. `memoId` absent: that of the memo on disk. Files that can't be read, or that are
  // another memo's, are passed over; snapshots of an earlier layout, in other folders of
  // `.versions`, are found too. Reads without the gate. Throws what reading the memo throws.
  [[nodiscard]] std::vector<VersionEntry> listVersions(
      Day day, std::int64_t seqNumber, const std::optional<std::string>& memoId) const;

  // Puts a snapshot in the memo's place, and the state that it replaces becomes a snapshot itself.
  // Attachments that the snapshot names and the day lacks are brought back; if one can't be found,
  // nothing is changed. Through the gate. Throws WriteError (identityChanged for a snapshot that is
  // not this memo's, conflict, missingMemo), MissingAttachmentError, and what reading and writing a
  // memo throws.
  void restore(Day day, std::int64_t seqNumber, const VersionEntry& version,
               const std::optional<Memo>& expected) const;

  // Puts a snapshot under that number, or the next one above it that is free: for a memo that is in
  // no day any more. Attachments that can be found are brought back. Returns the memo as written.
  // Through the gate; throws what reading and writing a memo throws.
  [[nodiscard]] Memo restoreVanished(const VersionEntry& version, Day day,
                                     std::int64_t seqNumber) const;

  // Removes every snapshot of the memo, and what keepOriginal kept, for good. Through the gate.
  void deleteAllVersions(Day day, std::int64_t seqNumber,
                         const std::optional<std::string>& memoId) const;

  // The time in a snapshot's file name: "1795235666.834093_9D0DBF25-….md" → 1795235666.834093.
  // Absent for any other name: such a file is no snapshot.
  [[nodiscard]] static std::optional<Moment> timestampOf(std::string_view fileName);

  // Whether `fileName` has the form of an original's: "1795235666.834093_9D0DBF25-….original".
  [[nodiscard]] static bool isOriginalName(std::string_view fileName);

  // Whether a name read from a file stays inside its folder.
  [[nodiscard]] static bool isSafeFilename(std::string_view name);

 private:
  // saveIfNeeded without dropping old snapshots; returns the snapshot's path when one was added.
  [[nodiscard]] std::optional<std::filesystem::path> keepSnapshot(Day day, std::int64_t seqNumber,
                                                                  const Memo& newMemo) const;
  void keepPlace(const std::filesystem::path& folder, const MemoPlace& place) const;
  void keepAttachments(Day day, const Memo& current, const Memo& newMemo) const;
  // A name that sorts as the newest of the folder.
  [[nodiscard]] std::string newestName(const std::filesystem::path& folder,
                                       std::string_view extension) const;
  // Drops the oldest snapshots beyond `maxVersions`, `added` never.
  void prune(const std::filesystem::path& added) const;
  [[nodiscard]] std::optional<std::string> identityOf(
      Day day, std::int64_t seqNumber, const std::optional<std::string>& memoId) const;
  [[nodiscard]] std::optional<VersionEntry> entryOf(const std::filesystem::path& file,
                                                    std::int64_t seqNumber,
                                                    std::string_view memoId) const;
  // The memo of a snapshot. Throws what reading a memo throws.
  [[nodiscard]] Memo read(const VersionEntry& version, std::int64_t seqNumber) const;
  // Throws WriteError (identityChanged) for a name that leads out of `.versions`.
  [[nodiscard]] std::filesystem::path fileBelowVersions(const std::string& filename) const;
  void bringBackAttachments(Day day, const Memo& restored) const;

  StoreContext context_;
  MemoStore memoStore_;
  std::size_t maxVersions_;
};

}  // namespace nomely
