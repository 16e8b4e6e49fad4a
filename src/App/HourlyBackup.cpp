#include "App/HourlyBackup.h"

#include <exception>
#include <utility>

#include "Platform/Cancellation.h"
#include "Platform/System/Log.h"

namespace nomely {

HourlyBackup::HourlyBackup(const Context& context, std::function<void(std::stop_token)> backup)
    : context_(context), backup_(std::move(backup)), running_(context.jobs) {}

void HourlyBackup::start() {
  next_ = context_.timers.after(
      interval, [&executor = context_.executor, guarded = lifetime_.guard([this] { run(); })] {
        executor.post(guarded);
      });
}

void HourlyBackup::run() {
  running_.submit(
      [this, again = lifetime_.guard([this] { start(); })](const std::stop_token& stop) {
        try {
          backup_(stop);
        } catch (const CancellationError&) {
          return;
        } catch (const std::exception& error) {
          Log::error(LogChannel::storage, "⚠️ HourlyBackup.run: {}", error.what());
        }
        context_.executor.post(again);
      },
      JobPool::Priority::utility);
}

}  // namespace nomely
