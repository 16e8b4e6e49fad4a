#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/DayStore.h"
#include "Core/Storage/DerivedIdentity.h"
#include "Core/Storage/TrashStore.h"
#include "Core/Storage/VersionStore.h"

namespace nomely {

// Everything that a user, the bot or an import does to notes. Each call is one write of the gate:
// it happens whole or not at all, keeps the older text in the note's history, never overwrites a
// change made elsewhere, and is announced to the search index. Blocking and stateless; any thread.
//
// Where writing a note would drop what another program wrote in its header, the file's bytes are
// kept beside its history first, and Notifications::originalKept is posted with the memo's
// identity.
//
// Calls return the memo as it stands, which may be more than was asked for: a note that another
// program wrote without an identity is given one before its first change, and a body loses the
// blank lines that reading drops. Go on with what is returned.
//
// Throws WriteError (missingMemo, identityChanged, conflict, maintenance), FileError, what reading
// a memo throws, and AttachmentManager::ImportError where files come in.
class MemoService {
 public:
  // What `source` says of notes that were typed here.
  static constexpr const char* typedHere = "nomely";
  // The tag of memos that are made of a recording alone.
  static constexpr const char* recordingTag = "语音";

  explicit MemoService(StoreContext context);

  [[nodiscard]] const StoreContext& context() const { return context_; }
  [[nodiscard]] const DayStore& days() const { return days_; }
  [[nodiscard]] const TrashStore& trashStore() const { return trash_; }
  [[nodiscard]] const VersionStore& versions() const { return versions_; }

  // Creates a memo with copies of `files` attached; the copies go again when it fails. The tags in
  // the text become tags. `content.source` absent: typed here.
  [[nodiscard]] Memo create(Day day, DayStore::NewMemo content,
                            const std::vector<std::filesystem::path>& files = {}) const;
  // The same where the files of `content.attachments` may lie on other days.
  [[nodiscard]] Memo create(DayStore::NewMemo content,
                            const AttachmentManager::PendingPlaces& places) const;

  // A file that is to be copied in.
  struct IncomingFile {
    std::filesystem::path path;
    // Of one whose own name says nothing.
    std::optional<std::string> extension = {};
    std::optional<std::string> originalName = {};  // empty: the memo tells none
    std::optional<AudioTranscript> transcript = {};
  };
  // Creates a memo as it was received elsewhere: its tags are those of `content` alone.
  [[nodiscard]] Memo receive(Day day, DayStore::NewMemo content,
                             const std::vector<IncomingFile>& files) const;

  // Puts a memo of elsewhere in as one more of that day: all of it but its number and its identity,
  // which may stand here already. `files` are to be copied in, by the names that the memo has for
  // them.
  [[nodiscard]] Memo receiveCopy(Day day, const Memo& memo,
                                 const std::map<std::string, std::filesystem::path>& files) const;

  // Replaces the memo that has `memo.seqNumber`; with `expected` only if that is still what is
  // stored.
  Memo commit(Day day, const Memo& memo, const std::optional<Memo>& expected) const;

  // Applies `change` to `original`, which has to be what is stored, and sets `updatedAt`. A change
  // that alters nothing writes nothing.
  Memo change(Day day, const Memo& original, const std::function<void(Memo&)>& change) const;
  // Gives it that text in place of the one that an editor shows: a comment with the text from
  // before an AI action stays. The tags in the text become tags; none is taken off.
  Memo edit(Day day, const Memo& original, std::string_view text) const;
  // Adds a paragraph to the end of that text.
  Memo append(Day day, const Memo& original, std::string_view paragraph) const;

  // Adds copies of `files`; they go again when it fails.
  Memo attach(Day day, const Memo& original, const std::vector<std::filesystem::path>& files) const;
  // Takes the names off with all that is kept about them. A file that no other memo of the day
  // names goes to the attachment trash, unless one of those memos can't be read; the snapshot keeps
  // a copy.
  Memo detach(Day day, const Memo& original, const std::vector<std::string>& filenames) const;

  // Gives the memo the next number of another day. Its file goes as it is.
  Memo move(Day from, const Memo& memo, Day to) const;

  // The trash. Each of these first finishes what a process that died left half-way there.
  TrashEntry trash(Day day, const Memo& memo) const;
  [[nodiscard]] std::vector<TrashEntry> trashed() const;
  [[nodiscard]] TrashContents trashContents() const;
  // Returns where the memo stands by then.
  MemoPlace restore(const TrashEntry& entry) const;
  void destroy(const std::vector<TrashEntry>& entries) const;
  void emptyTrash() const;

  // For changes of many memos that are no one's edit, so `updatedAt` stays: `rewrite` changes the
  // memo that has that number by now, or returns false to leave it as it is. Absent when it was
  // left, or is gone.
  std::optional<Memo> rewrite(Day day, std::int64_t seqNumber,
                              const std::function<bool(Memo&)>& rewrite) const;

  // Puts `upgraded`, which has an identity, in the place of `original`, which has to be what is
  // stored: the same note with a header of today's form. Takes no snapshot and posts nothing.
  void upgrade(Day day, const Memo& original, const Memo& upgraded) const;

  // Puts a snapshot in the memo's place. The state that it replaces becomes a snapshot itself.
  Memo restoreVersion(Day day, const Memo& original, const VersionEntry& version) const;
  // Puts a snapshot of a memo that stands nowhere, or can't be read, into a file of its own: in its
  // old place if that is free, else under the next number of that day, of the unreadable file's, or
  // of the one on which the memo was made. An unreadable file is left as it is. Throws InTrashError
  // for a memo that lies in the trash.
  struct Restored {
    Day day;
    Memo memo;
  };
  Restored restoreVanished(const VersionEntry& version) const;

  // The memo has to be restored from the trash first: a second one would share its history.
  class InTrashError : public Error {
   public:
    explicit InTrashError(const std::string& trashSubdir);
  };

  // The identity of what the program makes by itself on that day: another machine gives it the same
  // (DerivedIdentity), unless a note that was made of the same once has it by now.
  [[nodiscard]] std::string identityFor(Day day, std::string_view kind,
                                        DerivedIdentity::Parts parts) const;
  // Where a note of that identity stands, or the first that may; absent where none does. Reads the
  // notes of all days. Throws FileError.
  [[nodiscard]] std::optional<MemoPlace> placeOf(const std::string& memoId) const;
  // The memo of that identity that lies in the trash, in a folder whose name begins with `prefix`.
  // Throws FileError.
  [[nodiscard]] std::optional<Memo> trashedMemo(const std::string& memoId,
                                                const std::string& prefix = {}) const;
  // Of a note that has none in its file. Throws FileError.
  [[nodiscard]] std::string identityOfNameless(Day day, std::int64_t seqNumber) const;

  // Makes a memo file readable that is not for its line ends, a byte order mark or a missing
  // header; its bytes as they were are kept beside its history. Absent when it can be read, or
  // can't be mended like that.
  std::optional<Memo> mend(Day day, std::int64_t seqNumber) const;
  // What mend would do: a Chinese phrase for each kind of fault.
  [[nodiscard]] std::vector<std::string> mendsOf(Day day, std::int64_t seqNumber) const;

  // Adds the tags that stand in `text` to `tags`.
  static void addTagsIn(std::string_view text, std::vector<std::string>& tags);

 private:
  [[nodiscard]] bool isTaken(const std::string& memoId, Day day) const;
  // The newest day with a file that can't be read and has the identity in its text.
  [[nodiscard]] std::optional<Day> dayOfUnreadable(const std::string& memoId) const;
  [[nodiscard]] MemoPlace placeFor(const VersionEntry& version, const std::string& memoId) const;
  struct Broken;
  [[nodiscard]] std::optional<Broken> broken(Day day, std::int64_t seqNumber) const;
  // Makes the note ready for being written over by `changed`, which gets its identity: a note
  // without one is given it first, and what we would drop of its file is kept.
  void adopt(Day day, const Memo& current, Memo& changed) const;
  void keepOriginal(Day day, std::int64_t seqNumber, const std::string& memoId) const;
  // Imports the files and lets `save` write the memo that names them; the copies go again when it
  // throws.
  Memo withImported(Day day, const std::vector<IncomingFile>& files,
                    const std::function<Memo(const std::function<void(Memo&)>& name)>& save) const;
  void takeBack(const std::vector<AttachmentManager::ImportResult>& imported,
                Day day) const noexcept;

  StoreContext context_;
  DayStore days_;
  AttachmentManager attachments_;
  VersionStore versions_;
  TrashStore trash_;
};

}  // namespace nomely
