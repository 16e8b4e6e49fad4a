#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Models/Memo.h"
#include "Core/Storage/MemoStore.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

// The memos of a day, and the operations on them that hold the gate from first to last. Stateless;
// safe on any thread. Besides what single calls name, operations throw FileError, and writes throw
// WriteError when the root is frozen.
class DayStore {
 public:
  // What the caller of createMemo decides.
  struct NewMemo {
    std::string body = {};
    std::vector<std::string> tags = {};
    std::optional<std::int64_t> mood = {};
    std::vector<std::string> attachments = {};  // names that lie in the day folder already
    std::optional<std::string> time = {};       // "HH:mm"; absent: now
    std::optional<std::string> source = {};
    std::optional<std::string> sourceId = {};
    std::map<std::string, std::string> originalNames = {};
    std::map<std::string, AudioTranscript> audioTranscripts = {};
  };

  // A memo in the trash: one folder `.trash/<trashSubdir>/`, in which lie the memo's file, one that
  // tells where it was, and its attachments.
  struct TrashEntry {
    static constexpr const char* memoFileName = "memo.md";
    static constexpr const char* metaFileName = "meta.txt";
    static constexpr const char* attachmentsName = "attachments";

    Day originalDate;
    Memo memo;
    std::string trashSubdir;  // its identity

    friend bool operator==(const TrashEntry&, const TrashEntry&) = default;
  };

  explicit DayStore(StoreContext context);

  [[nodiscard]] const StoreContext& context() const { return context_; }
  [[nodiscard]] const DiskPaths& paths() const { return context_.paths; }
  [[nodiscard]] const MemoStore& memoStore() const { return memoStore_; }
  [[nodiscard]] DataWriteCoordinator& writes() const { return writes_; }

  // Highest number first. A file that can't be read is logged and left out.
  [[nodiscard]] std::vector<Memo> listMemos(Day day) const;
  // The numbers behind that list in rising order, unreadable memos included.
  [[nodiscard]] std::vector<std::int64_t> listNumbers(Day day) const;
  // The two steps of listMemos, for callers that have listed the day's folder already.
  [[nodiscard]] static std::vector<std::int64_t> numbersIn(
      const std::vector<DirectoryEntry>& folder);
  [[nodiscard]] std::vector<Memo> readMemos(Day day, std::vector<std::int64_t> numbers) const;

  // One more than the highest number in use, gaps and unreadable files notwithstanding.
  [[nodiscard]] std::int64_t nextSeqNumber(Day day) const;

  // The days that hold a file with extension "md", rising.
  [[nodiscard]] std::vector<Day> listAllDates() const;

  // Takes the day's next number. A number that another program takes meanwhile is passed over.
  [[nodiscard]] Memo createMemo(Day day, NewMemo content) const;

  // Both replace the memo at `memo.seqNumber`; commitMemo keeps a snapshot of what it replaces.
  // Throw WriteError: missingMemo, identityChanged when another memo has that place, conflict when
  // `expected` is given and differs from the memo on disk.
  void updateMemo(const Memo& memo, Day day, const std::optional<Memo>& expected) const;
  void commitMemo(const Memo& memo, Day day, const std::optional<Memo>& expected) const;
  // The check in front of both: throws instead of changing anything.
  void validateUpdate(const Memo& memo, Day day, const std::optional<Memo>& expected) const;
  // The check in front of what takes a memo as it was read: throws like validateUpdate with `memo`
  // as what is expected. Where transcript segments make every two readings unequal, what is stored
  // is compared instead.
  void validateUnchanged(const Memo& memo, Day day) const;

  // Removes the memo and then the files it names, for good, whoever else names them.
  void deleteMemo(Day day, const Memo& memo) const;

  // Gives the memo the next number of another day, attachments and all, and returns it as it is
  // there. Files that no other memo of the old day names go to the attachment trash, unless one of
  // those memos can't be read. Until the old file goes both stand, so that a failure leaves the
  // memo twice rather than not at all. A failure to list the old day is reported when the move has
  // happened.
  [[nodiscard]] Memo moveMemo(const Memo& memo, Day from, Day to) const;

  // Trashes those of the files that no memo of the day names, none when that is not certain. A
  // file that can't be moved is logged. Throws FileError when the day can't be listed.
  void trashUnnamedFiles(const std::vector<std::string>& names, Day day) const;

  // Moves the memo and its files to the trash and returns the entry's folder name. Throws like
  // validateUnchanged.
  [[nodiscard]] std::string trashMemo(Day day, const Memo& memo) const;
  // Brings a memo back under its own number, or the next free one when that was given away. A file
  // whose name was given away goes to the attachment trash, which is logged. Throws WriteError
  // (missingMemo) when the entry is gone.
  void restoreMemo(const TrashEntry& entry) const;
  // What the second of an entry's files says, "2026-03-01,7"; absent when it says something else.
  struct TrashOrigin {
    Day date;
    std::int64_t seqNumber;
  };
  [[nodiscard]] static std::optional<TrashOrigin> parseTrashMeta(std::string_view text);
  // By `time`, latest first. Folders that are no entries are passed over; a memo file that can't be
  // read shows as an empty memo. Never throws.
  [[nodiscard]] std::vector<TrashEntry> listTrash() const;
  // Both in order, ending with the first failure; what was done stays done. Deleting is for good
  // and takes the memos' versions along.
  void deleteTrashEntries(const std::vector<TrashEntry>& entries) const;
  void restoreTrashEntries(const std::vector<TrashEntry>& entries) const;
  // Removes everything in the trash for good, the attachment trash included.
  void emptyTrash() const;

 private:
  // Writes a memo under `memo.seqNumber` or the next free number above it.
  void place(Memo& memo, Day day) const;
  // Takes a moved memo's new file away again, never throwing, when its old one still stands.
  void withdraw(const Memo& moved, Day to, const std::filesystem::path& oldFile) const;
  // The attachments that the memos of a day name; absent when one of them can't be read.
  [[nodiscard]] std::optional<std::set<std::string>> filesNamed(Day day) const;

  [[nodiscard]] std::filesystem::path makeTrashFolder(Day day, std::int64_t seqNumber) const;
  [[nodiscard]] std::filesystem::path trashFolderOf(const TrashEntry& entry) const;
  void restoreMemoFile(const TrashEntry& entry, const std::filesystem::path& folder) const;
  void restoreAttachments(const TrashEntry& entry, const std::filesystem::path& folder) const;
  void deleteVersions(const TrashEntry& entry) const;

  StoreContext context_;
  MemoStore memoStore_;
  DataWriteCoordinator& writes_;
};

}  // namespace nomely
