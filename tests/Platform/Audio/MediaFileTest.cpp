#include <algorithm>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "Platform/Audio/MediaFile.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/Sound.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestPaths.h"

namespace nomely::test {
namespace {

class MediaFileTest : public testing::Test {
 protected:
  [[nodiscard]] std::filesystem::path file(const char* name) const { return folder.path() / name; }
  void convert(const std::filesystem::path& source, const std::stop_token& stop = {}) const {
    MediaFile::convertToM4A(source, file("made.m4a"), stop);
  }
  // Names of what is there, less `ours`.
  [[nodiscard]] std::set<std::string> others(const char* ours) const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
      names.insert(entry.path().filename());
    names.erase(ours);
    return names;
  }

  TemporaryFolder folder;
};

TEST_F(MediaFileTest, DurationIsThatOfTheSoundThatIsThere) {
  writeSilence(file("whole.wav"), 55.0);
  EXPECT_DOUBLE_EQ(MediaFile::duration(file("whole.wav"), {}), 55.0);

  // Claims a day, holds a second.
  std::string claims = readFile(file("whole.wav")).substr(0, 44 + 32000);
  for (const std::size_t size : {4, 40}) claims.replace(size, 4, "\xFF\xFF\xFF\x7F");
  writeFile(file("claims.wav"), claims);
  EXPECT_DOUBLE_EQ(MediaFile::duration(file("claims.wav"), {}), 1.0);
  convert(file("claims.wav"));
  EXPECT_NEAR(MediaFile::duration(file("made.m4a"), {}), 1.0, 0.05);
}

TEST_F(MediaFileTest, ATwoSecondToneOutlivesItsConversion) {
  writeTone(file("telephone.wav"), {.rate = 8000, .seconds = 2});
  writeTone(file("stereo.wav"), {.rate = 44100, .channels = 2, .seconds = 2});
  writeTone(file("studio.wav"), {.rate = 96000, .seconds = 2});
  for (const auto& source : {std::filesystem::path(TestPaths::fixtures + "/voice.ogg"),
                             file("telephone.wav"), file("stereo.wav"), file("studio.wav")}) {
    SCOPED_TRACE(source.filename());
    convert(source);
    EXPECT_NEAR(MediaFile::duration(file("made.m4a"), {}), 2.0, 0.05);
    EXPECT_EQ(readFile(file("made.m4a")).substr(4, 8), "ftypM4A ");

    const auto shape = MediaFile::shape(source, 10, {});
    EXPECT_NEAR(shape.seconds, 2.0, 0.05);
    EXPECT_THAT(shape.peaks, testing::AllOf(testing::SizeIs(10), testing::Each(testing::Gt(0.3))));

    SampleStream stream(file("made.m4a"));
    std::vector<std::int16_t> second(SampleStream::rate);
    ASSERT_EQ(stream.read(second, {}), second.size());
    int waves = 0;
    for (std::size_t i = 1; i < second.size(); ++i)
      if (second[i - 1] < 0 && second[i] >= 0) ++waves;
    EXPECT_NEAR(waves, 440, 5);
    EXPECT_GT(*std::ranges::max_element(second), 12000);
  }
}

TEST_F(MediaFileTest, WhatIsNoSoundIsRefusedWhateverItsName) {
  writeFile(file("secret.wav"), "secret");
  const std::string secret = file("secret.wav").string();
  for (const auto& [name, content] : std::vector<std::pair<const char*, std::string>>{
           {"empty.m4a", ""},
           {"playlist.m4a", "#EXTM3U\n#EXT-X-TARGETDURATION:5\n#EXTINF:5,\n" + secret + "\n"},
           {"list.mp3", "ffconcat version 1.0\nfile '" + secret + "'\n"},
           {"session.wav",
            "v=0\no=- 0 0 IN IP4 127.0.0.1\nc=IN IP4 127.0.0.1\nm=audio 5 RTP/AVP 0"},
           {"page.ogg", "<html><body>404</body></html>"},
           {"header.wav", std::string("RIFF\0\0\0\0WAVE", 12)}}) {
    SCOPED_TRACE(name);
    writeFile(file(name), content);
    EXPECT_FAILURE(MediaError, unreadable, MediaFile::duration(file(name), {}));
    EXPECT_FAILURE(MediaError, unreadable, convert(file(name)));
    std::filesystem::remove(file(name));
  }
  EXPECT_THROW((void)MediaFile::duration(file("none.wav"), {}), FileError);
  EXPECT_THROW((void)MediaFile::duration("/dev/zero", {}), FileError);
  EXPECT_THROW(convert("/dev/zero"), FileError);
  EXPECT_THAT(others("secret.wav"), testing::IsEmpty());
}

TEST_F(MediaFileTest, SamplesComeInOrderUntilTheEnd) {
  writeSilence(file("a.wav"), 2.5);
  SampleStream stream(file("a.wav"));
  std::vector<std::int16_t> second(SampleStream::rate);
  std::vector<std::size_t> counts;
  for (int i = 0; i < 4; ++i) counts.push_back(stream.read(second, {}));
  EXPECT_THAT(counts, testing::ElementsAre(16000, 16000, 8000, 0));
}

TEST_F(MediaFileTest, StopsAtOnce) {
  writeSilence(file("long.wav"), 36000);
  const auto stopped = [](const auto& work) {
    std::stop_source stop;
    const std::jthread asks([&] { stop.request_stop(); });
    EXPECT_THROW(work(stop.get_token()), CancellationError);
  };
  stopped([&](auto stop) { (void)MediaFile::duration(file("long.wav"), stop); });
  stopped([&](auto stop) { convert(file("long.wav"), stop); });
  EXPECT_THAT(others("long.wav"), testing::IsEmpty());
  EXPECT_TRUE(childrenOf(::getpid()).empty());
}

}  // namespace
}  // namespace nomely::test
