#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>

#include "Feishu/Protocol/FeishuError.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/System/Environment.h"

namespace nomely {

// The open platform's REST interface, a request a call. Calls block for a minute at most; they
// throw FeishuError, what the HTTP client throws, JsonError, and CancellationError at once when
// asked to stop. Any thread.
namespace FeishuAPI {

// Where it is asked.
struct Platform {
  HttpClient& http;
  std::string root;  // "https://host", without a "/" at its end
};
// The vendor's, or what NOMELY_FEISHU_ROOT says. Throws HttpError.
[[nodiscard]] std::string platformRoot(const Environment& environment);

struct EndpointResult {
  std::string url;
  std::int32_t serviceID = 0;
  std::optional<double> pingInterval = {};  // seconds
};
// The address for a long connection.
[[nodiscard]] EndpointResult fetchEndpoint(const Platform& platform, const std::string& appId,
                                           const std::string& appSecret,
                                           const std::stop_token& stop);
// "service_id" of the address: "wss://host/ws?service_id=7" → 7.
[[nodiscard]] std::optional<std::int32_t> extractServiceID(const std::string& url);

struct Token {
  std::string value;
  std::int64_t lifetime = 0;  // seconds
};
[[nodiscard]] Token fetchToken(const Platform& platform, const std::string& appId,
                               const std::string& appSecret, const std::stop_token& stop);

// Whether an id or key of a message may become part of an address or of a file's name: letters,
// digits, "_" and "-", at most 200 of them.
[[nodiscard]] bool isSafeName(std::string_view name);

// A message of the chat, and by which right it is asked for. Throws invalidResponse for an id that
// is no safe name.
struct MessageAccess {
  std::string messageId;
  std::string token;
};
// What the platform answers is not looked at.
void replyToMessage(const Platform& platform, const MessageAccess& message, std::string_view text,
                    const std::stop_token& stop);
void addReaction(const Platform& platform, const MessageAccess& message, const std::string& emoji,
                 const std::stop_token& stop);

enum class Resource { image, file };
// Writes what a message carries under `key` to the file `target`, which is replaced. More than 100
// MiB, and nothing at all, are failures. Four at a time; others wait.
void downloadResource(const Platform& platform, const MessageAccess& message,
                      const std::string& key, Resource resource,
                      const std::filesystem::path& target, const std::stop_token& stop);

}  // namespace FeishuAPI

}  // namespace nomely
