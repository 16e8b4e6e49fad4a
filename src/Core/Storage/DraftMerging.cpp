#include "Core/Storage/DraftMerging.h"

#include <algorithm>

#include "Core/Extensions/TagUtilities.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

std::string joined(const std::string& standing, const std::string& other) {
  if (standing.find(trimSpaceAndBreaks(other)) != std::string::npos) return standing;
  if (other.find(trimSpaceAndBreaks(standing)) != std::string::npos) return other;
  return standing + "\n\n" + other;
}

void join(std::optional<std::string>& standing, const std::optional<std::string>& other) {
  if (standing && other)
    standing = joined(*standing, *other);
  else if (other)
    standing = other;
}

void join(std::vector<std::string>& standing, const std::vector<std::string>& other) {
  for (const std::string& name : other)
    if (std::ranges::find(standing, name) == standing.end()) standing.push_back(name);
}

template <typename Value>
void join(std::map<std::string, Value>& standing, const std::map<std::string, Value>& other) {
  standing.insert(other.begin(), other.end());
}

template <typename Value>
void fill(std::optional<Value>& standing, const std::optional<Value>& other) {
  if (!standing) standing = other;
}

}  // namespace

QuickInputDraft DraftMerging::merged(QuickInputDraft standing, const QuickInputDraft& other) {
  standing.text = joined(standing.text, other.text);
  join(standing.originalTextBeforeAI, other.originalTextBeforeAI);
  if (standing.attachmentsSnapshotBeforeAI && other.attachmentsSnapshotBeforeAI) {
    join(standing.attachmentsSnapshotBeforeAI->attachments,
         other.attachmentsSnapshotBeforeAI->attachments);
    join(standing.attachmentsSnapshotBeforeAI->transcripts,
         other.attachmentsSnapshotBeforeAI->transcripts);
  }
  fill(standing.attachmentsSnapshotBeforeAI, other.attachmentsSnapshotBeforeAI);
  join(standing.pendingAttachmentDates, other.pendingAttachmentDates);
  join(standing.pendingAttachments, other.pendingAttachments);
  join(standing.pendingAudioTranscripts, other.pendingAudioTranscripts);
  join(standing.pendingOriginalNames, other.pendingOriginalNames);
  fill(standing.selectedMood, other.selectedMood);
  fill(standing.activeRecordingPath, other.activeRecordingPath);
  if (!standing.editingMemo) {
    standing.editingMemo = other.editingMemo;
    standing.editingMemoDate = other.editingMemoDate;
  }
  standing.updatedAt = std::max(standing.updatedAt, other.updatedAt);
  return standing;
}

FocusMemoDraft DraftMerging::merged(FocusMemoDraft standing, const FocusMemoDraft& other) {
  // What is kept about an AI action stands at the end of a body, and isn't for joining.
  standing.bodyText = MemoTextUtilities::editedBody(
      standing.bodyText, joined(MemoTextUtilities::textForEditing(standing.bodyText),
                                MemoTextUtilities::textForEditing(other.bodyText)));
  fill(standing.memoId, other.memoId);
  fill(standing.baseMemo, other.baseMemo);
  join(standing.tags, other.tags);
  standing.tags = TagUtilities::uniqueTags(standing.tags);
  fill(standing.mood, other.mood);
  join(standing.attachments, other.attachments);
  join(standing.audioTranscripts, other.audioTranscripts);
  join(standing.originalNames, other.originalNames);
  fill(standing.activeRecordingPath, other.activeRecordingPath);
  standing.updatedAt = std::max(standing.updatedAt, other.updatedAt);
  return standing;
}

}  // namespace nomely
