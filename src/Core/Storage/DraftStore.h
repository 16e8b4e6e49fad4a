#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Storage/Drafts.h"
#include "Core/Storage/MemoStore.h"
#include "Core/Storage/StoreContext.h"

namespace nomely {

// Text that was typed and not saved yet, so that it survives a crash: one draft of the quick input
// and one for each memo open in the focus editor, as JSON files in .drafts, and the folder for
// recordings under way.
//
// A file that can't be decoded is moved aside, under its name and ".corrupt-" and a number, before
// anything takes its place. Saving and clearing pass the gate and never throw: a failure is logged,
// since it must not interrupt typing. Stateless; safe on any thread.
class DraftStore {
 public:
  explicit DraftStore(StoreContext context) : context_(std::move(context)), memos_(context_) {}

  // A draft without content clears the file.
  void saveQuickInputDraft(const QuickInputDraft& draft) const;
  // Absent when there is none, or it can't be decoded.
  [[nodiscard]] std::optional<QuickInputDraft> loadQuickInputDraft() const;
  void clearQuickInputDraft() const;

  // A draft that says what the memo on disk says is cleared instead; one whose memo is gone or
  // can't be read is kept.
  void saveFocusDraft(const FocusMemoDraft& draft, Day date, std::int64_t seqNumber) const;
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
  [[nodiscard]] std::filesystem::path quickInputFile() const;
  [[nodiscard]] std::filesystem::path numberFile(Day date, std::int64_t seqNumber) const;
  [[nodiscard]] std::filesystem::path identityFile(std::string_view memoId) const;
  // Absent also when it can't be read.
  [[nodiscard]] std::optional<Memo> memoOnDisk(Day date, std::int64_t seqNumber) const;
  // The draft that was made before the memo on disk was given its identity, when it is that memo's.
  [[nodiscard]] std::optional<FocusMemoDraft> draftByNumber(Day date, std::int64_t seqNumber,
                                                            const std::optional<Memo>& memo) const;
  void put(const std::filesystem::path& file, const std::string& bytes) const;
  void clear(const std::filesystem::path& file) const;
  // Inside a write.
  void setAsideUndecodable(const std::filesystem::path& file) const;

  StoreContext context_;
  MemoStore memos_;
};

}  // namespace nomely
