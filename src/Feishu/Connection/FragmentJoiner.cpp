#include "Feishu/Connection/FragmentJoiner.h"

#include <utility>

#include "Feishu/Connection/LoggedName.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

// Empty fragments under ever new ids would otherwise fill the memory unnoticed.
constexpr std::size_t overhead = 256;

std::size_t cost(const std::string& messageId, const std::string& payload) {
  return messageId.size() + payload.size() + overhead;
}

}  // namespace

std::optional<std::string> FragmentJoiner::add(Fragment fragment) {
  const auto refuse = [&](const char* why) {
    Log::error(LogChannel::feishu, "丢弃分片（{}） msg_id={} sum={} seq={}", why,
               loggedName(fragment.messageId), fragment.sum, fragment.seq);
    return std::nullopt;
  };
  if (fragment.messageId.empty()) return refuse("没有编号");
  if (fragment.sum > mostFragments) return refuse("分片太多");
  if (fragment.seq < 0 || fragment.seq >= fragment.sum) return refuse("序号不对");
  const auto [found, isFirst] = waiting_.try_emplace(fragment.messageId);
  Pending& pending = found->second;
  if (isFirst) {
    pending = {.number = next_++, .sum = fragment.sum};
    byAge_[pending.number] = found;
  }
  if (pending.sum != fragment.sum) return refuse("总数与先前不符");

  bytes_ += cost(fragment.messageId, fragment.payload);
  const auto [place, isNew] = pending.payloads.try_emplace(fragment.seq);
  if (!isNew) bytes_ -= cost(fragment.messageId, place->second);
  place->second = std::move(fragment.payload);
  if (std::ssize(pending.payloads) == pending.sum) {
    std::string whole;
    for (const auto& [seq, payload] : pending.payloads) whole += payload;
    remove(found);
    Log::information(LogChannel::feishu, "分片合包完成 msg_id={} sum={}",
                     loggedName(fragment.messageId), fragment.sum);
    return whole;
  }
  while (bytes_ > mostBytes) dropOldest();
  return std::nullopt;
}

void FragmentJoiner::dropOldest() {
  const Waiting::iterator oldest = byAge_.begin()->second;
  Log::error(LogChannel::feishu, "分片积压太多，丢弃最早的消息 msg_id={} sum={}",
             loggedName(oldest->first), oldest->second.sum);
  remove(oldest);
}

void FragmentJoiner::remove(Waiting::iterator which) {
  for (const auto& [seq, payload] : which->second.payloads) bytes_ -= cost(which->first, payload);
  byAge_.erase(which->second.number);
  waiting_.erase(which);
}

}  // namespace nomely
