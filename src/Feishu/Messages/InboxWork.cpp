#include "Feishu/Messages/InboxWork.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "Platform/Cancellation.h"
#include "Platform/System/Log.h"

namespace nomely {

InboxWork::InboxWork(const FeishuContext& context, SerialQueue& queue, FeishuReplies& replies,
                     FeishuMemoWriter& writer)
    : context_(context),
      queue_(queue),
      replies_(replies),
      inbox_(context.storage()),
      recorder_({context, replies, writer, inbox_}),
      later_(context.timers, queue) {}

InboxWork::~InboxWork() {
  const auto end = [this] {
    lifetime_.end();
    timers_.clear();
  };
  if (queue_.isCurrent())
    end();
  else
    queue_.sync(end);
}

void InboxWork::post(std::function<void()> call) {
  queue_.async(lifetime_.guard(std::move(call)));
}

void InboxWork::later(const std::string& name, std::chrono::minutes delay,
                      std::function<void()> call) {
  timers_[name] = later_.after(delay, lifetime_.guard(std::move(call)));
}

void InboxWork::resume() {
  post([this] {
    if (std::exchange(isResumed_, true)) return;
    readInbox();
  });
}

void InboxWork::readInbox() {
  try {
    FeishuInbox::Contents contents = inbox_.contents();
    for (const std::string& name : contents.damaged) (void)keepAside(name, "文件已损坏");
    for (const FeishuInbox::Entry& entry : contents.entries) attempt({entry, 0, {}});
  } catch (const Error& error) {
    Log::error(LogChannel::feishu, "收件箱读不出来：{}", error.what());
    later("", std::chrono::minutes(1), [this] { readInbox(); });
  }
}

void InboxWork::attempt(const Attempt& attempt) {
  jobs_.submit([this, attempt](const std::stop_token& stop) {
    FeishuMemoWriter::WriteResult result;
    try {
      result = recorder_.record(attempt.entry, stop);
    } catch (const CancellationError&) {
      return;  // the next start goes on with it
    } catch (const std::exception&) {
      // Its text may quote what came.
      result = {.kind = FeishuMemoWriter::WriteResult::Kind::failure, .reason = "程序内部错误"};
      Log::error(LogChannel::feishu, "记录 {} 时出现意外错误", attempt.entry.name);
    }
    post([this, attempt, result] { ended(attempt, result); });
  });
}

void InboxWork::ended(Attempt attempt, const FeishuMemoWriter::WriteResult& result) {
  timers_.erase(attempt.entry.name);
  if (result.stands()) return recorded(attempt, result);
  if (attempt.failures++ == 0) {
    replies_.reactCry(attempt.entry.message.messageId);
    context_.tell({.kind = BotEvent::Kind::failed, .detail = result.reason});
  }
  const bool isOld = context_.storage().clock.now() - attempt.entry.received >= patience;
  if (!isOld || !keepAside(attempt.entry.name, result.reason)) pause(attempt);
}

void InboxWork::recorded(const Attempt& attempt, const FeishuMemoWriter::WriteResult& result) {
  // Who finds the memo there after a failure or a start may not have confirmed it.
  const bool isConfirmed = !result.place && attempt.acknowledge;
  if (!isConfirmed) replies_.reactThumbsUp(attempt.entry.message.messageId);
  if (result.place) context_.tell({.kind = BotEvent::Kind::recorded, .place = result.place});
  if (attempt.acknowledge) attempt.acknowledge();
}

void InboxWork::pause(const Attempt& failed) {
  const std::chrono::minutes doubled(1LL << std::min(failed.failures - 1, 6));
  later(failed.entry.name, std::min(doubled, longestPause),
        [this, next = Attempt{failed.entry, failed.failures, {}}] { attempt(next); });
}

bool InboxWork::keepAside(const std::string& name, const std::string& reason) {
  try {
    inbox_.putAside(name);
  } catch (const Error& error) {
    Log::error(LogChannel::feishu, "收件箱里的 {} 移不开：{}", name, error.what());
    return false;
  }
  Log::error(LogChannel::feishu, "消息没能记录，已留在 .meta/feishu-inbox/aside/{}：{}", name,
             reason);
  context_.tell({.kind = BotEvent::Kind::keptAside, .detail = reason});
  return true;
}

}  // namespace nomely
