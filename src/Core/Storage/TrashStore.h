#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Storage/DayStore.h"
#include "Core/Storage/MemoPlace.h"

namespace nomely {

// A memo in the trash: one folder `.trash/<trashSubdir>/`, in which lie the memo's file, meta.txt
// with the day and number that it had, and its attachments.
struct TrashEntry {
  Day originalDate;
  Memo memo;
  std::string trashSubdir;  // its identity

  friend bool operator==(const TrashEntry&, const TrashEntry&) = default;
};

// What emptying the trash destroys.
struct TrashContents {
  std::vector<TrashEntry> entries = {};
  std::vector<std::string> others = {};  // names in `.trash` that are no entries
  std::size_t attachmentFiles = 0;       // in the attachment trash
};

// Moves memos out of their day and back. A memo is always in its day or in the trash: trashing that
// fails is undone, and trashing that a crash cut short is finished by the next operation here.
// Stateless; safe on any thread. Besides what single calls name, operations throw FileError, and
// WriteError when the root is frozen.
class TrashStore {
 public:
  static constexpr const char* memoFileName = "memo.md";
  static constexpr const char* metaFileName = "meta.txt";
  static constexpr const char* attachmentsName = "attachments";

  explicit TrashStore(StoreContext context) : context_(std::move(context)), days_(context_) {}

  // Moves the memo and its files to the trash and returns the entry's folder name. Throws like
  // MemoStore::validateUnchanged.
  [[nodiscard]] std::string trashMemo(Day day, const Memo& memo) const;

  // Brings a memo back under its own number, or the next free one when another memo has that by
  // now, and returns the number. An attachment whose name another file has by now goes to the
  // attachment trash, which is logged. Throws WriteError (missingMemo) when the entry is gone.
  std::int64_t restoreMemo(const TrashEntry& entry) const;

  // By `time`, latest first. Folders that are no entries are passed over; a memo file that can't be
  // read shows as an empty memo. Never throws.
  [[nodiscard]] std::vector<TrashEntry> listTrash() const;
  // Whatever lies in `.trash`. Throws FileError when that can't be listed, or is a symbolic link.
  [[nodiscard]] TrashContents contents() const;
  // The entry in that folder. Without a usable meta.txt the memo's day and number are those of the
  // folder's name ("2026-03-01_007…"), else the day on which the memo was made, or today, and 0,
  // which stands for the day's next number. Absent when there is no such folder or its memo can't
  // be read.
  [[nodiscard]] std::optional<TrashEntry> entryNamed(const std::string& name) const;

  // Finishes trashings that a crash cut short by writing the missing meta.txt. A failure is logged,
  // and the next call tries again. In a synchronised root an entry that changed here within the
  // last day is left as it is: the rest of it may be on its way.
  void finishInterrupted() const;

  // Both go through `entries` in order and throw at the first failure; what was done stays done.
  // Deleting is for good and deletes the memos' versions too, but for those of a note that another
  // machine has brought back to its day.
  void deleteTrashEntries(const std::vector<TrashEntry>& entries) const;
  void restoreTrashEntries(const std::vector<TrashEntry>& entries) const;
  // Removes everything in the trash for good, the attachment trash included. Throws like contents.
  void emptyTrash() const;

  // What an entry's folder name says, "2026-03-01_007" or "2026-03-01_007_<more>".
  [[nodiscard]] static std::optional<MemoPlace> parseFolderName(std::string_view name);

 private:
  [[nodiscard]] std::filesystem::path pathOf(const std::string& trashSubdir) const;
  [[nodiscard]] std::filesystem::path makeFolder(Day day, std::int64_t seqNumber) const;
  // Throws when the folder of all trash is a symbolic link.
  [[nodiscard]] std::vector<DirectoryEntry> foldersOfTrash() const;
  [[nodiscard]] std::optional<TrashEntry> readEntry(const std::string& name) const;
  [[nodiscard]] bool mayBeOnItsWay(const std::filesystem::path& folder) const;
  // Brings one folder that was left half-way to the end. In the gate.
  void finish(const std::filesystem::path& folder) const;
  void writeMeta(const std::filesystem::path& folder, const MemoPlace& origin) const;
  void moveAttachments(const Memo& memo, Day day, const std::filesystem::path& folder) const;
  void undoTrashing(const Memo& memo, Day day, const std::filesystem::path& folder) const noexcept;
  std::int64_t restoreMemoFile(const TrashEntry& entry, const std::filesystem::path& folder) const;
  // `only`: the memo whose files alone are meant; null for all.
  void restoreAttachments(Day day, const std::filesystem::path& folder,
                          const Memo* only = nullptr) const;
  // Whether files lie beside the memo that aren't its own.
  [[nodiscard]] bool holdsOthers(const std::filesystem::path& folder) const;
  // Removes the memo and, unless others lie there, the folder with it.
  void removeEntry(const std::filesystem::path& folder) const;
  void deleteVersions(const TrashEntry& entry) const;
  [[nodiscard]] bool standsAgain(const TrashEntry& entry) const;

  StoreContext context_;
  DayStore days_;
};

}  // namespace nomely
