#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "Feishu/Protocol/FeishuFrame.h"
#include "Platform/Network/WebSocketClient.h"

namespace nomely {

// The way to the platform: whichever WebSocket is open. Frames sent while none is are dropped. Safe
// on any thread.
class FrameSender {
 public:
  void send(const FeishuFrame& frame) {
    if (const auto socket = opened()) socket->send(frame.encode());
  }
  // The WebSocket from here on, or none; returns the one until then.
  std::shared_ptr<WebSocket> exchange(std::shared_ptr<WebSocket> socket) {
    const std::lock_guard lock(mutex_);
    return std::exchange(socket_, std::move(socket));
  }

 private:
  [[nodiscard]] std::shared_ptr<WebSocket> opened() {
    const std::lock_guard lock(mutex_);
    return socket_;
  }

  std::mutex mutex_;
  std::shared_ptr<WebSocket> socket_;
};

}  // namespace nomely
