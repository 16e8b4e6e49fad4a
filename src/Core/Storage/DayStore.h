#pragma once

#include <chrono>
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
    // By who knows the day's next number and saves the look; taken ones are passed over. Absent:
    // nextSeqNumber.
    std::optional<std::int64_t> nextNumber = {};
    // Of what the program makes by itself, so that another machine makes the same. Absent: an
    // identity of its own, made now.
    std::optional<std::string> memoId = {};
    std::optional<Moment> made = {};
  };

  explicit DayStore(StoreContext context);

  [[nodiscard]] const StoreContext& context() const { return context_; }
  [[nodiscard]] const DiskPaths& paths() const { return context_.paths; }
  [[nodiscard]] const MemoStore& memoStore() const { return memoStore_; }
  [[nodiscard]] DataWriteCoordinator& writes() const { return context_.gate; }

  // Highest number first. A file that can't be read is logged and left out.
  [[nodiscard]] std::vector<Memo> listMemos(Day day) const;
  // The numbers of the day's memo files in ascending order, those of unreadable files included.
  [[nodiscard]] std::vector<std::int64_t> listNumbers(Day day) const;
  // The two steps of listMemos, for callers that have listed the day's folder already.
  [[nodiscard]] static std::vector<std::int64_t> numbersIn(
      const std::vector<DirectoryEntry>& folder);
  [[nodiscard]] std::vector<Memo> readMemos(Day day, std::vector<std::int64_t> numbers) const;

  // One more than the highest number in use: 1, 2, 7 → 8. Unreadable files count.
  [[nodiscard]] std::int64_t nextSeqNumber(Day day) const;

  // The days whose names stand in the root, in ascending order: quick, as nothing is looked into.
  // Throws FileError.
  [[nodiscard]] std::vector<Day> namedDays() const;
  // The days that have a folder, in ascending order, whatever is in it.
  [[nodiscard]] std::vector<Day> dayFolders() const;
  // The days that hold a file with extension "md", in ascending order.
  [[nodiscard]] std::vector<Day> listAllDates() const;

  // Writes a memo under the day's next number and returns it. When another program takes that
  // number meanwhile, the one after it is used.
  [[nodiscard]] Memo createMemo(Day day, NewMemo content) const;
  // The same with all that `memo` holds but its number and its identity.
  [[nodiscard]] Memo createCopy(Day day, Memo memo) const;

  // Both replace the memo at `memo.seqNumber`; commitMemo keeps a snapshot of what it replaces.
  // Throw WriteError: missingMemo, identityChanged when another memo has that place, conflict when
  // `expected` is given and differs from the memo on disk.
  void updateMemo(const Memo& memo, Day day, const std::optional<Memo>& expected) const;
  void commitMemo(const Memo& memo, Day day, const std::optional<Memo>& expected) const;
  // The check that both begin with: throws instead of changing anything.
  void validateUpdate(const Memo& memo, Day day, const std::optional<Memo>& expected) const {
    (void)memoStore_.validateUpdate(memo, day, expected);
  }

  // Destroys the memo and then the files it names, even those that other memos name too; nothing
  // goes to the trash. For what a user deletes there is TrashStore::trashMemo.
  void deleteMemo(Day day, const Memo& memo) const;

  // Gives the memo the next number of another day, attachments and all, and returns it as it is
  // there. Its file goes as it is, permissions and what we don't read included. Files that no other
  // memo of the old day names go to the attachment trash, unless one of those memos can't be read.
  // Until the old file goes both stand, so that a failure leaves the memo twice rather than not at
  // all. A failure to list the old day is reported when the move has happened.
  [[nodiscard]] Memo moveMemo(const Memo& memo, Day from, Day to) const;
  // The new file's time is later than the old one's by more than this, which file systems may round
  // away: should both be seen, it tells which of them the note has been moved to.
  static constexpr std::chrono::seconds distinctTimes{2};

  // Moves those of the files that no memo of the day names to the attachment trash; none of them
  // when a memo of the day can't be read. A file that can't be moved is logged. Throws FileError
  // when the day can't be listed.
  void trashUnnamedFiles(const std::vector<std::string>& names, Day day) const;

  // The attachments that the memos of a day name; absent when one of them can't be read. Throws
  // FileError when the day can't be listed.
  [[nodiscard]] std::optional<std::set<std::string>> filesNamed(Day day) const;

 private:
  // Raises `memo.seqNumber` until `create` succeeds, as it does at a free number.
  template <typename Create>
  void place(Memo& memo, Day day, Create create) const;
  // Undoes a move: removes the memo's new file when its old one still exists. Never throws.
  void withdraw(const Memo& moved, Day to, const std::filesystem::path& oldFile) const;
  // Makes a file's time distinctly later than `former`.
  void dateAfter(Moment former, const std::filesystem::path& file) const;

  StoreContext context_;
  MemoStore memoStore_;
};

}  // namespace nomely
