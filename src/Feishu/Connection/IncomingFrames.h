#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Feishu/Connection/FeishuEvents.h"
#include "Feishu/Connection/FragmentJoiner.h"
#include "Feishu/Connection/FrameSender.h"
#include "Feishu/Protocol/FeishuFrame.h"

namespace nomely {

// Makes events of the messages that come over the WebSocket. Whatever is no event is dropped. Lives
// on the bridge's queue.
class IncomingFrames {
 public:
  // `events` must outlive it.
  IncomingFrames(FeishuEvents& events, std::shared_ptr<FrameSender> sender)
      : events_(events), sender_(std::move(sender)) {}

  void handleIncomingData(std::string_view bytes);

 private:
  // `original` is what is acknowledged.
  void handOver(const std::string& payload, const FeishuFrame& original);

  FeishuEvents& events_;
  std::shared_ptr<FrameSender> sender_;
  FragmentJoiner fragments_;
};

}  // namespace nomely
