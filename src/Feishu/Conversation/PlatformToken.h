#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>

#include "Feishu/FeishuAccount.h"
#include "Feishu/Protocol/FeishuAPI.h"
#include "Platform/Time/Clock.h"

namespace nomely {

// The right to ask the platform in the account's name, kept until five minutes before it ends. Safe
// on any thread.
class PlatformToken {
 public:
  // What is referred to must outlive it.
  PlatformToken(FeishuAPI::Platform platform, const FeishuAccount& account, const Clock& clock)
      : platform_(std::move(platform)), account_(account), clock_(clock) {}

  // Blocks while a new one is fetched; who asks meanwhile gets that one, or its failure. Throws as
  // FeishuAPI::fetchToken does.
  [[nodiscard]] std::string get(const std::stop_token& stop);

 private:
  // A token, or on the way to one.
  struct Fetch {
    std::string appId;
    std::string appSecret;
    bool isDone = false;
    std::exception_ptr failure = {};
    std::string value = {};
    Moment renewal = {};
  };

  [[nodiscard]] bool isGood(const Fetch& fetch) const;
  void run(Fetch& fetch, const std::stop_token& stop);

  FeishuAPI::Platform platform_;
  const FeishuAccount& account_;
  const Clock& clock_;
  std::mutex mutex_;
  std::condition_variable_any done_;
  std::shared_ptr<Fetch> latest_;  // what it points to is guarded too
};

}  // namespace nomely
