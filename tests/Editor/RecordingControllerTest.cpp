#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include "Editor/Recording/RecordingController.h"
#include "Platform/Audio/MediaFile.h"
#include "Platform/Concurrency/RunLoop.h"
#include "Support/ManualTimers.h"
#include "Support/Sound.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Hears the same in each piece of sound, or what `fails` says.
class ScriptedRecognizer final : public SpeechRecognizer {
 public:
  [[nodiscard]] bool isAvailable() const override { return true; }
  [[nodiscard]] Recognition recognize(const std::filesystem::path&,
                                      const std::stop_token&) override {
    if (!failure.empty())
      throw TranscriberError(TranscriberError::Kind::recognitionFailed, failure);
    Recognition heard{.text = "你好", .segments = {{}}};
    heard.segments[0].text = "你好";
    return heard;
  }
  std::string failure;
};

class RecordingControllerTest : public testing::Test {
 protected:
  RecordingControllerTest() {
    controller->onRecordingsDir = [this] { return recordings.path(); };
    controller->onImportFile = [this](const std::filesystem::path& file) {
      if (!importFailure.empty()) throw Error("test", importFailure);
      std::filesystem::copy_file(file, home.path() / "a.m4a");
      return std::string("a.m4a");
    };
    controller->onImported = [this](const std::string& name) { log.push_back("imported " + name); };
    controller->onTranscriptReady = [this](const std::string& text,
                                           const std::optional<AudioTranscript>& transcript,
                                           const std::string& name) {
      log.push_back("ready " + text + (transcript ? "+" : "-") + name);
    };
    controller->onError = [this](const std::string& message) { log.push_back(message); };
    controller->onDraftSaved = [this] {
      log.push_back(controller->activeDraftRecordingPath.get() ? "draft+" : "draft-");
    };
  }

  template <typename Done>
  void await(Done done) {
    ASSERT_TRUE(loop.runUntil(done, std::chrono::seconds(20)));
  }
  void start() {
    controller->openRecordingPopover();
    await([this] { return controller->isRecording.get(); });
    microphone.play(2);
  }
  void finish() {
    controller->finishRecordingRequest();
    EXPECT_TRUE(controller->isTranscribing.get());
    EXPECT_EQ(controller->transcriptionStatus.get(), "正在保存录音...");
    await([this] { return !controller->isTranscribing.get(); });
    EXPECT_EQ(controller->transcriptionStatus.get(), std::nullopt);
  }

  TemporaryFolder home;
  TemporaryFolder recordings;
  PlayedMicrophone microphone{home.path()};
  ManualClock clock;
  ManualTimers timers{clock};
  RunLoop loop;
  std::unique_ptr<AudioCapture> capture = makeAudioCapture();
  AudioRecorder recorder{*capture, clock};
  std::shared_ptr<ScriptedRecognizer> recognizer = std::make_shared<ScriptedRecognizer>();
  SpeechTranscriber transcriber{recognizer, home.path()};
  std::unique_ptr<RecordingController> controller = std::make_unique<RecordingController>(
      RecordingController::Context{.recorder = recorder,
                                   .transcriber = transcriber,
                                   .executor = loop,
                                   .timers = timers,
                                   .device = PlayedMicrophone::name});
  std::string importFailure;
  std::vector<std::string> log;
};

TEST_F(RecordingControllerTest, RecordingBecomesAttachmentAndText) {
  std::vector<std::string> statuses;
  const auto subscription = controller->transcriptionStatus.observe(
      [&](const std::optional<std::string>& status) { statuses.push_back(status.value_or("-")); });
  start();
  EXPECT_EQ(controller->activeDraftRecordingPath.get(),
            recordings.path() / "voice_2026-03-01_093005.m4a");
  finish();
  EXPECT_THAT(log, ElementsAre("draft+", "imported a.m4a", "draft+", "ready 你好+a.m4a", "draft-"));
  EXPECT_THAT(statuses, ElementsAre("正在保存录音...", "正在转文字...", "-"));
  EXPECT_TRUE(std::filesystem::is_empty(recordings.path()));
  EXPECT_GT(MediaFile::duration(home.path() / "a.m4a", {}), 1.0);
}

TEST_F(RecordingControllerTest, SecondsStandStillWhilePaused) {
  const auto pass = [this](int seconds) {
    for (int i = 0; i < seconds; ++i) {
      timers.advance(std::chrono::seconds(1));
      loop.runUntil([] { return false; }, std::chrono::milliseconds(1));
    }
  };
  start();
  pass(2);
  controller->toggleRecordingPause();
  EXPECT_TRUE(controller->isRecordingPaused.get());
  pass(5);
  controller->toggleRecordingPause();
  await([this] { return !controller->isRecordingPaused.get(); });
  pass(1);
  EXPECT_EQ(controller->recordingSeconds.get(), 3);
  controller->cancelRecording();
  await([this] { return log.back() == "draft-"; });
  controller->startRecording();
  controller->cancelRecording();  // before it has begun
  await([this] { return log.size() == 4; });
  EXPECT_THAT(log, ElementsAre("draft+", "draft-", "draft+", "draft-"));
  EXPECT_TRUE(std::filesystem::is_empty(recordings.path()));
  EXPECT_EQ(timers.waiting(), 0U);
}

TEST_F(RecordingControllerTest, FailuresKeepTheRecording) {
  // Of the transcription: it is in the memo.
  recognizer->failure = "忙";
  start();
  finish();
  EXPECT_THAT(log,
              ElementsAre("draft+", "imported a.m4a", "draft+",
                          "录音已保存，转文字失败：语音识别失败: 忙", "ready -a.m4a", "draft-"));
  // Of the import: it stays in its folder, where it is found.
  log.clear();
  importFailure = "磁盘已满";
  start();
  finish();
  EXPECT_THAT(log, ElementsAre("draft+", "磁盘已满"));
  EXPECT_EQ(LockedRecording::leftBehind(recordings.path()).size(), 1U);
}

TEST_F(RecordingControllerTest, RecorderThatDiesEndsTheRecording) {
  start();
  for (const pid_t child : childrenOf(::getpid())) ::kill(child, SIGKILL);
  await([this] { return log.size() > 3 && log.back() == "draft-"; });
  EXPECT_EQ(log.at(1), "录音中断：录音程序意外结束了，已录下的部分会保存");
}

TEST_F(RecordingControllerTest, DestructionKeepsWhatIsRecorded) {
  start();
  controller.reset();
  EXPECT_THAT(log, ElementsAre("draft+"));
  EXPECT_FALSE(std::filesystem::is_empty(recordings.path()));
}

TEST_F(RecordingControllerTest, WhatIsNotSetIsTheProgrammersError) {
  controller->onRecordingsDir = nullptr;
  EXPECT_THROW(controller->startRecording(), std::logic_error);
}

}  // namespace
}  // namespace nomely::test
