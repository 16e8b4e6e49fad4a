#include "Feishu/Protocol/FeishuAPI.h"

#include <algorithm>
#include <condition_variable>
#include <limits>
#include <mutex>

#include <fmt/format.h>

#include "Core/Extensions/TextNumbers.h"
#include "Platform/Cancellation.h"
#include "Platform/Network/VendorRoot.h"
#include "Platform/Text/JsonReading.h"

namespace nomely::FeishuAPI {
namespace {

constexpr int ok = 200;
constexpr auto json = "application/json";
constexpr auto jsonInUtf8 = "application/json; charset=utf-8";

// A member of a reply, absent when it is missing or null.
const Json* memberIn(const Json& object, const char* name) {
  const auto found = object.find(name);
  return found == object.end() || found->is_null() ? nullptr : &*found;
}

const Json& require(const Json& value, bool isOfItsType, const char* name) {
  if (!isOfItsType)
    throw JsonError("json.shape", fmt::format("飞书的回复里 {} 的写法不对，请稍后重试", name));
  return value;
}

std::optional<std::int64_t> integerIn(const Json& object, const char* name) {
  constexpr std::uint64_t most = std::numeric_limits<std::int64_t>::max();
  const Json* const value = memberIn(object, name);
  if (value == nullptr) return std::nullopt;
  const bool fits = value->is_number_unsigned() ? value->get<std::uint64_t>() <= most
                                                : value->is_number_integer();
  return require(*value, fits, name).get<std::int64_t>();
}

std::optional<std::string> textIn(const Json& object, const char* name) {
  const Json* const value = memberIn(object, name);
  if (value == nullptr) return std::nullopt;
  return require(*value, value->is_string(), name).get<std::string>();
}

const Json* objectIn(const Json& object, const char* name) {
  const Json* const value = memberIn(object, name);
  return value == nullptr ? nullptr : &require(*value, value->is_object(), name);
}

// What every reply has to have.
struct Reply {
  Json document;
  std::int64_t code;
};

Reply replyIn(const HttpResponse& response) {
  Json document = readJson(response.body);
  const auto code = integerIn(require(document, document.is_object(), "JSON"), "code");
  require(document, code.has_value(), "code");
  return {std::move(document), *code};
}

std::string textOf(const Json& document) {
  return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

HttpRequest request(const Platform& platform, const std::string& path, const char* contentType,
                    const Json& body) {
  return {.url = platform.root + path,
          .headers = {{"Content-Type", contentType}},
          .body = textOf(body),
          .wholeTimeout = std::chrono::minutes(1),
          .maxReply = std::uint64_t{1} << 20};
}

std::pair<std::string, std::string> authorization(const MessageAccess& message) {
  return {"Authorization", "Bearer " + message.token};
}

std::string messagePath(const MessageAccess& message) {
  if (!isSafeName(message.messageId)) throw FeishuError::invalidResponse();
  return "/open-apis/im/v1/messages/" + message.messageId;
}

void postToMessage(const Platform& platform, const MessageAccess& message, const char* what,
                   const Json& body, const std::stop_token& stop) {
  HttpRequest post = request(platform, messagePath(message) + what, jsonInUtf8, body);
  post.headers.push_back(authorization(message));
  static_cast<void>(platform.http.send(post, stop));
}

// A reply without the right form is told as one that can't be used.
HttpResponse sendExpectingHttp(const Platform& platform, const HttpRequest& request,
                               const std::stop_token& stop) {
  try {
    return platform.http.send(request, stop);
  } catch (const HttpError& error) {
    if (error.kind() == HttpError::Kind::notHttp) throw FeishuError::invalidResponse();
    throw;
  }
}

// A place among the few downloads that run at a time.
class DownloadPlace {
 public:
  explicit DownloadPlace(const std::stop_token& stop) {
    constexpr std::size_t most = 4;
    std::unique_lock lock(places().mutex);
    places().freed.wait(lock, stop, [] { return places().taken < most; });
    throwIfStopped(stop);
    ++places().taken;
  }
  ~DownloadPlace() {
    const std::lock_guard lock(places().mutex);
    --places().taken;
    places().freed.notify_one();
  }
  DownloadPlace(const DownloadPlace&) = delete;
  DownloadPlace& operator=(const DownloadPlace&) = delete;

 private:
  struct Places {
    std::mutex mutex;
    std::condition_variable_any freed;
    std::size_t taken = 0;
  };
  static Places& places() {
    static Places all;
    return all;
  }
};

}  // namespace

std::string platformRoot(const Environment& environment) {
  std::string root = vendorRoot(environment, "NOMELY_FEISHU_ROOT", "https://open.feishu.cn");
  while (root.ends_with('/')) root.pop_back();
  return root;
}

EndpointResult fetchEndpoint(const Platform& platform, const std::string& appId,
                             const std::string& appSecret, const std::stop_token& stop) {
  const HttpResponse response =
      sendExpectingHttp(platform,
                        request(platform, "/callback/ws/endpoint", json,
                                {{"AppID", appId}, {"AppSecret", appSecret}}),
                        stop);
  if (response.status != ok) throw FeishuError::httpError(response.status);
  const Reply reply = replyIn(response);
  const auto message = textIn(reply.document, "msg");
  const Json* const data = objectIn(reply.document, "data");
  const auto url = data == nullptr ? std::nullopt : textIn(*data, "URL");
  const Json* const settings = data == nullptr ? nullptr : objectIn(*data, "ClientConfig");
  const auto interval = settings == nullptr ? std::nullopt : integerIn(*settings, "PingInterval");
  if (reply.code != 0 || !url) throw FeishuError::apiError(reply.code, message.value_or("unknown"));
  EndpointResult result{.url = *url, .serviceID = extractServiceID(*url).value_or(0)};
  if (interval) result.pingInterval = static_cast<double>(*interval);
  return result;
}

std::optional<std::int32_t> extractServiceID(const std::string& url) {
  constexpr std::string_view name = "service_id";
  const std::string_view address = std::string_view(url).substr(0, url.find('#'));
  std::string_view query = address.substr(std::min(address.find('?'), address.size()));
  while (!query.empty()) {
    query.remove_prefix(1);
    const std::string_view item = query.substr(0, query.find('&'));
    query.remove_prefix(item.size());
    if (item.substr(0, item.find('=')) != name) continue;
    const auto number = parseDecimal(item.substr(std::min(name.size() + 1, item.size())));
    if (!number || *number != static_cast<std::int32_t>(*number)) return std::nullopt;
    return static_cast<std::int32_t>(*number);
  }
  return std::nullopt;
}

Token fetchToken(const Platform& platform, const std::string& appId, const std::string& appSecret,
                 const std::stop_token& stop) {
  constexpr std::int64_t usualLifetime = 7200;
  constexpr std::int64_t longestLifetime = 365 * 24 * 3600;
  const Reply reply = replyIn(
      platform.http.send(request(platform, "/open-apis/auth/v3/tenant_access_token/internal", json,
                                 {{"app_id", appId}, {"app_secret", appSecret}}),
                         stop));
  const auto token = textIn(reply.document, "tenant_access_token");
  const auto lifetime = integerIn(reply.document, "expire");
  if (reply.code != 0 || !token) throw FeishuError::tokenFailed(reply.code);
  // Whoever adds it to a time need not fear for it.
  return {*token, std::clamp(lifetime.value_or(usualLifetime), std::int64_t{0}, longestLifetime)};
}

bool isSafeName(std::string_view name) {
  constexpr std::size_t longest = 200;
  return !name.empty() && name.size() <= longest && std::ranges::all_of(name, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-';
  });
}

void replyToMessage(const Platform& platform, const MessageAccess& message, std::string_view text,
                    const std::stop_token& stop) {
  const Json content{{"text", text}};
  postToMessage(platform, message, "/reply", {{"msg_type", "text"}, {"content", textOf(content)}},
                stop);
}

void addReaction(const Platform& platform, const MessageAccess& message, const std::string& emoji,
                 const std::stop_token& stop) {
  const Json kind{{"emoji_type", emoji}};
  postToMessage(platform, message, "/reactions", Json::object({{"reaction_type", kind}}), stop);
}

void downloadResource(const Platform& platform, const MessageAccess& message,
                      const std::string& key, Resource resource,
                      const std::filesystem::path& target, const std::stop_token& stop) {
  if (!isSafeName(key)) throw FeishuError::invalidResponse();
  const HttpRequest request{
      .method = HttpRequest::Method::get,
      .url = fmt::format("{}{}/resources/{}?type={}", platform.root, messagePath(message), key,
                         resource == Resource::image ? "image" : "file"),
      .headers = {authorization(message)},
      .wholeTimeout = std::chrono::minutes(10),
      .maxReply = std::uint64_t{100} << 20,
      .into = target};
  const DownloadPlace place(stop);
  const HttpResponse response = sendExpectingHttp(platform, request, stop);
  std::error_code ignored;
  if (response.status == ok && std::filesystem::file_size(target, ignored) > 0 && !ignored) return;
  std::filesystem::remove(target, ignored);
  throw response.status == ok ? FeishuError::invalidResponse()
                              : FeishuError::httpError(response.status);
}

}  // namespace nomely::FeishuAPI
