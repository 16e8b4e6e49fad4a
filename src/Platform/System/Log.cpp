#include "Platform/System/Log.h"

#include <array>
#include <cstdio>
#include <memory>
#include <vector>

#include <spdlog/logger.h>
#include <spdlog/sinks/stdout_sinks.h>
#include <spdlog/sinks/systemd_sink.h>
#include <unistd.h>

namespace nomely {
namespace {

constexpr std::array<const char*, 4> channelNames{"app", "feishu", "storage", "importer"};

spdlog::level::level_enum levelOf(LogLevel level) {
  switch (level) {
    case LogLevel::information:
      return spdlog::level::info;
    case LogLevel::error:
      return spdlog::level::err;
    case LogLevel::fault:
      return spdlog::level::critical;
  }
  return spdlog::level::critical;
}

class Channels {
 public:
  Channels() {
    errors_->set_pattern("[%n] %v");
    errors_->set_level(spdlog::level::err);
    std::vector<spdlog::sink_ptr> sinks{errors_};
    if (::access("/run/systemd/journal/socket", W_OK) == 0) {
      const auto journal = std::make_shared<spdlog::sinks::systemd_sink_mt>("nomely", true);
      journal->set_pattern("[%n] %v");
      sinks.push_back(journal);
    }
    for (std::size_t i = 0; i < loggers_.size(); ++i) {
      loggers_[i] = std::make_unique<spdlog::logger>(channelNames[i], sinks.begin(), sinks.end());
      loggers_[i]->set_error_handler([](const std::string&) {});
    }
  }

  void setEcho(Log::Echo echo) {
    switch (echo) {
      case Log::Echo::nothing:
        return errors_->set_level(spdlog::level::off);
      case Log::Echo::errors:
        return errors_->set_level(spdlog::level::err);
      case Log::Echo::everything:
        return errors_->set_level(spdlog::level::trace);
    }
  }

  spdlog::logger& operator[](LogChannel channel) {
    return *loggers_[static_cast<std::size_t>(channel)];
  }

 private:
  std::shared_ptr<spdlog::sinks::stderr_sink_mt> errors_ =
      std::make_shared<spdlog::sinks::stderr_sink_mt>();
  std::array<std::unique_ptr<spdlog::logger>, channelNames.size()> loggers_;
};

Channels& channels() {
  static auto* const instance = new Channels;  // queues may log while statics are torn down
  return *instance;
}

}  // namespace

void Log::setEcho(Echo echo) {
  channels().setEcho(echo);
}

void Log::write(LogChannel channel, LogLevel level, std::string_view message) noexcept {
  try {
    channels()[channel].log(levelOf(level), message);
  } catch (...) {
    std::fwrite(message.data(), 1, message.size(), stderr);
  }
}

}  // namespace nomely
