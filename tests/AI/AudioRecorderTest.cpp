#include <gmock/gmock.h>
#include <signal.h>
#include <unistd.h>

#include "AI/Voice/AudioRecorder.h"
#include "Platform/Audio/MediaFile.h"
#include "Support/Deadline.h"
#include "Support/ErrorKind.h"
#include "Support/ForkedRun.h"
#include "Support/ManualClock.h"
#include "Support/Mounts.h"
#include "Support/Sound.h"
#include "Support/TemporaryFolder.h"
#include "bench/LongRecording.h"

namespace nomely::test {
namespace {

using Kind = RecorderError::Kind;

class AudioRecorderTest : public testing::Test {
 protected:
  fs::path start() { return recorder.startRecording(folder.path(), PlayedMicrophone::name); }
  // Plays until `seconds` more were recorded.
  void record(double seconds) {
    const double end = recorder.status().seconds + seconds;
    microphone.play(seconds + 0.5);
    eventually([&] { return recorder.status().seconds >= end; });
    EXPECT_GT(recorder.status().level, 0.4);
  }
  void killProgram() {
    for (const pid_t child : childrenOf(::getpid())) ::kill(child, SIGKILL);
    eventually([&] { return recorder.status().hasEnded; });
  }
  [[nodiscard]] std::size_t leftBehind() const {
    return LockedRecording::leftBehind(folder.path()).size();
  }

  TemporaryFolder folder;
  TemporaryFolder home;
  PlayedMicrophone microphone{home.path()};
  ManualClock clock{"2026-03-01 09:00:00"};
  std::unique_ptr<AudioCapture> capture = makeAudioCapture();
  AudioRecorder recorder{*capture, clock};
};

TEST_F(AudioRecorderTest, StoppedRecordingIsAPlainFileAndHeldUntilLetGo) {
  const auto path = start();
  EXPECT_EQ(path, folder.path() / "voice_2026-03-01_090000.m4a");
  EXPECT_FAILURE(RecorderError, alreadyRecording, start());
  record(1.5);
  EXPECT_EQ(leftBehind(), 0U);
  EXPECT_EQ(recorder.stopRecording(), path);
  EXPECT_GE(MediaFile::duration(path, {}), 1.5);
  EXPECT_EQ(readFile(path).find("moof"), std::string::npos);
  EXPECT_EQ(leftBehind(), 0U);
  EXPECT_FAILURE(RecorderError, notRecording, recorder.stopRecording());
  recorder.letGo();
  EXPECT_EQ(leftBehind(), 1U);
  // The same second again.
  EXPECT_EQ(start(), folder.path() / "voice_2026-03-01_090000_2.m4a");
  recorder.cancelRecording();
  EXPECT_EQ(leftBehind(), 1U);
}

TEST_F(AudioRecorderTest, KilledRecorderLosesASecondAtMost) {
  const auto path = start();
  record(3);
  killProgram();
  EXPECT_EQ(recorder.status().failure, "录音程序意外结束了");
  EXPECT_FALSE(recorder.resumeRecording());
  EXPECT_GE(MediaFile::duration(path, {}), 2.0);
  EXPECT_EQ(recorder.stopRecording(), path);
  EXPECT_GE(MediaFile::duration(path, {}), 2.0);
}

// The tables of a file with hours of sound are read piecewise.
TEST_F(AudioRecorderTest, HoursAreHeardAsMinutesAre) {
  (void)start();
  record(2);
  const auto path = recorder.stopRecording();
  std::vector<std::vector<std::int16_t>> beginnings;
  for (const double hours : {0.5, 1.0}) {
    const auto file = home.path() / "long.m4a";
    bench::writeLongRecording(path, hours, file);
    EXPECT_NEAR(MediaFile::duration(file, {}), hours * 3600, 5);
    SampleStream stream(file);
    (void)stream.read(beginnings.emplace_back(5 * SampleStream::rate), {});
    // Cut off in the middle of its tables, and of its sound.
    for (const double part : {0.9, 0.01}) {
      fs::resize_file(file,
                      static_cast<std::uintmax_t>(static_cast<double>(fs::file_size(file)) * part));
      EXPECT_THROW((void)MediaFile::duration(file, {}), MediaError);
    }
  }
  EXPECT_EQ(beginnings[0], beginnings[1]);
}

// Needs root.
TEST_F(AudioRecorderTest, FullDiskEndsARecordingThatPlays) {
  const ChildEnd end = runInChild([this] {
    if (const auto reason = takePrivateMounts()) GTEST_SKIP() << *reason;
    const Mount disk({.type = "tmpfs", .options = "size=100k"}, folder.path());
    std::promise<std::string> failure;
    const auto path = recorder.startRecording(folder.path(), PlayedMicrophone::name,
                                              [&](const CaptureStatus& status) {
                                                if (status.hasEnded)
                                                  failure.set_value(status.failure);
                                              });
    microphone.play(20);
    EXPECT_EQ(inTime(failure), "磁盘空间不足");
    (void)recorder.stopRecording();
    EXPECT_GT(MediaFile::duration(path, {}), 4.0);
    recorder.letGo();
  });
  if (end == skippedInChild) GTEST_SKIP();
  EXPECT_EQ(end, ChildEnd{});
}

TEST_F(AudioRecorderTest, PausedSoundIsNotRecorded) {
  const auto path = start();
  record(1);
  EXPECT_TRUE(recorder.pauseRecording());
  microphone.play(20);
  EXPECT_TRUE(recorder.resumeRecording());
  record(1);
  (void)recorder.stopRecording();
  EXPECT_LT(MediaFile::duration(path, {}), 5.0);
}

}  // namespace
}  // namespace nomely::test
