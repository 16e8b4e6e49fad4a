#include <thread>

#include "AI/Transcription/SpeechEngines.h"
#include "AI/Transcription/SpeechTranscriber.h"
#include "Platform/Cancellation.h"
#include "Support/ErrorKind.h"
#include "Support/LoopbackServer.h"
#include "Support/Matchers.h"
#include "Support/Sound.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

constexpr auto path = "/v1/audio/transcriptions";
constexpr auto spoken =
    R"({"text": " 你好 ", "duration": 9, "words": [{"word": "你", "start": 2, "end": 2.5},
        {"word": "好", "start": 2.5, "end": "x"}], "segments": [{"text": "unused"}]})";

class SpeechTranscriberTest : public testing::Test {
 protected:
  SpeechTranscriberTest() { server.answer(path, {.body = spoken}); }

  [[nodiscard]] fs::path sound(double seconds) const {
    writeSilence(folder.path() / "sound.wav", seconds);
    return folder.path() / "sound.wav";
  }
  [[nodiscard]] TranscriptionResult run(double seconds, const std::stop_token& stop = {}) {
    messages.clear();
    return SpeechTranscriber(makeSpeechRecognizer(config, *http), temporary.path())
        .transcribeWithTimeline(
            sound(seconds),
            [this](const TranscriptionProgress& progress) {
              messages.push_back(progress.message());
            },
            stop);
  }
  [[nodiscard]] std::string failure(double seconds) {
    return messageOf<TranscriberError>([&] { (void)run(seconds); });
  }

  TemporaryFolder folder;
  TemporaryFolder temporary;
  LoopbackServer server;
  std::unique_ptr<HttpClient> http = makeHttpClient();
  TranscriptionConfig config{.baseURL = server.url(), .apiKey = "sk-planted"};
  std::vector<std::string> messages;
};

TEST_F(SpeechTranscriberTest, RangesAreOf55Seconds) {
  using Ranges = std::vector<SegmentRange>;
  EXPECT_EQ(SpeechTranscriber::segmentRanges(55), (Ranges{{0, 55}}));
  EXPECT_EQ(SpeechTranscriber::segmentRanges(120), (Ranges{{0, 55}, {55, 55}, {110, 10}}));
  const Ranges two = SpeechTranscriber::segmentRanges(55.1);
  ASSERT_EQ(two.size(), 2U);
  EXPECT_NEAR(two[1].duration, 0.1, 1e-9);
  for (const double bad : {0.0, -1.0, std::nan(""), HUGE_VAL})
    EXPECT_EQ(SpeechTranscriber::segmentRanges(bad), (Ranges{{0, 0}}));
}

TEST_F(SpeechTranscriberTest, ShortSoundIsOneRequest) {
  const TranscriptionResult result = run(3);
  EXPECT_EQ(result.text, "你好");
  EXPECT_EQ(result.transcript.text, "你好");
  ASSERT_EQ(result.transcript.segments.size(), 2U);
  EXPECT_EQ(result.transcript.segments[0].start, 2.0);
  EXPECT_EQ(result.transcript.segments[0].duration, 0.5);
  EXPECT_EQ(result.transcript.segments[1].duration, 0.0);
  EXPECT_THAT(messages, ElementsAre("正在转文字..."));

  const auto request = server.awaitRequest();
  EXPECT_EQ(request.headers.at("authorization"), "Bearer sk-planted");
  EXPECT_THAT(request.part("model"), HasSubstr("\r\n\r\nwhisper-1"));
  EXPECT_THAT(request.part("language"), HasSubstr("\r\n\r\nzh"));
  EXPECT_THAT(request.part("response_format"), HasSubstr("verbose_json"));
  EXPECT_THAT(request.part("timestamp_granularities[]"), HasSubstr("word"));
  EXPECT_THAT(request.part("file"), HasSubstr("filename=\"segment_1.wav\""));
  EXPECT_THAT(request.part("file"), HasSubstr("\r\n\r\nRIFF"));
  EXPECT_GT(request.part("file").size(), 3 * 32000U);
}

TEST_F(SpeechTranscriberTest, LongSoundHasOneTimelineAndSurvivesABadSegment) {
  EXPECT_EQ(run(120).transcript.segments.at(4).start, 112.0);
  EXPECT_THAT(messages, ElementsAre("正在转文字 1/3", "正在转文字 2/3", "正在转文字 3/3"));

  server.answerInTurn(path, {{.body = spoken}, {.status = 500}, {.body = spoken}});
  const TranscriptionResult result = run(120);
  EXPECT_EQ(result.failedSegmentCount, 1);
  EXPECT_EQ(result.totalSegmentCount, 3);
  EXPECT_EQ(result.text, "你好你好");
  EXPECT_EQ(result.transcript.segments.size(), 4U);

  server.answer(path, {.status = 500});
  EXPECT_EQ(failure(120), "语音识别失败: 长录音共 3 段，全部转写失败");
}

TEST_F(SpeechTranscriberTest, SegmentsElseTheTextAloneMakeATimeline) {
  server.answer(path, {.body = R"({"text": "a b", "segments": [{"text": " a", "start": 1, "end": 2},
                                   {"text": " b", "start": -1, "end": "never"}, 7]})"});
  const auto segments = run(3).transcript.segments;
  ASSERT_EQ(segments.size(), 2U);
  EXPECT_EQ(segments[0].text, "a");
  EXPECT_EQ(segments[1].start, 0.0);

  server.answer(path, {.body = R"({"text": "a b", "duration": 3})"});
  EXPECT_EQ(run(3).transcript.segments.at(0).duration, 3.0);
  server.answer(path, {.body = R"({"text": ""})"});
  EXPECT_TRUE(run(3).transcript.isEmpty());
}

TEST_F(SpeechTranscriberTest, BadAnswersAreToldWithoutSecrets) {
  const std::tuple<const char*, LoopbackServer::Answer, const char*> cases[] = {
      {"status",
       {.status = 401, .body = "bad key sk-planted"},
       "语音识别失败: HTTP 401: bad key ***"},
      {"number", {.body = R"({"duration": 1e999})"}, "语音识别失败: 收到的 JSON 里有过大的数"},
      {"no text", {.body = "{}"}, "语音识别失败: 识别服务的回答里没有文字"},
      {"list", {.body = "[]"}, "语音识别失败: 识别服务的回答里没有文字"},
  };
  for (const auto& [name, answer, text] : cases) {
    SCOPED_TRACE(name);
    server.answer(path, answer);
    EXPECT_THAT(failure(1), StartsWith(text));
  }
}

TEST_F(SpeechTranscriberTest, NothingIsSentWhereNothingIsChosenOrReadable) {
  writeFile(folder.path() / "text.m4a", "text");
  config.baseURL = "";
  EXPECT_EQ(failure(1), "未授权语音识别，请在系统设置中允许");
  config.baseURL = server.url();
  const auto recognizer = makeSpeechRecognizer(config, *http);
  EXPECT_THROW((void)SpeechTranscriber(recognizer, temporary.path())
                   .transcribeWithTimeline(folder.path() / "text.m4a", {}, {}),
               TranscriberError);
  EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(SpeechTranscriberTest, StopsAtOnceAndLeavesNothing) {
  const auto abandoned = temporary.path() / "nomely_transcription_DEAD";
  fs::create_directories(abandoned / "inner");
  fs::create_directory(temporary.path() / "others");
  std::stop_source stop;
  server.answer(path, [&](const LoopbackServer::Request&) {
    // One piece at a time, in a folder that others can't look into.
    std::size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(temporary.path())) {
      count += entry.is_regular_file() ? 1 : 0;
      if (entry.path().filename().string().starts_with("nomely_")) {
        EXPECT_EQ(entry.status().permissions(), fs::perms::owner_all);
      }
    }
    EXPECT_EQ(count, 1U);
    stop.request_stop();
    return LoopbackServer::Answer{.manner = LoopbackServer::Manner::hanging};
  });
  EXPECT_THROW((void)run(120, stop.get_token()), CancellationError);
  EXPECT_EQ(std::distance(fs::directory_iterator(temporary.path()), {}), 1);
  EXPECT_TRUE(fs::exists(temporary.path() / "others"));
}

#ifdef NOMELY_POCKETSPHINX
TEST_F(SpeechTranscriberTest, PocketSphinxHearsWordsWithTheirTimes) {
  config.model = "pocketsphinx";
  const TranscriptionResult result =
      SpeechTranscriber(makeSpeechRecognizer(config, *http), temporary.path())
          .transcribeWithTimeline(
              "/usr/share/pocketsphinx/test/data/librivox/"
              "sense_and_sensibility_01_austen_64kb-0880.wav",
              {}, {});
  EXPECT_THAT(result.text, HasSubstr("he was not"));
  EXPECT_THAT(result.text, HasSubstr("young man"));
  ASSERT_GT(result.transcript.segments.size(), 5U);
  EXPECT_EQ(result.transcript.segments[0].text, "he");
  EXPECT_NEAR(result.transcript.segments[0].start, 0.2, 0.1);
  EXPECT_NEAR(result.transcript.segments.back().start, 2.35, 0.15);

  config.model = "pocketsphinx:/nonexistent";
  EXPECT_EQ(failure(1), "语音识别失败: PocketSphinx 无法使用模型 /nonexistent");
}
#endif

}  // namespace
}  // namespace nomely::test
