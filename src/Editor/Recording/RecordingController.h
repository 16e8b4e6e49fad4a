#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>

#include "AI/Transcription/SpeechTranscriber.h"
#include "AI/Voice/AudioRecorder.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/Observable.h"
#include "Platform/Concurrency/SerialQueue.h"
#include "Platform/Concurrency/Timers.h"

namespace nomely {

// A recording for an input box: start, pause, stop, cancel; then the file becomes an attachment and
// its speech text. While it is not idle the input box refuses to submit, with `busyText`.
//
// Lives on the main executor, and so do its calls, properties and callbacks but for the two that
// say otherwise; nothing blocks it. Destruction stops a transcription and keeps a recording's file.
class RecordingController {
 public:
  static constexpr auto busyText = "请先结束录音并等待转写完成，草稿会保留。";

  // What is referred to must outlive the controller.
  struct Context {
    AudioRecorder& recorder;
    SpeechTranscriber& transcriber;
    MainExecutor& executor;
    Timers& timers;
    std::string device = AudioRecorder::usualDevice;
  };

  explicit RecordingController(Context context) : context_(std::move(context)) {}
  ~RecordingController();
  RecordingController(const RecordingController&) = delete;
  RecordingController& operator=(const RecordingController&) = delete;

  Published<RecordingController, bool> isRecording{false};
  Published<RecordingController, bool> isRecordingPaused{false};
  Published<RecordingController, bool> isTranscribing{false};
  Published<RecordingController, std::optional<std::string>> transcriptionStatus;
  Published<RecordingController, int> recordingSeconds{0};
  // What the draft has to keep, so that a crash loses nothing.
  Published<RecordingController, std::optional<std::string>> activeDraftRecordingPath;

  // Both are needed and may throw Error. They run on a background thread.
  std::function<std::filesystem::path()> onRecordingsDir;
  // Copies the recording into a day and returns the attachment's name.
  std::function<std::string(const std::filesystem::path& recording)> onImportFile;
  // The draft has to name that attachment from here on: until then the recording's own file stays.
  // `onDraftSaved` follows.
  std::function<void(const std::string& name)> onImported;
  // The text is empty when there is none; the recording belongs to the memo all the same.
  std::function<void(const std::string& text, const std::optional<AudioTranscript>& transcript,
                     const std::string& name)>
      onTranscriptReady;
  std::function<void(const std::string& message)> onError;
  // What this object says of the draft has changed.
  std::function<void()> onDraftSaved;

  // Nothing happens unless idle.
  void startRecording();
  void openRecordingPopover() { startRecording(); }
  // The following do nothing unless recording.
  void toggleRecordingPause();
  void pauseRecording();
  void resumeRecording();
  void finishRecordingRequest() { stopRecordingAndTranscribe(); }
  void stopRecordingAndTranscribe();
  // Also one that is about to begin.
  void cancelRecording();

 private:
  [[nodiscard]] bool isIdle() const;
  // Runs `work` after the work that was begun before, then `then` with what it returned, or
  // `failed` with the text of what it threw.
  template <typename Work, typename Then, typename Failed>
  void inBackground(Work work, Then then, Failed failed);
  void began(const std::filesystem::path& file);
  void tick();
  void stopTimer() { timer_.reset(); }
  void endedByItself(const CaptureStatus& status);
  void transcribe(const std::filesystem::path& file, const std::string& name);
  void transcribed(const TranscriptionResult& result, const std::string& name);
  void becomeIdle();
  void report(const std::string& message) const {
    if (onError) onError(message);
  }
  void draftChanged() const {
    if (onDraftSaved) onDraftSaved();
  }

  Context context_;
  bool isStarting_ = false;
  bool isCancelledAtStart_ = false;
  Timers::Timer timer_;
  std::stop_source stop_;
  Lifetime lifetime_;
  SerialQueue work_{"com.nomely.recording"};
};

}  // namespace nomely
