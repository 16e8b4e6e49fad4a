#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Support/LoopbackListener.h"

namespace nomely::test {

// An HTTP/1.1 server on 127.0.0.1 that records what it is asked and answers as a test tells it,
// wrongly too. Each connection carries one request. What has no answer gets status 404. Safe on any
// thread; destruction breaks off what is under way.
//
//   LoopbackServer vendor;
//   vendor.answer("/v1/messages", {.body = R"({"content": [{"text": "好"}]})"});
//   vendor.answer("/slow", {.body = "abc", .manner = LoopbackServer::Manner::byteByByte});
class LoopbackServer {
 public:
  struct Request {
    std::string method;
    std::string target;                          // with what follows a "?"
    std::map<std::string, std::string> headers;  // names in lower case
    std::string body;

    // A part of a multipart/form-data body: its headers, an empty line, its value; or nothing.
    [[nodiscard]] std::string part(std::string_view name) const;
  };

  enum class Manner {
    whole,
    byteByByte,   // of the body, a millisecond apart
    cutOff,       // closes after half of the body
    hanging,      // takes the request and says nothing
    halfHanging,  // says nothing more after half of the body
    raw,          // `body` instead of any status line and header
  };

  struct Answer {
    int status = 200;
    std::string body = {};
    std::vector<std::pair<std::string, std::string>> headers = {};
    Manner manner = Manner::whole;
    std::size_t times = 1;                         // how often the body is sent
    std::optional<std::uint64_t> saidLength = {};  // Content-Length, where it is wrong
    // Called with the connection's socket in place of any answer, on the connection's thread; when
    // it returns the connection ends.
    std::function<void(int socket)> takeOver = {};
  };
  using Answering = std::function<Answer(const Request&)>;

  [[nodiscard]] std::uint16_t port() const { return listener_.port(); }
  // "http://127.0.0.1:40123", with `path` after it.
  [[nodiscard]] std::string url(std::string_view path = {}) const;

  // What `path` (without what follows a "?") answers from here on; one that ends in "/" answers for
  // everything below it.
  void answer(const std::string& path, Answer answer);
  // One after the other; the last one stays.
  void answerInTurn(const std::string& path, std::vector<Answer> answers);
  // Called on the connection's thread, with no lock held.
  void answer(const std::string& path, Answering answering);

  // Those that have come whole, in order.
  [[nodiscard]] std::vector<Request> requests() const;
  // The latest once `count` have come; throws when they don't in time.
  [[nodiscard]] Request awaitRequest(std::size_t count = 1) const;
  // Returns once every connection has ended from the client's side or ours; throws otherwise.
  void awaitQuiet() const { listener_.awaitQuiet(); }

 private:
  void serve(int socket);
  [[nodiscard]] Answer answerTo(const Request& request);
  void send(int socket, const Answer& answer) const;

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::map<std::string, Answering> answers_;
  std::vector<Request> requests_;
  LoopbackListener listener_{[this](int socket) { serve(socket); }};  // ends before all of that
};

}  // namespace nomely::test
