#include <thread>

#include <signal.h>
#include <unistd.h>

#include "Core/Storage/DraftStore.h"
#include "Editor/Recording/RecordingController.h"
#include "Editor/Recording/RecordingRecovery.h"
#include "Platform/Audio/MediaFile.h"
#include "Platform/Concurrency/RunLoop.h"
#include "Support/FaultyFileSystem.h"
#include "Support/ForkedRun.h"
#include "Support/ManualTimers.h"
#include "Support/Sound.h"
#include "Support/StoreFixture.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

// Hears the same in each piece of sound, or what `fails` says.
class ScriptedRecognizer final : public SpeechRecognizer {
 public:
  [[nodiscard]] bool isAvailable() const override { return true; }
  [[nodiscard]] Recognition recognize(const fs::path&, const std::stop_token&) override {
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
    controller->onImportFile = [this](const fs::path& file) {
      if (!importFailure.empty()) throw Error("test", importFailure);
      fs::copy_file(file, home.path() / "a.m4a");
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
  EXPECT_TRUE(fs::is_empty(recordings.path()));
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
  EXPECT_TRUE(fs::is_empty(recordings.path()));
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
  EXPECT_FALSE(fs::is_empty(recordings.path()));
}

class RecordingRecoveryTest : public StoreTest {
 protected:
  // No sound, but nothing tells it from a plain recording without decoding it.
  void leaveBehind(const std::string& name = "voice_2026-02-27_235959.m4a") const {
    using namespace std::string_literals;
    writeFile(recordings() / name, "\0\0\0\x08mdat"s + name);
  }
  [[nodiscard]] fs::path recordings() const { return folder.path() / ".drafts/recordings"; }
  [[nodiscard]] std::vector<std::string> attachments() const {
    std::vector<std::string> contents;
    for (const Day date : store.listAllDates())
      for (const Memo& memo : store.listMemos(date))
        for (const std::string& name : memo.attachments)
          contents.push_back(readFile(context.paths.dayFolder(date) / name));
    return contents;
  }
  [[nodiscard]] std::size_t soundFiles() const {
    std::size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder.path()))
      count += entry.path().extension() == ".m4a" ? 1 : 0;
    return count;
  }
  [[nodiscard]] auto run() const { return RecordingRecovery::run(MemoService(context), {}); }

  const Day left = day("2026-02-27");
};

TEST_F(RecordingRecoveryTest, BecomesAMemoOfItsDay) {
  leaveBehind();
  writeFile(recordings() / "voice_2026-02-28_000000.m4a", "");  // died at once
  writeFile(recordings() / ".voice_ABC", "half a conversion");
  ASSERT_EQ(run().size(), 1U);
  const Memo memo = store.listMemos(left).at(0);
  EXPECT_EQ(memo.time, "23:59");
  EXPECT_THAT(memo.tags, ElementsAre("语音"));
  EXPECT_EQ(memo.originalNames.at(memo.attachments.at(0)), "voice_2026-02-27_235959.m4a");
  EXPECT_TRUE(fs::is_empty(recordings()));
  EXPECT_THAT(run(), IsEmpty());
}

TEST_F(RecordingRecoveryTest, HeldRecordingIsLeftAlone) {
  const auto path = context.write([&] { return DraftStore(context).ensureRecordingsDir(); });
  const auto held = LockedRecording::create(path, clock.now());
  EXPECT_THAT(run(), IsEmpty());
  EXPECT_TRUE(fs::exists(held.path()));
}

// Its process died between giving it away and removing it.
TEST_F(RecordingRecoveryTest, WhatIsGivenAwayAlreadyIsNotGivenTwice) {
  const MemoService memos(context);
  leaveBehind();
  const auto file = recordings() / "voice_2026-02-27_235959.m4a";
  // To a memo of another day.
  (void)memos.create(day("2026-03-01"), {.body = "原有"}, {file});
  EXPECT_THAT(run(), IsEmpty());
  EXPECT_EQ(soundFiles(), 1U);

  // To a draft.
  leaveBehind("voice_2026-02-27_100000.m4a");
  const auto imported =
      AttachmentManager(context).importFile(recordings() / "voice_2026-02-27_100000.m4a", left);
  DraftStore(context).saveQuickInputDraft({.pendingAttachments = {imported.filename}});
  EXPECT_THAT(run(), IsEmpty());
  EXPECT_EQ(soundFiles(), 2U);

  // Another recording of the same name and day is one more.
  leaveBehind();
  writeFile(file, readFile(file) + "other");
  EXPECT_EQ(run().size(), 1U);
}

TEST_F(RecordingRecoveryTest, KilledAtAnyCallItComesToOneMemo) {
  for (std::uint64_t call = 1;; ++call) {
    SCOPED_TRACE(call);
    leaveBehind();
    const ChildEnd end = runInChild([&] {
      std::uint64_t count = 0;
      FaultyFileSystem dying(posixFileSystem(), {}, [&](const FaultyFileSystem::Call&) {
        if (++count == call) ::_exit(7);
      });
      (void)RecordingRecovery::run(
          MemoService(StoreContext{{folder.path()}, FileManager(dying), clock}), {});
    });
    EXPECT_EQ(runInChild([&] { (void)run(); }), ChildEnd{});
    EXPECT_EQ(attachments().size(), 1U);
    EXPECT_EQ(soundFiles(), 1U);
    if (end == ChildEnd{}) break;
    ASSERT_EQ(end, ChildEnd{.status = 7});
    for (const auto& entry : fs::directory_iterator(folder.path())) fs::remove_all(entry.path());
  }
}

TEST_F(RecordingRecoveryTest, TwoAtOnceMakeOneMemo) {
  for (int i = 0; i < 20; ++i) {
    leaveBehind();
    EXPECT_EQ(runInChild([&] {
                std::jthread other([&] { (void)run(); });
                (void)run();
              }),
              ChildEnd{});
    EXPECT_EQ(attachments().size(), 1U);
    fs::remove_all(context.paths.dayFolder(left));
  }
}

}  // namespace
}  // namespace nomely::test
