#pragma once

#include <cstdint>
#include <stop_token>
#include <string>

#include "AI/Vendor/AIConfig.h"
#include "Platform/Concurrency/SerialQueue.h"
#include "Platform/Network/HttpClient.h"

namespace nomely {

// Turns one system prompt and one user message into one reply, by the vendor of the settings that
// it was made with. Each call is one request: none is repeated, and none knows of another. One
// request at a time; safe on any thread.
class AIService {
 public:
  struct Prompt {
    std::string system;
    std::string user;
    std::int64_t maxTokens;
  };
  struct Reply {
    std::string text;       // as received, perhaps empty
    bool isCutOff = false;  // it ended at `maxTokens`
  };
  // What a face adds to a reply that is cut off.
  static constexpr std::string_view cutOffNotice = "AI 的回复达到了长度上限，内容可能不完整";

  // `http` must outlive it.
  AIService(AIConfig config, HttpClient& http);

  [[nodiscard]] const AIConfig& config() const { return config_; }

  // Blocks. Throws AIError, HttpError, JsonError when a reply is no JSON, and CancellationError at
  // once when asked to stop.
  [[nodiscard]] Reply chat(const Prompt& prompt, const std::stop_token& stop);

 private:
  [[nodiscard]] HttpRequest request(const Prompt& prompt) const;
  [[nodiscard]] HttpResponse send(const HttpRequest& request, const std::stop_token& stop) const;
  [[nodiscard]] bool isClaude() const { return config_.provider == AIConfig::Provider::claude; }

  AIConfig config_;
  HttpClient& http_;
  SerialQueue queue_{"com.nomely.ai"};
};

}  // namespace nomely
