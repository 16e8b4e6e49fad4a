#pragma once

#include <functional>
#include <string>

namespace nomely {

// To whom the connection hands the events that come. Calls come on the bridge's queue, one at a
// time, and must not block for longer than a write to the disk.
class FeishuEvents {
 public:
  // Tells the platform that this event need not come again. May be called at any later time, on any
  // thread, once or not at all; after the connection has ended it does nothing.
  using Acknowledge = std::function<void()>;

  virtual ~FeishuEvents() = default;
  // `payload` is JSON by what the platform says.
  virtual void handleEventPayload(const std::string& payload, const Acknowledge& acknowledge) = 0;
};

}  // namespace nomely
