#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "AI/Writing/AIWritingAssistant.h"
#include "Core/Models/AudioTranscript.h"
#include "Editor/Intelligence/AIAccess.h"
#include "Editor/Intelligence/AIJobs.h"
#include "Platform/Concurrency/Observable.h"

namespace nomely {

// The AI actions of the quick input: they work on the text in its box. Main executor alone.
class InputAI {
 public:
  template <typename Value>
  using Property = Published<InputAI, Value>;

  // What lies beside the text until the memo is saved.
  struct PendingAttachments {
    std::vector<std::string> attachments;
    std::map<std::string, AudioTranscript> transcripts;
  };

  explicit InputAI(AIAccess access);

  // The box, which its view and these actions write.
  Observable<std::string> inputText;
  Observable<PendingAttachments> pending;

  Property<bool> isAIProcessing{false};
  Property<std::optional<std::string>> aiError;
  Property<std::optional<std::string>> aiStatusMessage;
  // What has to be said of the last reply besides: that it was cut off.
  Property<std::optional<std::string>> aiNotice;
  // The text that the first replacing action found, to go back to. When the user went on typing
  // during a later one, what the box held then is below it.
  Property<std::optional<std::string>> originalTextBeforeAI;
  Property<std::optional<PendingAttachments>> attachmentsSnapshotBeforeAI;

  // Nothing happens while one is under way, and without text for any but the greeting.
  void performAI(InputAIAction action);
  // Puts a result into the box. `sent` is the text that the action was given.
  void applyAIResult(const std::string& result, InputAIAction action, const std::string& sent);
  // For a box that was emptied or saved.
  void forgetOriginal();

 private:
  void keepOriginal(const std::string& sent);

  AIAccess access_;
  AIJobs jobs_;
};

}  // namespace nomely
