#include "Core/Storage/MemoChanges.h"

#include <utility>

namespace nomely {

thread_local MemoChanges::Bulk* MemoChanges::innermost_ = nullptr;

MemoChanges::Bulk::Bulk(MemoChanges& changes)
    : changes_(changes), outer_(std::exchange(innermost_, this)) {}

MemoChanges::Bulk::~Bulk() {
  innermost_ = outer_;
  changes_.inGate([this] { changes_.announceManyChanged(); });
}

template <typename Body>
void MemoChanges::inGate(Body body) {
  if (gate_.isCurrent())
    body();
  else
    gate_.sync(body);
}

Subscription MemoChanges::observe(Observer observer) {
  std::uint64_t key = 0;
  inGate([&] {
    key = nextKey_++;
    observers_.emplace(key, std::make_shared<const Observer>(std::move(observer)));
  });
  return Subscription([this, key] { inGate([this, key] { observers_.erase(key); }); });
}

bool MemoChanges::isHeldBack() const {
  for (const Bulk* bulk = innermost_; bulk != nullptr; bulk = bulk->outer_)
    if (&bulk->changes_ == this) return true;
  return false;
}

template <typename Tell>
void MemoChanges::tell(Tell tell) {
  if (isHeldBack()) return;
  const auto observers = observers_;  // one may subscribe another
  for (const auto& [key, observer] : observers) tell(*observer);
}

void MemoChanges::announceWritten(const Memo& memo, Day day) {
  tell([&](const Observer& observer) { observer.written(memo, day); });
}

void MemoChanges::announceRemoved(Day day, std::int64_t seqNumber) {
  tell([&](const Observer& observer) { observer.removed(day, seqNumber); });
}

void MemoChanges::announceManyChanged() {
  tell([](const Observer& observer) { observer.manyChanged(); });
}

}  // namespace nomely
