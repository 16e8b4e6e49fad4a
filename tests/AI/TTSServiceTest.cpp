#include "AI/Voice/SpeechPieces.h"
#include "AI/Voice/TTSService.h"
#include "Platform/Text/Base64.h"
#include "Platform/Text/Json.h"
#include "Platform/Text/JsonReading.h"
#include "Platform/Text/Unicode.h"
#include "Support/ErrorKind.h"
#include "Support/LoopbackServer.h"
#include "Support/RandomText.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

using Kind = TTSError::Kind;

class TTSServiceTest : public testing::Test {
 protected:
  static constexpr const char* path = "/api/v1/tts";

  [[nodiscard]] TTSService service(const std::string& root) const {
    return {config, *http, Environment({{"NOMELY_TTS_ROOT", root}})};
  }
  [[nodiscard]] TTSService service() const { return service(vendor.url()); }
  // Answers with the text that it is asked to speak.
  void echo() {
    vendor.answer(path, [](const LoopbackServer::Request& request) {
      const Json body = readJson(request.body);
      return LoopbackServer::Answer{
          .body = Json{{"code", 3000},
                       {"data", encodeBase64(body["request"]["text"].get<std::string>())}}
                      .dump()};
    });
  }

  LoopbackServer vendor;
  std::unique_ptr<HttpClient> http = makeHttpClient();
  TTSConfig config{.appid = "app-PLANTED", .apiKey = "key-PLANTED", .speedRatio = 1.25};
};

TEST_F(TTSServiceTest, RequestAndSound) {
  echo();
  EXPECT_EQ(service().synthesize("早上好 😀", {}), "早上好 😀");
  const LoopbackServer::Request request = vendor.awaitRequest();
  EXPECT_EQ(request.headers.at("authorization"), "Bearer; key-PLANTED");
  EXPECT_EQ(request.headers.at("x-api-resource-id"), "seed-tts-2.0");
  const std::string id = request.headers.at("x-api-request-id");
  EXPECT_EQ(request.body,
            R"({"app":{"appid":"app-PLANTED","token":"key-PLANTED","cluster":"volcano_tts"},)"
            R"("user":{"uid":"nomely"},"audio":{"voice_type":"zh_female_xiaohe_uranus_bigtts",)"
            R"("encoding":"mp3","speed_ratio":1.25},"request":{"reqid":")" +
                id + R"(","text":"早上好 😀","operation":"query"}})");
  const std::size_t asked = vendor.requests().size();
  config.apiKey.clear();
  EXPECT_FAILURE(TTSError, notConfigured, service().synthesize("x", {}));
  EXPECT_EQ(vendor.requests().size(), asked);
}

TEST_F(TTSServiceTest, WhatAUserIsToldOfAFailure) {
  for (const auto& [status, body, told] : {
           std::tuple(200, R"({"code": 3005, "message": "busy key-PLANTED\u0007"})",
                      "合成失败: busy ***\uFFFD"),
           {200, R"({"code": 3000})", "音频解码失败"},
           {200, R"({"code": 3000, "data": "?"})", "音频解码失败"},
           {200, R"([])", "合成失败: 未知错误"},
           {500, "", "合成失败: HTTP 500: 未知错误"},
           {401, R"({"code": 3001, "message": "no"})",
            "合成失败: HTTP 401: 当前音色或 TTS 资源未授权。ResourceId: seed-tts-2.0，Voice: "
            "zh_female_xiaohe_uranus_"
            "bigtts。请换回已开通音色，或在豆包控制台开通对应音色资源。原始错误："
            "no"},
           {200, R"({"code": 1, "message": "Not Granted for app-PLANTED"})",
            "原始错误：Not Granted for ***"},
           {302, "<html>moved", "合成失败: HTTP 302: <html>moved"},
       }) {
    SCOPED_TRACE(body);
    vendor.answer(path, {.status = status, .body = body});
    EXPECT_THAT(messageOf<TTSError>([&] { (void)service().synthesize("x", {}); }),
                AllOf(HasSubstr(told), Not(HasSubstr("PLANTED"))));
  }
  vendor.answer(path, {.body = "<html>key-PLANTED"});
  EXPECT_THAT(messageOf<JsonError>([&] { (void)service().synthesize("x", {}); }),
              AllOf(HasSubstr("网页"), Not(HasSubstr("PLANTED"))));
  const auto kindAt = [&](const std::string& root) {
    return kindOf<TTSError>([&] { (void)service(root).synthesize("x", {}); });
  };
  EXPECT_EQ(kindAt("http://a b"), Kind::connectionFailed);
  for (const char* root : {"http://192.168.0.1", "http://127.evil.example", "file:///etc"})
    EXPECT_FAILURE(HttpError, refused, service(root).synthesize("x", {})) << root;
}

TEST_F(TTSServiceTest, LongTextsPieceByPiece) {
  echo();
  const TemporaryFolder folder;
  const FileManager files(posixFileSystem());
  const std::string text = repeated("一二三四五六七八九。", 120);
  const auto file = service().synthesizeLongText(text, files, folder.path(), {});
  EXPECT_THAT(file.filename().string(), MatchesRegex("tts_[0-9A-F-]{36}.mp3"));
  EXPECT_EQ(readFile(file), text);
  EXPECT_EQ(vendor.requests().size(), 3U);
}

TEST(SpeechPiecesTest, Cuts) {
  for (const auto& [text, pieces] : std::vector<std::pair<std::string, std::vector<std::string>>>{
           {"", {}},
           {" \n\n", {}},
           {"一二三四五六七八九十", {"一二三四五六七八九十"}},
           {"一二\n三。四五六七八九十甲", {"一二", "三。四五六七八九十甲"}},
           {"一二。三！四五六七八九十", {"一二。三！", "四五六七八九十"}},
           {"他说：“好。”然后走开了吗", {"他说：“好。”", "然后走开了吗"}},
           {"pi=3.14 ok. then", {"pi=3.14 ok", ". then"}},
           {"a. b3.1cdefgh", {"a.", "b3.1cdefgh"}},
           {"一二三四五六七八九👨‍👩‍👧十",
            {"一二三四五六七八九👨‍👩‍👧", "十"}},
           {"一二三四五六七八九十\r\n\r\n甲", {"一二三四五六七八九十", "甲"}},
       })
    EXPECT_EQ(speechPieces(text, 10), pieces) << text;
  for (const std::string& piece : speechPieces(repeated("e\u0301👨‍👩‍👧", 2000), 500))
    EXPECT_EQ(graphemeCount(piece), 500U);
}

}  // namespace
}  // namespace nomely::test
