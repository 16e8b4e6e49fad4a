#include "AI/Vendor/AIService.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "AI/Vendor/AIError.h"
#include "AI/Vendor/ReplyText.h"
#include "Platform/Text/JsonReading.h"

namespace nomely {
namespace {

const Json* member(const Json* object, const char* key) {
  if (object == nullptr || !object->is_object()) return nullptr;
  const auto found = object->find(key);
  return found == object->end() ? nullptr : &*found;
}

const Json* first(const Json* array) {
  return array != nullptr && array->is_array() && !array->empty() ? &array->front() : nullptr;
}

bool says(const Json* value, std::string_view text) {
  return value != nullptr && value->is_string() && value->get_ref<const std::string&>() == text;
}

Json message(const char* role, const std::string& content) {
  return {{"role", role}, {"content", content}};
}

Json claudeBody(const std::string& model, const AIService::Prompt& prompt) {
  return {{"model", model},
          {"max_tokens", prompt.maxTokens},
          {"system", prompt.system},
          {"messages", Json::array({message("user", prompt.user)})}};
}

Json openAIBody(const std::string& model, const AIService::Prompt& prompt) {
  return {
      {"model", model},
      {"max_tokens", prompt.maxTokens},
      {"messages", Json::array({message("system", prompt.system), message("user", prompt.user)})}};
}

AIService::Reply reply(const Json* text, bool isCutOff, const char* failure) {
  if (text == nullptr || !text->is_string()) throw AIError(AIError::Kind::decodingError, failure);
  return {text->get<std::string>(), isCutOff};
}

AIService::Reply claudeReply(const Json& document) {
  return reply(member(first(member(&document, "content")), "text"),
               says(member(&document, "stop_reason"), "max_tokens"), "无法解析 Claude 响应");
}

AIService::Reply openAIReply(const Json& document) {
  const Json* const choice = first(member(&document, "choices"));
  return reply(member(member(choice, "message"), "content"),
               says(member(choice, "finish_reason"), "length"), "无法解析 OpenAI 响应");
}

}  // namespace

AIService::AIService(AIConfig config, HttpClient& http) : config_(std::move(config)), http_(http) {}

AIService::Reply AIService::chat(const Prompt& prompt, const std::stop_token& stop) {
  if (config_.apiKey.empty()) throw AIError(AIError::Kind::notConfigured);
  return queue_.sync([&] {
    const HttpResponse response = send(request(prompt), stop);
    if (response.status != 200)
      throw AIError(AIError::Kind::apiError,
                    fmt::format("HTTP {}: {}", response.status,
                                quotedReply(response.body, std::array{config_.apiKey})));
    const Json document = readJson(response.body);
    return isClaude() ? claudeReply(document) : openAIReply(document);
  });
}

HttpRequest AIService::request(const Prompt& prompt) const {
  HttpRequest request;
  request.url = config_.effectiveBaseURL() + (isClaude() ? "/v1/messages" : "/v1/chat/completions");
  request.headers = {{"Content-Type", "application/json"}};
  if (isClaude()) {
    request.headers.emplace_back("x-api-key", config_.apiKey);
    request.headers.emplace_back("anthropic-version", "2023-06-01");
  } else {
    request.headers.emplace_back("Authorization", "Bearer " + config_.apiKey);
  }
  const Json body =
      isClaude() ? claudeBody(config_.model, prompt) : openAIBody(config_.model, prompt);
  request.body = body.dump(-1, ' ', false, Json::error_handler_t::replace);
  // A model on one's own machine may think for minutes before its first word.
  if (config_.provider == AIConfig::Provider::custom && config_.timeout) {
    const std::chrono::seconds limit(*config_.timeout);
    request.idleTimeout = std::max<std::chrono::milliseconds>(request.idleTimeout, limit);
    request.wholeTimeout = std::max<std::chrono::milliseconds>(request.wholeTimeout, limit);
  }
  return request;
}

HttpResponse AIService::send(const HttpRequest& request, const std::stop_token& stop) const {
  try {
    return http_.send(request, stop);
  } catch (const HttpError& error) {
    if (error.kind() == HttpError::Kind::badURL)
      throw AIError(AIError::Kind::networkError,
                    "无效的 API 地址：" +
                        quotedReply(config_.effectiveBaseURL(), std::array{config_.apiKey}));
    if (error.kind() == HttpError::Kind::notHttp)
      throw AIError(AIError::Kind::networkError, "无效响应");
    throw;
  }
}

}  // namespace nomely
