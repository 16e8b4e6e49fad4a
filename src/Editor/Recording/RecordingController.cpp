#include "Editor/Recording/RecordingController.h"

#include <stdexcept>
#include <utility>

#include <fmt/format.h>

#include "Platform/Cancellation.h"

namespace nomely {

RecordingController::~RecordingController() {
  lifetime_.end();
  stop_.request_stop();
}

bool RecordingController::isIdle() const {
  return !isStarting_ && !isRecording.get() && !isTranscribing.get();
}

template <typename Work, typename Then, typename Failed>
void RecordingController::inBackground(Work work, Then then, Failed failed) {
  work_.async([&executor = context_.executor, work = std::move(work),
               then = lifetime_.guard(std::move(then)),
               failed = lifetime_.guard(std::move(failed))]() mutable {
    try {
      executor.post([then, result = work()]() mutable { then(std::move(result)); });
    } catch (const CancellationError&) {
      // Of the destructor: nobody is left to be told.
    } catch (const Error& error) {
      executor.post([failed, text = std::string(error.what())] { failed(text); });
    }
  });
}

void RecordingController::startRecording() {
  if (!isIdle()) return;
  if (!onRecordingsDir) throw std::logic_error("onRecordingsDir not set");
  isStarting_ = true;
  const auto onStatus = [&executor = context_.executor,
                         tell = lifetime_.guard([this](const CaptureStatus& status) {
                           endedByItself(status);
                         })](const CaptureStatus& status) {
    if (!status.failure.empty()) executor.post([tell, status] { tell(status); });
  };
  inBackground([&recorder = context_.recorder, folder = onRecordingsDir, device = context_.device,
                onStatus] { return recorder.startRecording(folder(), device, onStatus); },
               [this](const std::filesystem::path& file) { began(file); },
               [this](const std::string& text) {
                 isStarting_ = false;
                 report(text);
               });
}

void RecordingController::began(const std::filesystem::path& file) {
  isStarting_ = false;
  isRecording.set(true);
  isRecordingPaused.set(false);
  recordingSeconds.set(0);
  activeDraftRecordingPath.set(file.string());
  tick();
  draftChanged();
  if (std::exchange(isCancelledAtStart_, false)) return cancelRecording();
  // A device may be gone before this was told of its coming.
  if (const CaptureStatus status = context_.recorder.status(); !status.failure.empty())
    endedByItself(status);
}

void RecordingController::tick() {
  const auto next = lifetime_.guard([this] {
    if (!isRecording.get() || isRecordingPaused.get() || !timer_) return;
    recordingSeconds.set(recordingSeconds.get() + 1);
    tick();
  });
  timer_ = context_.timers.after(std::chrono::seconds(1),
                                 [&executor = context_.executor, next] { executor.post(next); });
}

void RecordingController::endedByItself(const CaptureStatus& status) {
  if (!isRecording.get()) return;
  report(fmt::format("录音中断：{}，已录下的部分会保存", status.failure));
  stopRecordingAndTranscribe();
}

void RecordingController::toggleRecordingPause() {
  isRecordingPaused.get() ? resumeRecording() : pauseRecording();
}

void RecordingController::pauseRecording() {
  if (!isRecording.get() || isRecordingPaused.get()) return;
  stopTimer();
  isRecordingPaused.set(true);
  work_.async([&recorder = context_.recorder] { recorder.pauseRecording(); });
}

void RecordingController::resumeRecording() {
  if (!isRecording.get() || !isRecordingPaused.get()) return;
  inBackground([&recorder = context_.recorder] { return recorder.resumeRecording(); },
               [this](bool goesOn) {
                 if (!goesOn) return report("无法继续录音");
                 if (!isRecording.get()) return;
                 isRecordingPaused.set(false);
                 tick();
               },
               [](const std::string&) {});
}

void RecordingController::stopRecordingAndTranscribe() {
  if (!isRecording.get()) return;
  if (!onImportFile) throw std::logic_error("onImportFile not set");
  stopTimer();
  isRecording.set(false);
  isRecordingPaused.set(false);
  isTranscribing.set(true);
  transcriptionStatus.set("正在保存录音...");
  inBackground(
      [&recorder = context_.recorder, import = onImportFile] {
        const std::filesystem::path file = recorder.stopRecording();
        try {
          return std::pair(file, import(file));
        } catch (...) {
          // Whoever looks for recordings left behind may have it.
          recorder.letGo();
          throw;
        }
      },
      [this](const std::pair<std::filesystem::path, std::string>& imported) {
        if (onImported) onImported(imported.second);
        draftChanged();
        transcribe(imported.first, imported.second);
      },
      [this](const std::string& text) {
        report(text);
        isTranscribing.set(false);
        transcriptionStatus.set(std::nullopt);
      });
}

void RecordingController::transcribe(const std::filesystem::path& file, const std::string& name) {
  const auto onProgress = [&executor = context_.executor,
                           show = lifetime_.guard([this](const TranscriptionProgress& progress) {
                             if (isTranscribing.get()) transcriptionStatus.set(progress.message());
                           })](const TranscriptionProgress& progress) {
    executor.post([show, progress] { show(progress); });
  };
  inBackground(
      [&recorder = context_.recorder, &transcriber = context_.transcriber, file, onProgress,
       stop = stop_.get_token()] {
        // The file is read before it goes; the draft names its copy by now.
        struct Discarding {
          explicit Discarding(AudioRecorder& of) : recorder(of) {}
          Discarding(const Discarding&) = delete;
          Discarding& operator=(const Discarding&) = delete;
          ~Discarding() { recorder.discardRecording(); }
          AudioRecorder& recorder;
        } const discarding(recorder);
        return transcriber.transcribeWithTimeline(file, onProgress, stop);
      },
      [this, name](const TranscriptionResult& result) { transcribed(result, name); },
      [this, name](const std::string& text) {
        report("录音已保存，转文字失败：" + text);
        if (onTranscriptReady) onTranscriptReady("", std::nullopt, name);
        becomeIdle();
      });
}

void RecordingController::transcribed(const TranscriptionResult& result, const std::string& name) {
  std::optional<AudioTranscript> transcript;
  if (!result.transcript.isEmpty()) transcript = result.transcript;
  if (onTranscriptReady) onTranscriptReady(result.text, transcript, name);
  if (result.failedSegmentCount > 0)
    report(fmt::format("录音已保存，已完成 {}/{} 段转写",
                       result.totalSegmentCount - result.failedSegmentCount,
                       result.totalSegmentCount));
  becomeIdle();
}

void RecordingController::becomeIdle() {
  isTranscribing.set(false);
  transcriptionStatus.set(std::nullopt);
  activeDraftRecordingPath.set(std::nullopt);
  draftChanged();
}

void RecordingController::cancelRecording() {
  isCancelledAtStart_ = isStarting_;
  if (!isRecording.get()) return;
  stopTimer();
  isRecording.set(false);
  isRecordingPaused.set(false);
  activeDraftRecordingPath.set(std::nullopt);
  inBackground(
      [&recorder = context_.recorder] {
        recorder.cancelRecording();
        return true;
      },
      [this](bool) { draftChanged(); },
      [this](const std::string& text) {
        report(text);
        draftChanged();
      });
}

}  // namespace nomely
