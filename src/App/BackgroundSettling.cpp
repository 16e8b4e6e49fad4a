#include "App/BackgroundSettling.h"

#include <utility>

#include <fmt/format.h>

#include "Core/Lifecycle/Settling/RootSettling.h"
#include "Platform/Cancellation.h"
#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/System/Log.h"

namespace nomely {

BackgroundSettling::BackgroundSettling(const Context& context, std::function<void()> onChanged)
    : context_(context), onChanged_(std::move(onChanged)), running_(context.jobs) {}

void BackgroundSettling::run() {
  next_.reset();
  if (std::exchange(isRunning_, true)) {
    hasToRunAgain_ = true;
    return;
  }
  const auto take = lifetime_.guard([this](const SettlingResult& result) { this->take(result); });
  running_.submit(
      [this, take](const std::stop_token& stop) {
        SettlingResult result;
        try {
          result = settle(stop);
        } catch (const CancellationError&) {
          return;
        } catch (const std::exception& error) {
          Log::error(LogChannel::storage, "⚠️ BackgroundSettling.run: {}", error.what());
        }
        context_.executor.post([take, result] { take(result); });
      },
      JobPool::Priority::utility);
}

SettlingResult BackgroundSettling::settle(const std::stop_token& stop) const {
  (void)context_.index.rebuildIfDiskChanged();
  return RootSettling(context_.memos, censusOf(context_.index)).run(stop);
}

MemoCensus BackgroundSettling::censusOf(SearchIndex& index) {
  if (!index.isBuilt()) return {};
  return [&index](const std::function<void(const Memo&, Day)>& visit) {
    index.forEachEntry([&](const MemoEntry& entry) {
      visit(*entry.memo, entry.date);
      return true;
    });
  };
}

void BackgroundSettling::take(const SettlingResult& result) {
  isRunning_ = false;
  if (result.changedMemos) onChanged_();
  tell(result);
  if (std::exchange(hasToRunAgain_, false)) return run();
  if (!result.isWaiting) return;
  next_ = context_.timers.after(RootSettling::quietInterval,
                                [&executor = context_.executor, guarded = lifetime_.guard([this] {
                                  run();
                                })] { executor.post(guarded); });
}

void BackgroundSettling::tell(const SettlingResult& result) {
  if (result.notes > 0)
    NotificationCenter::shared().post(Notifications::notesSettled,
                                      fmt::format("已合并另一台电脑上的 {} 条笔记", result.notes));
}

}  // namespace nomely
