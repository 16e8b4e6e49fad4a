#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Core/Models/Memo.h"

namespace nomely {

// The files that a text had before an AI action replaced it.
struct AttachmentsSnapshot {
  std::vector<std::string> attachments = {};
  std::map<std::string, AudioTranscript> transcripts = {};
};

// What stands in the quick input.
struct QuickInputDraft {
  std::string text = {};
  std::optional<std::string> originalTextBeforeAI = {};
  std::optional<AttachmentsSnapshot> attachmentsSnapshotBeforeAI = {};
  std::map<std::string, Day> pendingAttachmentDates = {};  // in whose folders they lie
  std::vector<std::string> pendingAttachments = {};
  std::map<std::string, AudioTranscript> pendingAudioTranscripts = {};
  std::map<std::string, std::string> pendingOriginalNames = {};
  std::optional<std::int64_t> selectedMood = {};
  Day selectedDate = Day({});
  std::optional<std::string> activeRecordingPath = {};
  std::optional<Memo> editingMemo = {};
  std::optional<Day> editingMemoDate = {};
  Moment updatedAt = {};  // kept to the second

  // Whether there is anything that would be missed.
  [[nodiscard]] bool hasContent() const;
};

// What the focus editor makes of a memo.
struct FocusMemoDraft {
  std::optional<std::string> memoId = {};
  std::optional<Memo> baseMemo = {};  // as it stood when editing began
  std::string bodyText = {};
  std::vector<std::string> tags = {};
  std::optional<std::int64_t> mood = {};
  std::vector<std::string> attachments = {};
  std::map<std::string, AudioTranscript> audioTranscripts = {};
  std::map<std::string, std::string> originalNames = {};
  std::optional<std::string> activeRecordingPath = {};
  Moment updatedAt = {};  // kept to the second
};

}  // namespace nomely
