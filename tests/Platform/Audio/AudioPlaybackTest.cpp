#include <algorithm>
#include <mutex>
#include <optional>

#include <gmock/gmock.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include "Platform/Audio/AudioPlayback.h"
#include "Platform/Audio/MediaFile.h"
#include "Support/Sound.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestPaths.h"
#include "bench/LongRecording.h"

namespace nomely::test {
namespace {

class AudioPlaybackTest : public testing::Test {
 protected:
  void start(const fs::path& file, double from = 0, double speed = 1) {
    session.reset();
    last = {.position = -1};
    session = playback->start({file, from, speed}, [this](const PlaybackStatus& status) {
      const std::lock_guard lock(mutex);
      last = status;
    });
  }
  [[nodiscard]] PlaybackStatus status() {
    const std::lock_guard lock(mutex);
    return last;
  }
  // The rest, in seconds.
  double hearToTheEnd() {
    const auto heard = speaker->hearUntil([this](std::size_t) { return status().hasEnded; });
    return static_cast<double>(heard.size()) / 2 / HeardSpeaker::rate;
  }
  // Hears on until the place that is told is `wanted` at least, and returns it.
  double hearTo(double wanted) {
    speaker->hearUntil([&](std::size_t) { return status().position >= wanted; });
    return status().position;
  }
  static double frequency(const std::vector<std::int16_t>& samples) {
    int waves = 0;
    for (std::size_t i = 3; i < samples.size(); i += 2)
      if (samples[i - 2] < 0 && samples[i] >= 0) ++waves;
    return waves / (static_cast<double>(samples.size()) / 2 / HeardSpeaker::rate);
  }

  TemporaryFolder folder;
  std::optional<HeardSpeaker> speaker{folder.path()};
  fs::path tone = folder.path() / "tone.wav";
  std::mutex mutex;
  PlaybackStatus last;
  std::unique_ptr<AudioPlayback> playback = makeAudioPlayback();
  std::unique_ptr<AudioPlayback::Session> session;
};

TEST_F(AudioPlaybackTest, PlaysPausesSeeksAndChangesSpeed) {
  writeTone(tone, {.rate = 16000, .seconds = 6});
  start(tone);
  const auto samples = speaker->hear(1);
  EXPECT_NEAR(frequency(samples), 440, 5);
  EXPECT_GT(*std::ranges::max_element(samples), 10000);
  EXPECT_NEAR(hearTo(1), 1, 0.3);

  session->setPaused(true);
  speaker->hearUntil([this](std::size_t) { return status().isPaused; });
  const double paused = status().position;
  session->setSpeed(2);  // is told, and moves nothing
  session->setPaused(false);
  speaker->hearUntil([this](std::size_t) { return !status().isPaused; });
  EXPECT_NEAR(status().position, paused, 0.1);

  session->seek(3);
  EXPECT_NEAR(hearTo(3), 3, 0.1);
  EXPECT_NEAR(frequency(speaker->hear(0.5)), 440, 12);  // twice as fast, not higher
  EXPECT_NEAR(hearTo(4), 4.2, 0.3);
  session->seek(1);
  speaker->hearUntil([this](std::size_t) { return status().position < 2; });
  session->setSpeed(0.5);
  session->seek(5.5);
  EXPECT_NEAR(hearTo(5.5), 5.5, 0.1);
  EXPECT_NEAR(hearToTheEnd(), 1, 0.15);
  EXPECT_EQ(status().failure, "");
  session.reset();
  EXPECT_TRUE(childrenOf(::getpid()).empty());
}

TEST_F(AudioPlaybackTest, EveryKindOfFileIsPlayedFromAnyPlace) {
  writeTone(tone, {.rate = 44100, .channels = 2, .seconds = 2});
  const fs::path recording = folder.path() / "a.m4a";
  MediaFile::convertToM4A(tone, recording, {});
  const fs::path hour = folder.path() / "hour.m4a";  // whose tables are too long for memory
  bench::writeLongRecording(recording, 1, hour);
  struct Case {
    fs::path file;
    double from;
    double rest;
  };
  for (const auto& [file, from, rest] :
       {Case{tone, 1.5, 0.5}, Case{recording, 1.5, 0.5},
        Case{TestPaths::fixtures + "/voice.ogg", 1.5, 0.5},
        Case{hour, MediaFile::duration(hour, {}) - 0.5, 0.5}, Case{tone, 100, 0}}) {
    SCOPED_TRACE(file);
    start(file, from);
    EXPECT_NEAR(hearToTheEnd(), rest, 0.1);
    EXPECT_EQ(status().failure, "");
  }
}

TEST_F(AudioPlaybackTest, TellsWhatKeepsItFromPlaying) {
  writeFile(folder.path() / "page.ogg", "<html><body>404</body></html>");
  writeFile(folder.path() / "empty.m4a", "");
  writeTone(tone, {.seconds = 6});
  const auto failure = [&](const fs::path& file) {
    start(file);
    speaker->hearUntil([this](std::size_t) { return status().hasEnded; });
    return status().failure;
  };
  EXPECT_THAT(failure(folder.path() / "none.wav"), testing::HasSubstr("none.wav"));
  EXPECT_THAT(failure("/dev/zero"), testing::HasSubstr("/dev/zero"));
  EXPECT_EQ(failure(folder.path() / "page.ogg"), "不是可读的音频文件，或者文件已损坏");
  EXPECT_EQ(failure(folder.path() / "empty.m4a"), "不是可读的音频文件，或者文件已损坏");

  start(tone);
  speaker->hear(1);
  for (const pid_t child : childrenOf(::getpid())) ::kill(child, SIGKILL);
  speaker->hearUntil([this](std::size_t) { return status().hasEnded; });
  EXPECT_EQ(status().failure, "播放程序意外结束了，请再试一次");
  session->seek(0);  // nobody hears it

  writeFile(folder.path() / "none.conf", "");
  ::setenv("ALSA_CONFIG_PATH", (folder.path() / "none.conf").c_str(), 1);
  EXPECT_EQ(failure(tone), "找不到声音输出设备，请接上耳机或音箱后再播放");
}

}  // namespace
}  // namespace nomely::test
