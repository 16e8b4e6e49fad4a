#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "Platform/Settings/SecretBackend.h"

namespace nomely {

// Secrets of this process alone: under a test host nothing of the user's is touched. Safe on any
// thread.
class MemorySecrets final : public SecretBackend {
 public:
  [[nodiscard]] SecretLookup lookUp(std::string_view service, std::string_view account) override {
    const std::lock_guard guard(mutex_);
    const auto found = secrets_.find({std::string(service), std::string(account)});
    if (found == secrets_.end()) return {};
    return {SecretLookup::State::found, found->second};
  }
  SecretPlace store(std::string_view service, std::string_view account,
                    std::string_view value) override {
    const std::lock_guard guard(mutex_);
    secrets_[{std::string(service), std::string(account)}] = value;
    return SecretPlace::keyring;
  }
  void remove(std::string_view service, std::string_view account) override {
    const std::lock_guard guard(mutex_);
    secrets_.erase({std::string(service), std::string(account)});
  }

 private:
  std::mutex mutex_;
  std::map<std::pair<std::string, std::string>, std::string> secrets_;
};

}  // namespace nomely
