#include <future>
#include <sstream>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "Feishu/Protocol/FeishuAPI.h"
#include "Platform/Cancellation.h"
#include "Platform/Text/JsonReading.h"
#include "Support/LoopbackServer.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

using namespace FeishuAPI;
using Answer = LoopbackServer::Answer;

constexpr auto endpointPath = "/callback/ws/endpoint";
constexpr auto tokenPath = "/open-apis/auth/v3/tenant_access_token/internal";
constexpr auto messages = "/open-apis/im/v1/messages/";

class FeishuAPITest : public testing::Test {
 protected:
  // What `call` comes to, or the failure's text.
  template <typename Call>
  static std::string outcomeOf(Call call) {
    try {
      return call();
    } catch (const HttpError& error) {
      return std::string(error.code());
    } catch (const JsonError&) {
      return "JSON";
    } catch (const FeishuError& error) {
      return error.what() + (error.message().empty() ? "" : "|" + error.message());
    }
  }
  std::string endpointOutcome() {
    return outcomeOf([&] {
      const auto [url, service, interval] = fetchEndpoint(platform, "cli_1", "s", {});
      return fmt::format("{} {} {}", url, service, interval.value_or(-1));
    });
  }
  std::string tokenOutcome() {
    return outcomeOf([&] {
      const Token token = fetchToken(platform, "cli_1", "s", {});
      return fmt::format("{} {}", token.value, token.lifetime);
    });
  }

  LoopbackServer server;
  const std::unique_ptr<HttpClient> http = makeHttpClient();
  const Platform platform{*http, server.url()};
  const MessageAccess message{"om_1-a", "t-1"};
};

TEST_F(FeishuAPITest, Endpoint) {
  const std::string url = "wss://h/ws?a=1&service_id=7&service_id=8#service_id=9";
  for (const auto& [answer, outcome] : std::vector<std::pair<Answer, std::string>>{
           {{.body = R"({"code":0,"data":{"URL":")" + url +
                     R"(","ClientConfig":{"PingInterval":120,"ReconnectCount":"x"}}})"},
            url + " 7 120"},
           {{.body = R"({"code":0,"msg":null,"data":{"URL":"x","ClientConfig":null}})"}, "x 0 -1"},
           {{.status = 201, .body = R"({"code":0,"data":{"URL":"x"}})"}, "飞书 HTTP 错误 201"},
           {{.body = R"({"code":0,"data":{}})"}, "飞书 API 错误 code=0|unknown"},
           {{.body = R"({"code":0,"msg":"m"})"}, "飞书 API 错误 code=0|m"},
           {{.body = R"({"code":-3,"msg":"m","data":{"URL":"x"}})"}, "飞书 API 错误 code=-3|m"},
           {{.body = "SSH-2.0-x\r\n", .manner = LoopbackServer::Manner::raw},
            "飞书返回无效响应"}}) {
    server.answer(endpointPath, answer);
    EXPECT_EQ(endpointOutcome(), outcome) << answer.body;
  }
  std::istringstream bodies(R"({"data":{"URL":"x"}} {"code":"0","data":{"URL":"x"}} [0] {
      {"code":9223372036854775808} {"code":0,"data":{"URL":1}} {"code":0,"data":"URL"}
      {"code":0,"data":{"URL":"x","ClientConfig":{"PingInterval":"1"}}})");
  for (std::string body; bodies >> body;) {
    server.answer(endpointPath, {.body = body});
    EXPECT_EQ(endpointOutcome(), "JSON") << body;
  }
  std::istringstream queries(
      "/ ? ?service_id ?service_id= ?xservice_id=1&service_id2=2 ?service_id=x&service_id=1 "
      "?service_id=2147483648");
  for (std::string query; queries >> query;)
    EXPECT_EQ(extractServiceID("wss://h/" + query), std::nullopt) << query;
  EXPECT_EQ(extractServiceID("wss://h/?&service_id=-2147483648"), INT32_MIN);
}

TEST_F(FeishuAPITest, Token) {
  for (const auto& [answer, outcome] : std::vector<std::pair<Answer, std::string>>{
           {{.body = R"({"code":0,"tenant_access_token":"t","expire":60})"}, "t 60"},
           {{.status = 500, .body = R"({"code":0,"tenant_access_token":"t"})"}, "t 7200"},
           {{.body = R"({"code":0,"tenant_access_token":"t","expire":-1})"}, "t 0"},
           {{.body = R"({"code":0,"tenant_access_token":"t","expire":9223372036854775807})"},
            "t 31536000"},
           {{.body = R"({"code":0,"expire":60})"}, "获取 token 失败 code=0"},
           {{.body = R"({"code":99991663,"tenant_access_token":"t"})"},
            "获取 token 失败 code=99991663"},
           {{.body = R"({"code":0,"tenant_access_token":["t"]})"}, "JSON"},
           {{.body = "<html>"}, "JSON"},
           {{.body = std::string(1 << 20, ' '), .times = 200}, "http.tooLarge"}}) {
    server.answer(tokenPath, answer);
    EXPECT_EQ(tokenOutcome(), outcome) << answer.body.substr(0, 99);
  }
}

TEST_F(FeishuAPITest, Downloads) {
  const TemporaryFolder folder;
  const std::filesystem::path target = folder.path() / "media";
  const std::string path = messages + std::string("om_1-a/resources/img_v2-K");
  const auto download = [&](const std::string& key = "img_v2-K") {
    return outcomeOf([&] {
      downloadResource(platform, message, key, Resource::image, target, {});
      return std::string();
    });
  };
  for (const auto& [answer, outcome] : std::vector<std::pair<Answer, std::string>>{
           {{.body = std::string(1 << 20, 'i'), .times = 100}, ""},
           {{.body = std::string(1 << 20, 'i'), .times = 101}, "http.tooLarge"},
           {{.body = ""}, "飞书返回无效响应"},
           {{.status = 206, .body = "part"}, "飞书 HTTP 错误 206"},
           {{.body = "abcdef", .manner = LoopbackServer::Manner::cutOff}, "http.connection"}}) {
    server.answer(path, answer);
    EXPECT_EQ(download(), outcome);
    EXPECT_EQ(std::filesystem::exists(target), outcome.empty()) << outcome;
  }
  EXPECT_EQ(server.requests().back().target, path + "?type=image");
  const std::size_t count = server.requests().size();
  for (const char* const unsafe : {"", "a/b", "..", "a?b", "a b", "é", "a%2e"}) {
    EXPECT_EQ(download(unsafe), "飞书返回无效响应");
    EXPECT_EQ(outcomeOf([&] {
                addReaction(platform, {unsafe, "t"}, "OK", {});
                return std::string();
              }),
              "飞书返回无效响应");
  }
  EXPECT_FALSE(isSafeName(std::string(201, 'a')));
  EXPECT_EQ(server.requests().size(), count);
}

TEST_F(FeishuAPITest, FourDownloadsAtATime) {
  const TemporaryFolder folder;
  server.answer(messages + std::string("om_1-a/resources/k"),
                {.manner = LoopbackServer::Manner::hanging});
  std::stop_source stop;
  std::vector<std::future<void>> downloads;
  for (int i = 0; i < 6; ++i)
    downloads.push_back(std::async(std::launch::async, [&, i] {
      downloadResource(platform, message, "k", Resource::file, folder.path() / std::to_string(i),
                       stop.get_token());
    }));
  static_cast<void>(server.awaitRequest(4));
  stop.request_stop();
  for (std::future<void>& download : downloads) EXPECT_THROW(download.get(), CancellationError);
  EXPECT_EQ(server.requests().size(), 4U);
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(FeishuPlatformRoot, OfTheEnvironment) {
  const auto root = [](const std::string& value) {
    return platformRoot(Environment({{"NOMELY_FEISHU_ROOT", value}}));
  };
  EXPECT_EQ(root(""), "https://open.feishu.cn");
  EXPECT_EQ(root("http://127.0.0.1:80/"), "http://127.0.0.1:80");
  EXPECT_THROW(static_cast<void>(root("http://10.0.0.1")), HttpError);
}

}  // namespace
}  // namespace nomely::test
