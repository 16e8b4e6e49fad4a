#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "Platform/Audio/MediaFile.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Support/Sound.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

using Kind = MediaError::Kind;

class MediaFileTest : public testing::Test {
 protected:
  [[nodiscard]] std::filesystem::path file(const char* name) const { return folder.path() / name; }

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
    try {
      (void)MediaFile::duration(file(name), {});
      ADD_FAILURE() << "it was read";
    } catch (const MediaError& error) {
      EXPECT_EQ(error.kind(), Kind::unreadable);
    }
  }
  EXPECT_THROW((void)MediaFile::duration(file("none.wav"), {}), FileError);
  EXPECT_THROW((void)MediaFile::duration("/dev/zero", {}), FileError);
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
  std::stop_source stop;
  const std::jthread asks([&] { stop.request_stop(); });
  EXPECT_THROW((void)MediaFile::duration(file("long.wav"), stop.get_token()), CancellationError);
  EXPECT_TRUE(childrenOf(::getpid()).empty());
}

}  // namespace
}  // namespace nomely::test
