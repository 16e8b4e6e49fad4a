#pragma once

#include <functional>
#include <memory>

#include "Feishu/Connection/ConnectionStatus.h"
#include "Feishu/FeishuConfig.h"
#include "Feishu/FeishuContext.h"

namespace nomely {

// The chat bot: a long connection to the open platform, kept open while it is started, and what
// becomes of the messages that come over it. Calls return at once and may come from any thread;
// everything runs on a queue of its own.
class FeishuBridge {
 public:
  // Six failures in a row end the attempts, until `start` after `stop`.
  static constexpr const char* gaveUp = ConnectionStatus::gaveUp;
  static constexpr const char* notConfigured = ConnectionStatus::notConfigured;

  FeishuBridge(FeishuConfig config, FeishuContext context);
  // Ends the connection, and what is under way; returns when that has happened.
  ~FeishuBridge();
  FeishuBridge(const FeishuBridge&) = delete;
  FeishuBridge& operator=(const FeishuBridge&) = delete;

  // Called with the present status at once, and with each later one, on the bridge's queue.
  void setStatusObserver(std::function<void(const ConnectionStatus&)> observer);

  // Does nothing when the settings don't enable it or it has been started.
  void start();
  void stop();
  // A sender's right takes effect at once; other changes open the connection anew, or end it.
  void updateConfig(const FeishuConfig& config);

  [[nodiscard]] ConnectionStatus currentStatus() const;
  [[nodiscard]] FeishuConfig currentConfig() const;

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace nomely
