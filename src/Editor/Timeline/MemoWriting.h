#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Core/Service/MemoService.h"
#include "Editor/Outcome.h"
#include "Editor/Timeline/EditorJobs.h"
#include "Editor/Timeline/SaveStatus.h"
#include "Editor/Timeline/TimelineListModel.h"
#include "Editor/Timeline/TimelineLoading.h"

namespace nomely {

// How a memo's change travels from the lists to the disk and back. Main executor alone.
class MemoWriting {
 public:
  // What the input field has collected.
  struct CompleteMemo {
    std::string body = {};
    std::vector<std::string> tags = {};
    std::optional<std::int64_t> mood = {};
    std::vector<std::string> attachments = {};
    std::map<std::string, AudioTranscript> transcripts = {};
    std::map<std::string, std::string> originalNames = {};
    Day date;
    std::map<std::string, Day> sourceDates = {};  // where attachments lie
    Day fallbackDate;                             // where those lie that it lacks
  };

  // Exactly one of the two; the memo as it was stored.
  using MemoCompletion = std::function<void(std::optional<Memo> memo, std::exception_ptr failure)>;
  using ImportCompletion = std::function<void(std::optional<AttachmentManager::ImportResult>)>;

  // What the parts of a model share; all must outlive this.
  struct Parts {
    TimelineListModel& list;
    TimelineLoading& loading;
    SaveStatus& status;
    EditorJobs& jobs;
  };
  MemoWriting(const MemoService& service, const Parts& parts);

  void saveMemoAsync(Memo memo, Day date, std::optional<Memo> expected, MemoCompletion completion);
  void updateMemo(Memo memo, std::optional<Day> date);
  void togglePinned(const Memo& memo, std::optional<Day> date);
  void toggleLockedOnTop(const Memo& memo, std::optional<Day> date);
  void createCompleteMemo(CompleteMemo content, MemoCompletion completion);
  void moveMemo(Memo memo, Day from, Day to);
  void importAttachment(const std::filesystem::path& file, std::optional<Day> date,
                        ImportCompletion completion);
  void importAttachmentToMemo(const std::filesystem::path& file, Memo memo,
                              std::optional<Day> date);

  // The memo as it was stored, where that isn't what it was written as and lists may not know yet.
  // On the save queue.
  [[nodiscard]] Memo asStored(const Memo& memo, Day date) const;

 private:
  using SharedMemo = std::shared_ptr<const Memo>;
  // How an update ended.
  struct Update {
    SharedMemo stored = {};  // null: failed
    std::string failure = {};
    SharedMemo onDisk = {};  // of a failed one; null: could not be read, or is gone
    bool isGone = false;
  };

  // On the save queue.
  [[nodiscard]] Memo commit(const Memo& written, Day date, std::optional<Memo> expected);
  [[nodiscard]] Update update(const Memo& memo, Day date, const SharedMemo& expected);

  void write(Memo memo, Day date, const SharedMemo& expected);
  // `leftLoad`: the load from whose list the memo was taken out at once, 0 when it was not.
  void finish(const SharedMemo& written, Day date, std::optional<std::size_t> leftLoad,
              const Update& update);
  void toggle(const Memo& memo, std::optional<Day> date, void (*change)(Memo&));
  [[nodiscard]] std::string timestamp() const;

  const MemoService& service_;
  AttachmentManager attachmentManager_;
  Parts parts_;

  // What was stored otherwise than it was written, by memoKey: a change made before the lists knew
  // goes on from what was written. On the save queue alone.
  struct Stored {
    Memo written;
    Memo stored;
  };
  std::map<std::string, Stored> storedOtherwise_;
};

}  // namespace nomely
