#include <future>

#include "AI/LanguageVendor.h"
#include "AI/Vendor/AIError.h"
#include "AI/Writing/AIBeautifier.h"
#include "AI/Writing/AIWritingAssistant.h"
#include "Platform/Cancellation.h"
#include "Platform/Text/JsonReading.h"
#include "Support/ErrorKind.h"

namespace nomely::test {
namespace {

using Answer = LoopbackServer::Answer;
using Provider = AIConfig::Provider;

class AIServiceTest : public testing::Test {
 protected:
  AIService::Reply chat(const AIConfig& config) {
    return AIService(config, *vendor.http).chat({"你是\"助手\"。\n", "你好 😀", 10}, {});
  }
  // What a user is told of that answer.
  std::string failure(Provider provider, const Answer& answer) {
    vendor.answer(LanguageVendor::claudePath, answer);
    vendor.answer(LanguageVendor::openAIPath, answer);
    try {
      return "no failure: " + chat(vendor.config(provider)).text;
    } catch (const Error& error) {
      return error.what();
    }
  }

  LanguageVendor vendor;
};

TEST_F(AIServiceTest, BothDialects) {
  vendor.answer(
      "/base/v1/messages",
      {.body = R"({"content": [{"text": " OK\n"}, {"text": "no"}], "stop_reason": "max_tokens"})"});
  AIConfig config = vendor.config(Provider::claude);
  *config.baseURL += "/base";
  AIService::Reply reply = chat(config);
  EXPECT_EQ(reply.text, " OK\n");
  EXPECT_TRUE(reply.isCutOff);
  expectGolden("dialect-claude", vendor.awaitRequest());
  vendor.replies("");
  for (const Provider provider : {Provider::deepseek, Provider::custom}) {
    reply = chat(vendor.config(provider));
    EXPECT_EQ(reply.text, "");
    EXPECT_FALSE(reply.isCutOff);
    expectGolden("dialect-openai", vendor.requests().back());
  }
  vendor.replies("x", "length");
  EXPECT_TRUE(chat(vendor.config()).isCutOff);
}

TEST_F(AIServiceTest, BadAnswers) {
  const std::string openAI = "解码错误: 无法解析 OpenAI 响应";
  for (const char* const body :
       {R"({})", R"([])", R"("x")", R"({"choices": []})", R"({"choices": {"message": 1}})",
        R"({"choices": [1]})", R"({"choices": [{"message": "x"}]})",
        R"({"choices": [{"message": {"content": null}}]})"})
    EXPECT_EQ(failure(Provider::openai, {.body = body}), openAI) << body;
  for (const char* const body :
       {R"({"content": []})", R"({"content": "x"})", R"({"content": [{"type": "x"}]})",
        R"({"content": [{"text": 1}]})"})
    EXPECT_EQ(failure(Provider::claude, {.body = body}), "解码错误: 无法解析 Claude 响应") << body;

  const std::string deep = std::string(200'000, '[');
  for (const auto& [answer, text] : std::vector<std::pair<Answer, std::string>>{
           {{.status = 201, .body = "{}"}, "API 错误: HTTP 201: {}"},
           {{.status = 429, .body = R"({"error": "慢"})"},
            R"(API 错误: HTTP 429: {"error": "慢"})"},
           {{.status = 302, .body = "there"}, "API 错误: HTTP 302: there"},
           {{.status = 500, .body = "\xFF"}, "API 错误: HTTP 500: 未知错误"},
           {{.status = 401, .body = "bad key sk-planted\x1B[2J"},
            "API 错误: HTTP 401: bad key ***\uFFFD[2J"},
           {{.status = 400, .body = std::string(600, 'x') + "sk-planted"},
            "API 错误: HTTP 400: " + std::string(500, 'x') + "…"},
           {{.status = 400, .body = std::string(495, 'x') + "sk-planted"},
            "API 错误: HTTP 400: " + std::string(495, 'x') + "***"},
           {{.body = "<!DOCTYPE html>"}, "收到的是网页而不是数据，请检查设置里的地址"},
           {{.body = R"({"diary": "私)"}, "收到的不是有效的 JSON（第 15 字节处）"},
           {{.body = "{\"a\": \"\xFF\"}"}, "收到的不是有效的 JSON（第 8 字节处）"},
           {{.body = ""}, "收到的不是有效的 JSON（第 1 字节处）"},
           {{.body = deep}, "收到的 JSON 嵌套过深，没有读取"},
           {{.body = "garbage\r\n", .manner = LoopbackServer::Manner::raw}, "网络错误: 无效响应"}})
    EXPECT_EQ(failure(Provider::openai, answer), text);
}

TEST_F(AIServiceTest, NothingIsSentWhereNothingMayBe) {
  AIConfig config = vendor.config();
  config.features = {.writingAssistant = false, .beautify = false};
  EXPECT_THROW(
      static_cast<void>(
          AIWritingAssistant(config, *vendor.http).perform(InputAIAction::greeting, "x", {})),
      AIFeatureOffError);
  EXPECT_THROW(static_cast<void>(AIBeautifier(config, *vendor.http).refine({}, {})),
               AIFeatureOffError);
  config.baseURL = "http://a b";
  EXPECT_FAILURE(AIError, networkError, chat(config));
  config.baseURL = "";
  EXPECT_FAILURE(HttpError, refused, chat(config)) << "no address of its own: nowhere";
  config.apiKey = "";
  EXPECT_FAILURE(AIError, notConfigured, chat(config));
  EXPECT_TRUE(vendor.requests().empty());
}

// Whole requests, prompts and all.
TEST_F(AIServiceTest, WritingActions) {
  vendor.replies("好");
  for (const InputAIActionInfo& info : InputAIActionInfo::all()) {
    const std::string text = info.action == InputAIAction::greeting
                                 ? AIWritingAssistant::dateInfo(*Day::from(2026, 3, 1))
                                 : " 今天\n";
    EXPECT_EQ(AIWritingAssistant(vendor.config(), *vendor.http).perform(info.action, text, {}).text,
              "好");
    expectGolden(std::string(info.name), vendor.requests().back());
  }
  (void)AIBeautifier(vendor.config(), *vendor.http).refine({"原文", "", "加总结"}, {});
  expectGolden("refine-first", vendor.requests().back());
  (void)AIBeautifier(vendor.config(), *vendor.http).refine({"原文", "后来", "改"}, {});
  expectGolden("refine-again", vendor.requests().back());
}

TEST(AIConfigTest, ChoosingAVendor) {
  AIConfig config;
  config.model = "mine";
  config.baseURL = "http://localhost";
  config.choose(Provider::deepseek);
  EXPECT_EQ(config.model, "mine");
  config.choose(Provider::doubao);
  EXPECT_EQ(config.effectiveBaseURL(), "https://ark.cn-beijing.volces.com/api/v3");
  EXPECT_EQ(config.model, "doubao-1.5-pro-32k");
  config.choose(Provider::custom);
  EXPECT_EQ(config.baseURL, "");
  EXPECT_EQ(config.effectiveBaseURL() + config.model, "");
}

}  // namespace
}  // namespace nomely::test
