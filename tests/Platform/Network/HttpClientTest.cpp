#include <csignal>
#include <future>
#include <sstream>

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/resource.h>

#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Network/PrivateAddress.h"
#include "Support/ErrorKind.h"
#include "Support/LoopbackServer.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

using Kind = HttpError::Kind;
using Manner = LoopbackServer::Manner;
using Method = HttpRequest::Method;
using namespace std::chrono_literals;

class HttpClientTest : public testing::Test {
 protected:
  [[nodiscard]] HttpResponse send(const HttpRequest& request) { return client->send(request, {}); }

  LoopbackServer server;
  std::unique_ptr<HttpClient> client = makeHttpClient();
};

TEST_F(HttpClientTest, RequestsAndRepliesAsTheyAre) {
  const std::string large(3 << 20, 'x');
  server.answer("/echo", [](const LoopbackServer::Request& request) {
    return LoopbackServer::Answer{.status = 201, .body = request.method + " " + request.body};
  });
  for (const auto& [method, body, reply] :
       std::vector<std::tuple<Method, std::string, std::string>>{
           {Method::get, "", "GET "},
           {Method::post, "", "POST "},
           {Method::post, std::string("a\0b\n日", 7), std::string("POST a\0b\n日", 12)},
           {Method::post, large, "POST " + large},
           {Method::patch, "{}", "PATCH {}"},
           {Method::remove, "", "DELETE "},
           {Method::remove, "x", "DELETE x"}}) {
    const HttpResponse response =
        send({method, server.url("/echo?a=1"), {{"X-Key", "k y"}, {"Empty", ""}}, body});
    EXPECT_EQ(response.status, 201);
    EXPECT_EQ(response.body, reply);
    const LoopbackServer::Request seen = server.requests().back();
    EXPECT_EQ(seen.target, "/echo?a=1");
    EXPECT_EQ(seen.headers.at("x-key"), "k y");
    EXPECT_EQ(seen.headers.at("empty"), "");
    EXPECT_FALSE(seen.headers.contains("expect"));
  }
  server.answer("/moved", {.status = 302, .body = "there", .headers = {{"Location", "/echo"}}});
  EXPECT_EQ(send({.url = server.url("/moved")}).status, 302) << "nothing is followed";
  server.answer("/slow", {.body = std::string(100, 's'), .manner = Manner::byteByByte});
  EXPECT_EQ(send({.url = server.url("/slow"), .idleTimeout = 5s}).body, std::string(100, 's'));
  server.answer("/longer", {.body = "abcdef", .saidLength = 3});
  EXPECT_EQ(send({.url = server.url("/longer")}).body, "abc");
}

TEST_F(HttpClientTest, PartsAreStreamedFromFiles) {
  const TemporaryFolder folder;
  const std::string sound(200'000, '\xAA');
  writeFile(folder.path() / "a b.m4a", sound);
  server.answer("/upload", {.body = "{}"});
  static_cast<void>(send({.url = server.url("/upload"),
                          .parts = {{.name = "file",
                                     .file = folder.path() / "a b.m4a",
                                     .fileName = "audio.m4a",
                                     .contentType = "audio/mp4"}}}));
  EXPECT_EQ(server.awaitRequest().part("file"),
            "Content-Disposition: form-data; name=\"file\"; filename=\"audio.m4a\"\r\n"
            "Content-Type: audio/mp4\r\n\r\n" +
                sound);
  EXPECT_FAILURE(FileError, notFound,
                 send({.url = server.url("/upload"),
                       .parts = {{.name = "file", .file = folder.path() / "no"}}}));
}

TEST_F(HttpClientTest, RepliesIntoFiles) {
  const TemporaryFolder folder;
  const std::filesystem::path file = folder.path() / "reply";
  const std::string elsewhere = (folder.path() / "elsewhere").string();
  writeFile(elsewhere, "kept");
  std::filesystem::create_symlink(elsewhere, file);
  server.answer("/large", {.status = 500, .body = std::string(3 << 20, 'x')});
  const HttpResponse response = send({.url = server.url("/large"), .into = file});
  EXPECT_EQ(response.status, 500);
  EXPECT_EQ(response.body, "");
  EXPECT_EQ(readFile(file), std::string(3 << 20, 'x'));
  EXPECT_EQ(readFile(elsewhere), "kept");
  EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0600));

  // A file that may not grow is like a full disk.
  const auto bySignal = std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  const rlimit little{1 << 20, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &little), 0);
  EXPECT_FAILURE(FileError, tooLarge, send({.url = server.url("/large"), .into = file}));
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
  static_cast<void>(std::signal(SIGXFSZ, bySignal));
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_FAILURE(FileError, notFound, send({.url = server.url("/large"), .into = file / "no"}));
}

TEST_F(HttpClientTest, WhatFailsAndHow) {
  server.answer("/hang", {.manner = Manner::hanging});
  server.answer("/half", {.body = "abcdef", .manner = Manner::halfHanging});
  server.answer("/cut", {.body = "abcdef", .manner = Manner::cutOff});
  server.answer("/short", {.body = "abc", .saidLength = 6});
  server.answer("/none", {.body = "", .manner = Manner::raw});
  server.answer("/garbage", {.body = "SSH-2.0-x\r\n", .manner = Manner::raw});
  server.answer("/huge", {.body = std::string(1 << 20, 'h'), .times = 200});
  server.answer("/endless", {.body = "HTTP/1.1 200 OK\r\n\r\n" + std::string(2 << 20, 'e'),
                             .manner = Manner::raw});
  server.answer("/drip", {.body = std::string(100'000, 'd'), .manner = Manner::byteByByte});
  const std::string ours = server.url();
  std::string closed;
  {
    const LoopbackServer gone;
    closed = gone.url();
  }
  const std::string tls = "https" + ours.substr(4);
  for (const auto& [url, kind, cause] : std::vector<std::tuple<std::string, Kind, std::string>>{
           {ours + "/hang", Kind::timeout, "没有回应"},
           {ours + "/half", Kind::timeout, "没有回应"},
           {ours + "/drip", Kind::timeout, "没有回复完"},
           {ours + "/cut", Kind::connection, "断开"},
           {ours + "/short", Kind::connection, "断开"},
           {ours + "/none", Kind::connection, "断开"},
           {ours + "/garbage", Kind::notHttp, "不是 HTTP"},
           {ours + "/huge", Kind::tooLarge, "1 MiB"},
           {ours + "/endless", Kind::tooLarge, "1 MiB"},
           {closed, Kind::connection, "拒绝了连接"},
           {tls, Kind::connection, "加密连接"},
           {"https://no.invalid/secret-path", Kind::connection, "找不到主机 no.invalid"},
           {"http://8.8.8.8/", Kind::refused, "https://"},
           {"ftp://127.0.0.1/", Kind::refused, "https://"},
           {"file:///etc/passwd", Kind::refused, "https://"},
           {"/v1/messages", Kind::refused, "https://"},
           {"127.0.0.1:80/v1", Kind::refused, "https://"},
           {"https://a b/", Kind::badURL, "写法"},
           {"https://", Kind::badURL, "写法"},
           {"https://host:99999/", Kind::badURL, "写法"}}) {
    SCOPED_TRACE(url);
    try {
      const bool isSlow = kind == Kind::timeout;
      static_cast<void>(send({.url = url,
                              .idleTimeout = isSlow ? 300ms : 20s,
                              .wholeTimeout = isSlow ? 1s : 20s,
                              .maxReply = 1 << 20}));
      ADD_FAILURE() << "no failure";
    } catch (const HttpError& failure) {
      const std::string text = failure.what();
      EXPECT_EQ(failure.kind(), kind) << text;
      EXPECT_NE(text.find(cause), std::string::npos) << text;
      EXPECT_EQ(text.find("secret-path"), std::string::npos) << text;
    }
  }
  EXPECT_FAILURE(HttpError, refused,
                 send({.url = ours + "/hang", .headers = {{"Key", "a\r\nb: c"}}}));
}

TEST_F(HttpClientTest, StopsAtOnce) {
  server.answer("/hang", {.manner = Manner::hanging});
  std::stop_source stop;
  auto sent = std::async(std::launch::async, [&] {
    return client->send({.url = server.url("/hang")}, stop.get_token());
  });
  static_cast<void>(server.awaitRequest());
  const auto asked = std::chrono::steady_clock::now();
  stop.request_stop();
  EXPECT_THROW(sent.get(), CancellationError);
  EXPECT_LT(std::chrono::steady_clock::now() - asked, 5s);
  server.awaitQuiet();
  EXPECT_THROW(static_cast<void>(client->send({.url = server.url("/hang")}, stop.get_token())),
               CancellationError);
  EXPECT_EQ(server.requests().size(), 1U);
}

TEST(PrivateAddress, ByItsNumbers) {
  constexpr const char* machine = "127.0.0.1 127.255.3.4 ::1 ::ffff:127.0.0.1";
  constexpr const char* network =
      "10.1.2.3 172.16.0.1 172.31.255.255 192.168.9.9 169.254.1.1 fe80::1 fd00::1 ::ffff:10.0.0.1";
  constexpr const char* others =
      "172.15.255.255 172.32.0.0 192.169.0.1 0.0.0.0 8.8.8.8 :: fe00::1 2001:db8::1 ::ffff:8.8.8.8";
  for (const auto& [list, isLoopback, isPrivate] :
       {std::tuple(machine, true, true), {network, false, true}, {others, false, false}}) {
    std::istringstream words(list);
    for (std::string word; words >> word;) {
      sockaddr_storage address{};
      const bool isIPv4 = word.find(':') == std::string::npos;
      address.ss_family = isIPv4 ? AF_INET : AF_INET6;
      void* const number =
          isIPv4 ? static_cast<void*>(&reinterpret_cast<sockaddr_in&>(address).sin_addr)
                 : &reinterpret_cast<sockaddr_in6&>(address).sin6_addr;
      ASSERT_EQ(::inet_pton(address.ss_family, word.c_str(), number), 1);
      const auto& plain = reinterpret_cast<const sockaddr&>(address);
      EXPECT_EQ(isPrivateAddress(plain), isPrivate) << word;
      EXPECT_EQ(isLoopbackAddress(plain), isLoopback) << word;
    }
  }
}

}  // namespace
}  // namespace nomely::test
