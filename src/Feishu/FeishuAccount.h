#pragma once

#include <mutex>
#include <utility>

#include "Feishu/FeishuConfig.h"

namespace nomely {

// The bot's settings as they hold at this moment, shared by everything that works for it. Safe on
// any thread.
class FeishuAccount {
 public:
  explicit FeishuAccount(FeishuConfig config) : config_(std::move(config)) {}

  [[nodiscard]] FeishuConfig config() const {
    const std::lock_guard lock(mutex_);
    return config_;
  }
  void set(FeishuConfig config) {
    const std::lock_guard lock(mutex_);
    config_ = std::move(config);
  }

 private:
  mutable std::mutex mutex_;
  FeishuConfig config_;
};

}  // namespace nomely
