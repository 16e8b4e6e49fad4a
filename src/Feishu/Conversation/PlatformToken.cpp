#include "Feishu/Conversation/PlatformToken.h"

#include <chrono>
#include <exception>
#include <utility>

#include "Platform/Cancellation.h"

namespace nomely {
namespace {

constexpr std::chrono::seconds early{300};

}  // namespace

std::string PlatformToken::get(const std::stop_token& stop) {
  const FeishuConfig config = account_.config();
  std::unique_lock lock(mutex_);
  for (;;) {
    const bool isOurs =
        latest_ && latest_->appId == config.appId && latest_->appSecret == config.appSecret;
    if (isOurs && !latest_->isDone) {
      const std::shared_ptr<Fetch> waited = latest_;
      done_.wait(lock, stop, [&] { return waited->isDone; });
      throwIfStopped(stop);
      if (waited->failure) std::rethrow_exception(waited->failure);
      if (!waited->value.empty()) return waited->value;
      continue;  // who fetched it was told to stop
    }
    if (isOurs && isGood(*latest_)) return latest_->value;
    const auto fetch =
        std::make_shared<Fetch>(Fetch{.appId = config.appId, .appSecret = config.appSecret});
    latest_ = fetch;
    lock.unlock();
    run(*fetch, stop);
    return fetch->value;
  }
}

bool PlatformToken::isGood(const Fetch& fetch) const {
  return !fetch.value.empty() && clock_.now() < fetch.renewal;
}

void PlatformToken::run(Fetch& fetch, const std::stop_token& stop) {
  FeishuAPI::Token token;
  std::exception_ptr failure;
  bool isStopped = false;
  try {
    token = FeishuAPI::fetchToken(platform_, fetch.appId, fetch.appSecret, stop);
  } catch (const CancellationError&) {
    failure = std::current_exception();
    isStopped = true;
  } catch (...) {
    failure = std::current_exception();
  }
  {
    const std::lock_guard lock(mutex_);
    fetch.isDone = true;
    if (!isStopped) fetch.failure = failure;
    fetch.value = std::move(token.value);
    fetch.renewal = clock_.now() + std::chrono::seconds(token.lifetime) - early;
  }
  done_.notify_all();
  if (failure) std::rethrow_exception(failure);
}

}  // namespace nomely
