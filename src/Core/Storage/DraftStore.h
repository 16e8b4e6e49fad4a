#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Storage/Drafts.h"
#include "Core/Storage/MemoStore.h"
#include "Core/Storage/StoreContext.h"
#include "Core/Storage/StrandedDrafts.h"

namespace nomely {

// Text that was typed and not saved yet, so that it survives a crash: one draft of the quick input
// and one for each memo open in the focus editor, as JSON files in .drafts, and the folder for
// recordings under way.
//
// A file that can't be decoded is moved aside, under its name and ".corrupt-" and a number, before
// anything takes its place. Saving and clearing pass the gate and never throw: a failure is logged,
// since it must not interrupt typing. A draft that the root doesn't take waits in a folder of this
// machine, and where that fails in memory; a draft in the root that this store neither read nor
// wrote is another's, and stays. Safe on any thread; copies share what waits.
class DraftStore {
 public:
  // Names of files in .drafts, and what is put behind the name of one that can't be decoded.
  static constexpr std::string_view quickInputName = "quick-input.json";
  static constexpr std::string_view focusPrefix = "focus-";
  static constexpr std::string_view corruptMark = ".json.corrupt-";

  // `machineFolder` is where drafts wait for the root; empty: in memory alone.
  explicit DraftStore(StoreContext context, const std::filesystem::path& machineFolder = {});

  // Tries again with whatever waits. Returns whether every draft is on a disk, here or in the root.
  [[nodiscard]] bool keepAll() const;
  // Puts into the root what other stores left waiting for it, if it is there. A draft that stands
  // there in the meantime is kept as well: both become one, see DraftMerging. Never throws.
  void bringHome() const;

  // A draft without content clears the file. Returns whether it is on a disk, as below.
  bool saveQuickInputDraft(const QuickInputDraft& draft) const;
  // Absent when there is none, or it can't be decoded.
  [[nodiscard]] std::optional<QuickInputDraft> loadQuickInputDraft() const;
  void clearQuickInputDraft() const;

  // A draft that says what the memo on disk says is cleared instead; one whose memo is gone or
  // can't be read is kept.
  bool saveFocusDraft(const FocusMemoDraft& draft, Day date, std::int64_t seqNumber) const;
  // By `memoId`, else by the identity of the memo on disk, wherever the memo stood when the draft
  // was made. Absent when there is none, it can't be decoded, or is another memo's.
  [[nodiscard]] std::optional<FocusMemoDraft> loadFocusDraft(
      Day date, std::int64_t seqNumber, const std::optional<std::string>& memoId) const;
  void clearFocusDraft(Day date, std::int64_t seqNumber,
                       const std::optional<std::string>& memoId) const;

  // Where recordings under way lie; made when missing. Throws FileError, WriteError.
  [[nodiscard]] std::filesystem::path ensureRecordingsDir() const;

  // The names of all attachments and recordings that a draft needs. Absent when a draft or the
  // folder can't be read, so that nothing may be called orphaned.
  [[nodiscard]] std::optional<std::set<std::string>> pendingAttachmentReferences() const;

  // Drafts that could not be decoded: those moved aside, and those still in their place.
  [[nodiscard]] std::vector<std::filesystem::path> damagedDrafts() const;

 private:
  // What copies share.
  struct Shared;

  [[nodiscard]] std::filesystem::path fileOf(const std::string& name) const;
  [[nodiscard]] static std::string numberName(Day date, std::int64_t seqNumber);
  [[nodiscard]] static std::string identityName(std::string_view memoId);
  // Absent also when it can't be read.
  [[nodiscard]] std::optional<Memo> memoOnDisk(Day date, std::int64_t seqNumber) const;
  // The draft that was made before the memo on disk was given its identity, when it is that memo's.
  [[nodiscard]] std::optional<FocusMemoDraft> draftByNumber(Day date, std::int64_t seqNumber,
                                                            const std::optional<Memo>& memo) const;
  // The newest bytes of that draft, wherever they are.
  [[nodiscard]] std::optional<std::string> bytesOf(const std::string& name) const;
  bool put(const std::string& name, const std::string& bytes) const;
  // Again: unless something newer took its place.
  enum class Occasion { first, again };
  bool putIntoRoot(const std::string& name, const std::string& bytes, Occasion occasion) const;
  bool keepWaiting(const std::string& name, const std::string& bytes, Occasion occasion) const;
  enum class Which { inMemory, all };
  bool keepWaitingOnes(Which which) const;
  void lookAtRoot() const;
  void forget(const std::filesystem::path& waited) const;
  void clear(const std::string& name) const;
  // These run inside a write.
  [[nodiscard]] bool isAnothers(const std::string& name) const;
  void setAsideUndecodable(const std::filesystem::path& file) const;
  void takeIn(const StrandedDrafts::Draft& draft) const;

  StoreContext context_;
  MemoStore memos_;
  StrandedDrafts stranded_;
  std::shared_ptr<Shared> shared_;
};

}  // namespace nomely
