#include "Support/LoopbackServer.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <sstream>
#include <stdexcept>

#include <fmt/format.h>
#include <sys/socket.h>

#include "Platform/Text/Ascii.h"
#include "Platform/Text/Unicode.h"
#include "Support/Deadline.h"

namespace nomely::test {
namespace {

// Until `text` is that long, or has a head when no length is known; false when the client left
// first, or speaks no HTTP.
bool receive(int socket, std::string& text, std::size_t length) {
  std::array<char, 1 << 16> buffer{};
  while (text.size() < length) {
    const ssize_t count = ::recv(socket, buffer.data(), buffer.size(), 0);
    if (count <= 0) return false;
    text.append(buffer.data(), static_cast<std::size_t>(count));
    if (text.front() < 'A' || text.front() > 'Z') return false;
    if (length == std::string::npos && text.find("\r\n\r\n") != std::string::npos) return true;
  }
  return true;
}

// Until the client leaves or the server ends.
void hang(int socket) {
  char ignored = 0;
  while (::recv(socket, &ignored, 1, 0) > 0) continue;
}

LoopbackServer::Request parsedHead(const std::string& head) {
  LoopbackServer::Request request;
  std::istringstream lines(head);
  lines >> request.method >> request.target;
  for (std::string line; std::getline(lines, line);)
    if (const std::size_t colon = line.find(':'); colon != std::string::npos)
      request.headers[loweredAscii(line.substr(0, colon))] =
          trimSpaceAndBreaks(std::string_view(line).substr(colon + 1));
  return request;
}

}  // namespace

std::string LoopbackServer::url(std::string_view path) const {
  return fmt::format("http://127.0.0.1:{}{}", port(), path);
}

void LoopbackServer::answer(const std::string& path, Answer answer) {
  answerInTurn(path, {std::move(answer)});
}

void LoopbackServer::answerInTurn(const std::string& path, std::vector<Answer> answers) {
  answer(path, [answers = std::move(answers), next = std::make_shared<std::atomic<std::size_t>>(0)](
                   const Request&) { return answers[std::min((*next)++, answers.size() - 1)]; });
}

void LoopbackServer::answer(const std::string& path, Answering answering) {
  const std::lock_guard lock(mutex_);
  answers_[path] = std::move(answering);
}

std::vector<LoopbackServer::Request> LoopbackServer::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

LoopbackServer::Request LoopbackServer::awaitRequest(std::size_t count) const {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, longestWait, [&] { return requests_.size() >= count; }))
    throw std::runtime_error("no request came in time");
  return requests_.back();
}

void LoopbackServer::serve(int socket) {
  std::string text;
  if (!receive(socket, text, std::string::npos)) return;
  const std::size_t bodyStart = text.find("\r\n\r\n") + 4;
  Request request = parsedHead(text.substr(0, bodyStart - 2));
  if (const auto said = request.headers.find("content-length"); said != request.headers.end())
    if (!receive(socket, text, bodyStart + std::stoull(said->second))) return;
  request.body = text.substr(bodyStart);
  const Answer answer = answerTo(request);
  {
    const std::lock_guard lock(mutex_);
    requests_.push_back(std::move(request));
    changed_.notify_all();
  }
  send(socket, answer);
}

LoopbackServer::Answer LoopbackServer::answerTo(const Request& request) {
  Answering answering;
  {
    const std::lock_guard lock(mutex_);
    std::string path = request.target.substr(0, request.target.find('?'));
    auto found = answers_.find(path);
    while (found == answers_.end() && path.size() > 1) {
      path.resize(path.rfind('/', path.size() - 2) + 1);
      found = answers_.find(path);
    }
    if (found != answers_.end()) answering = found->second;
  }
  return answering ? answering(request) : Answer{.status = 404, .body = "nothing here"};
}

void LoopbackServer::send(int socket, const Answer& answer) const {
  if (answer.takeOver) return answer.takeOver(socket);
  if (answer.manner == Manner::hanging) return hang(socket);
  if (answer.manner == Manner::raw) {
    static_cast<void>(sendAll(socket, answer.body));
    return;
  }
  std::string head =
      fmt::format("HTTP/1.1 {} Told\r\nConnection: close\r\nContent-Length: {}\r\n", answer.status,
                  answer.saidLength.value_or(answer.body.size() * answer.times));
  for (const auto& [name, value] : answer.headers) head += fmt::format("{}: {}\r\n", name, value);
  if (!sendAll(socket, head + "\r\n")) return;
  const std::string_view body = answer.body;
  switch (answer.manner) {
    case Manner::byteByByte:
      for (const char& byte : body) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (!sendAll(socket, {&byte, 1})) return;
      }
      return;
    case Manner::cutOff:
      static_cast<void>(sendAll(socket, body.substr(0, body.size() / 2)));
      return;
    case Manner::halfHanging:
      if (sendAll(socket, body.substr(0, body.size() / 2))) hang(socket);
      return;
    default:
      for (std::size_t i = 0; i < answer.times && sendAll(socket, body); ++i) continue;
  }
}

std::string LoopbackServer::Request::part(std::string_view name) const {
  const std::size_t equals = headers.at("content-type").find("boundary=");
  const std::string boundary = "--" + headers.at("content-type").substr(equals + 9);
  const std::string sought = fmt::format("name=\"{}\"", name);
  for (std::size_t begin = body.find(boundary); begin != std::string::npos;) {
    const std::size_t end = body.find(boundary, begin + 1);
    const std::string part = body.substr(begin, end == std::string::npos ? end : end - begin);
    const std::size_t valueStart = part.find("\r\n\r\n");
    if (valueStart != std::string::npos &&
        part.substr(0, valueStart).find(sought) != std::string::npos)
      return part.substr(boundary.size() + 2, part.size() - boundary.size() - 4);
    begin = end;
  }
  return {};
}

}  // namespace nomely::test
