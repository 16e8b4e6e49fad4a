#include "Feishu/Platform/FeishuPlatform.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "Support/Deadline.h"

namespace nomely::test {
namespace {

using nlohmann::json;

constexpr std::int32_t serviceID = 7;
constexpr std::string_view messagesPath = "/open-apis/im/v1/messages/";
constexpr const char* tokenPath = "/open-apis/auth/v3/tenant_access_token/internal";
constexpr const char* endpointPath = "/callback/ws/endpoint";

LoopbackServer::Answer reply(const json& body) {
  return {.body = body.dump(), .headers = {{"Content-Type", "application/json"}}};
}

LoopbackServer::Answer refusal(int code) {
  return reply({{"code", code}, {"msg", "refused"}});
}

// A member of a JSON text, or nothing.
std::string member(const std::string& text, const json::json_pointer& where) {
  const json whole = json::parse(text, nullptr, false);
  if (whole.is_discarded() || !whole.contains(where) || !whole.at(where).is_string()) return {};
  return whole.at(where).get<std::string>();
}

bool isJson(const LoopbackServer::Request& request) {
  const auto type = request.headers.find("content-type");
  return type != request.headers.end() && type->second.starts_with("application/json");
}

}  // namespace

FeishuPlatform::FeishuPlatform()
    : sockets_(server_, "/ws",
               {.onOpen = [this](const std::shared_ptr<WebSocketPeer>& peer) { opened(peer); },
                .onFrame = [this](WebSocketPeer& peer,
                                  const WebSocketFrame& frame) { received(peer, frame); }}) {
  server_.answer(endpointPath, [this](const Request& request) {
    return counted(Call::endpoint, [&] { return endpointReply(request); });
  });
  server_.answer(tokenPath, [this](const Request& request) {
    return counted(Call::token, [&] { return tokenReply(request); });
  });
  server_.answer(std::string(messagesPath), [this](const Request& request) {
    const std::string path = request.target.substr(messagesPath.size());
    const std::size_t slash = std::min(path.find('/'), path.size() - 1);
    const std::string rest = path.substr(slash + 1);
    const Call call = rest == "reply"       ? Call::reply
                      : rest == "reactions" ? Call::reaction
                                            : Call::resource;
    return counted(call, [&] { return messageReply(path.substr(0, slash), rest, request); });
  });
  redelivering_ = std::jthread([this](std::stop_token stop) { redeliverInTime(stop); });
}

FeishuPlatform::~FeishuPlatform() = default;

// ---- requests ----

LoopbackServer::Answer FeishuPlatform::counted(Call call, const std::function<Answer()>& usual) {
  std::optional<Answer> failure;
  {
    const std::lock_guard lock(mutex_);
    ++calls_[call];
    Failure& planned = failures_[call];
    if (planned.times > 0) {
      --planned.times;
      failure = planned.answer;
    }
  }
  Answer answer = failure ? *failure : usual();
  changed_.notify_all();
  return answer;
}

LoopbackServer::Answer FeishuPlatform::endpoint(std::optional<int> pingInterval) const {
  const std::string url =
      fmt::format("{}?device_id=1&service_id={}&ticket=t", sockets_.url(), serviceID);
  json data = {{"URL", url}};
  if (pingInterval)
    data["ClientConfig"] = {{"PingInterval", *pingInterval}, {"ReconnectCount", -1}};
  return reply({{"code", 0}, {"msg", ""}, {"data", data}});
}

bool FeishuPlatform::isOurs(const Request& request, const char* id, const char* secret) const {
  const std::lock_guard lock(mutex_);
  return isJson(request) && member(request.body, json::json_pointer(id)) == "cli_test" &&
         member(request.body, json::json_pointer(secret)) == secret_;
}

LoopbackServer::Answer FeishuPlatform::endpointReply(const Request& request) {
  if (!isOurs(request, "/AppID", "/AppSecret")) return refusal(514);
  return endpoint();
}

LoopbackServer::Answer FeishuPlatform::tokenReply(const Request& request) {
  if (!isOurs(request, "/app_id", "/app_secret")) return refusal(10014);
  const std::lock_guard lock(mutex_);
  const std::string token = fmt::format("t-{}", calls_[Call::token]);
  tokens_.insert(token);
  return reply({{"code", 0}, {"msg", "ok"}, {"tenant_access_token", token}, {"expire", 7200}});
}

LoopbackServer::Answer FeishuPlatform::messageReply(const std::string& id, const std::string& rest,
                                                    const Request& request) {
  const auto right = request.headers.find("authorization");
  constexpr std::string_view bearer = "Bearer ";
  std::unique_lock lock(mutex_);
  if (right == request.headers.end() || !right->second.starts_with(bearer) ||
      !tokens_.contains(right->second.substr(bearer.size())))
    return {.status = 400, .body = R"({"code":99991663,"msg":"token invalid"})"};
  constexpr std::string_view resources = "resources/";
  if (request.method != (rest.starts_with(resources) ? "GET" : "POST"))
    complaints_.push_back("not that way: " + request.method + " " + rest);
  if (rest.starts_with(resources))
    return resourceReply(std::string_view(rest).substr(resources.size()));
  std::string line;
  if (!isJson(request)) complaints_.push_back("not said to be JSON: " + rest);
  if (rest == "reply") {
    const std::string content = member(request.body, json::json_pointer("/content"));
    const std::string text = member(content, json::json_pointer("/text"));
    records_[id].replies.push_back(text);
    line = fmt::format("{}: reply: {}", id, text);
    if (member(request.body, json::json_pointer("/msg_type")) != "text") line.clear();
  } else if (rest == "reactions") {
    const std::string emoji = member(request.body, json::json_pointer("/reaction_type/emoji_type"));
    records_[id].reactions.push_back(emoji);
    if (!emoji.empty()) line = fmt::format("{}: reaction: {}", id, emoji);
  }
  if (line.empty()) complaints_.push_back("no such request: " + rest);
  lock.unlock();
  tell(line);
  return reply({{"code", 0}, {"msg", "success"}});
}

LoopbackServer::Answer FeishuPlatform::resourceReply(std::string_view key) {
  const std::size_t question = std::min(key.find('?'), key.size());
  const std::string_view kind = key.substr(question);
  if (kind != "?type=image" && kind != "?type=file")
    complaints_.push_back("no kind of media: " + std::string(kind));
  const auto found = media_.find(std::string(key.substr(0, question)));
  if (found == media_.end()) return {.status = 404, .body = "no such media"};
  return {.body = found->second, .headers = {{"Content-Type", "application/octet-stream"}}};
}

// ---- the connection ----

void FeishuPlatform::opened(const std::shared_ptr<WebSocketPeer>& peer) {
  std::vector<std::string> undelivered;
  {
    const std::lock_guard lock(mutex_);
    peer_ = peer;
    for (const auto& [number, id] : unacknowledged_)
      if (records_[id].deliveries == 0) undelivered.push_back(id);
  }
  tell("connected");
  deliver(undelivered);
}

void FeishuPlatform::received(WebSocketPeer& peer, const WebSocketFrame& frame) {
  if (frame.opcode != WebSocketFrame::Opcode::binary) return;
  const auto decoded = FeishuFrame::decode(frame.payload);
  if (!decoded) return complain("a frame that can't be read");
  if (decoded->method == 1) return acknowledged(*decoded);
  const bool isPing = *decoded == FeishuFrame{.service = serviceID, .headers = {{"type", "ping"}}};
  if (!isPing) return complain("a control frame that is no ping");
  locked([&] { ++pings_; });
  changed_.notify_all();
  const FeishuFrame pong{.service = serviceID, .headers = {{"type", "pong"}}, .payload = "{}"};
  peer.sendBinary(pong.encode());
}

void FeishuPlatform::acknowledged(const FeishuFrame& frame) {
  std::string id;
  {
    const std::lock_guard lock(mutex_);
    const auto sent = sent_.find(frame.seqID);
    if (sent != sent_.end()) id = sent->second;
    Record& record = records_[id];
    ++record.acks;
    unacknowledged_.erase(record.number);
  }
  const bool isRight = !id.empty() && frame == FeishuFrame{.seqID = frame.seqID,
                                                           .logID = frame.seqID + 1'000'000,
                                                           .service = serviceID,
                                                           .method = 1,
                                                           .payload = R"({"code":200})"};
  if (!isRight) complain("an acknowledgement of " + id + " that is not as it should be");
  changed_.notify_all();
  tell(id + ": acknowledged");
}

FeishuFrame FeishuPlatform::frameOf(const std::string& id, std::string payload) {
  return {.service = serviceID,
          .method = 1,
          .headers = {{"type", "event"}, {"message_id", "frame_" + id}, {"sum", "1"}, {"seq", "0"}},
          .payloadType = "json",
          .payload = std::move(payload)};
}

std::vector<std::string> FeishuPlatform::framesOf(const std::string& id) {
  Record& record = records_.at(id);
  const bool isFirst = record.deliveries++ == 0;
  record.delivered = std::chrono::steady_clock::now();
  const std::string payload = record.message->payload();
  const std::size_t count = record.pieces.count;
  const std::size_t length = (payload.size() + count - 1) / count;
  std::vector<std::size_t> order;
  if (isFirst) order = record.pieces.order;
  if (order.empty()) {
    order.resize(count);
    std::iota(order.begin(), order.end(), 0);
  }
  std::vector<std::string> frames;
  for (const std::size_t piece : order) {
    FeishuFrame frame =
        frameOf(id, payload.substr(std::min(piece * length, payload.size()), length));
    frame.headers[2].value = std::to_string(count);
    frame.headers[3].value = std::to_string(piece);
    frame.seqID = nextSeqID_++;
    frame.logID = frame.seqID + 1'000'000;
    sent_[frame.seqID] = id;
    frames.push_back(frame.encode());
  }
  return frames;
}

void FeishuPlatform::deliver(const std::vector<std::string>& ids) {
  const std::lock_guard one(delivering_);
  for (const std::string& id : ids) {
    const std::shared_ptr<WebSocketPeer> to = peer();
    if (!to || !to->isOpen()) return;
    for (std::string& frame : locked([&] { return framesOf(id); }))
      to->sendBinary(std::move(frame));
  }
}

void FeishuPlatform::send(const PhoneMessage& message, Pieces pieces) {
  {
    const std::lock_guard lock(mutex_);
    Record& record = records_[message.id()];
    record.message = message;
    record.pieces = std::move(pieces);
    if (record.number == 0) record.number = nextNumber_++;
    unacknowledged_[record.number] = message.id();
  }
  deliver({message.id()});
}

void FeishuPlatform::redeliverAfter(std::chrono::milliseconds delay) {
  const std::lock_guard lock(mutex_);
  redeliverAfter_ = delay;
  changed_.notify_all();
}

void FeishuPlatform::redeliverInTime(const std::stop_token& stop) {
  while (!stop.stop_requested()) {
    std::vector<std::string> due;
    {
      std::unique_lock lock(mutex_);
      if (!changed_.wait(lock, stop, [this] { return redeliverAfter_.count() > 0; })) return;
      // As often as that is often enough to look.
      changed_.wait_for(lock, stop, redeliverAfter_ / 4, [] { return false; });
      const Time now = std::chrono::steady_clock::now();
      for (const auto& [number, id] : unacknowledged_)
        if (now - records_[id].delivered >= redeliverAfter_) due.push_back(id);
    }
    deliver(due);
  }
}

void FeishuPlatform::cut() {
  if (const auto open = peer()) open->cut();
}

// ---- what the bot did ----

const FeishuPlatform::Record& FeishuPlatform::record(const std::string& id) const {
  static const Record none;
  const auto found = records_.find(id);
  return found == records_.end() ? none : found->second;
}

std::vector<std::string> FeishuPlatform::unacknowledged() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> ids;
  ids.reserve(unacknowledged_.size());
  for (const auto& [number, id] : unacknowledged_) ids.push_back(id);
  return ids;
}

void FeishuPlatform::complain(const std::string& text) {
  locked([&] { complaints_.push_back(text); });
  tell("complaint: " + text);
}

void FeishuPlatform::tell(const std::string& line) const {
  const auto tell = locked([&] { return tell_; });
  changed_.notify_all();
  if (tell && !line.empty()) tell(line);
}

template <typename Condition>
void FeishuPlatform::await(const std::string& what, Condition condition) const {
  std::unique_lock lock(mutex_);
  if (changed_.wait_for(lock, longestWait, condition)) return;
  std::string complaints;
  for (const std::string& complaint : complaints_) complaints += "; " + complaint;
  throw std::runtime_error(fmt::format("{} did not come in time{}", what, complaints));
}

void FeishuPlatform::awaitAck(const std::string& id, std::size_t count) const {
  await("ack of " + id, [&] { return record(id).acks >= count; });
}

void FeishuPlatform::awaitReaction(const std::string& id, const std::string& emoji) const {
  await(emoji + " for " + id, [&] { return std::ranges::count(record(id).reactions, emoji) > 0; });
}

std::string FeishuPlatform::awaitReply(const std::string& id, std::size_t count) const {
  await("reply to " + id, [&] { return record(id).replies.size() >= count; });
  const std::lock_guard lock(mutex_);
  return record(id).replies[count - 1];
}

void FeishuPlatform::awaitCalls(Call call, std::size_t count) const {
  await("request", [&] { return calls_[call] >= count; });
}

void FeishuPlatform::awaitPings(std::size_t count) const {
  await("ping", [&] { return pings_ >= count; });
}

void FeishuPlatform::awaitUnacknowledged(std::size_t atMost,
                                         std::chrono::milliseconds longest) const {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, longest, [&] { return unacknowledged_.size() <= atMost; });
}

}  // namespace nomely::test
