#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <string>

#include "Feishu/Connection/FeishuEvents.h"
#include "Feishu/Messages/FeishuInbox.h"
#include "Feishu/Messages/FeishuRecorder.h"
#include "Platform/Concurrency/JobPool.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/QueueTimers.h"
#include "Platform/Concurrency/SerialQueue.h"
#include "Platform/Concurrency/Timers.h"

namespace nomely {

// Works on the messages of the inbox, four at a time, and on what failed again after 1, 2, 4, 8 ...
// minutes, an hour at most. A success is confirmed in the chat, the first failure told there. After
// a week without success a message is kept aside. Lives on the bridge's queue, but for
// construction, destruction and `resume`.
class InboxWork {
 public:
  static constexpr std::size_t atOnce = 4;
  static constexpr std::chrono::minutes longestPause{60};
  static constexpr std::chrono::days patience{7};

  InboxWork(const FeishuContext& context, SerialQueue& queue, FeishuReplies& replies,
            FeishuMemoWriter& writer);
  // Waits for its jobs, which it asks to stop.
  ~InboxWork();
  InboxWork(const InboxWork&) = delete;
  InboxWork& operator=(const InboxWork&) = delete;

  [[nodiscard]] const FeishuInbox& inbox() const { return inbox_; }

  // Works on what lies in the inbox, once for each object. Any thread.
  void resume();
  // Works on a message that has come and was put there. It is acknowledged if the first attempt
  // succeeds.
  void begin(const FeishuInbox::Entry& entry, const FeishuEvents::Acknowledge& acknowledge) {
    attempt({entry, 0, acknowledge});
  }
  // Does so in a minute, since an attempt has failed and was told.
  void beginLater(const FeishuInbox::Entry& entry) { pause({entry, 1, {}}); }

 private:
  struct Attempt {
    FeishuInbox::Entry entry;
    int failures = 0;                            // so far
    FeishuEvents::Acknowledge acknowledge = {};  // of the delivery under way
  };

  void post(std::function<void()> call);
  void readInbox();
  void attempt(const Attempt& attempt);
  void ended(Attempt attempt, const FeishuMemoWriter::WriteResult& result);
  void recorded(const Attempt& attempt, const FeishuMemoWriter::WriteResult& result);
  void pause(const Attempt& failed);
  // Runs `call` on the queue after that time, in place of an earlier one of that name.
  void later(const std::string& name, std::chrono::minutes delay, std::function<void()> call);
  // Returns whether it is there.
  [[nodiscard]] bool keepAside(const std::string& name, const std::string& reason);

  const FeishuContext& context_;
  SerialQueue& queue_;
  FeishuReplies& replies_;
  FeishuInbox inbox_;
  FeishuRecorder recorder_;
  bool isResumed_ = false;
  std::map<std::string, Timers::Timer> timers_;  // by the name of an entry
  QueueTimers later_;
  Lifetime lifetime_;
  JobPool jobs_{atOnce};  // ends first: its jobs use the rest
};

}  // namespace nomely
