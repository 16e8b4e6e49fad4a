#include "Platform/Audio/AudioPlayback.h"

#include <mutex>
#include <optional>
#include <sstream>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Platform/Audio/HelperProcess.h"
#include "Platform/Audio/MediaFile.h"
#include "Platform/Cancellation.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

constexpr auto device = "default";

// What the answer "error KIND DETAIL", or none, tells a user.
std::string failureText(const std::optional<std::string>& answer) {
  const auto tells = [&](std::string_view kind) {
    return answer && answer->starts_with(fmt::format("error {}", kind));
  };
  if (tells("deviceMissing")) return "找不到声音输出设备，请接上耳机或音箱后再播放";
  if (tells("deviceBusy")) return "声音输出设备正被别的程序使用，请先关掉那个程序";
  if (tells("deviceRefused")) return "声音输出设备无法使用，请检查系统的声音设置";
  if (tells("deviceLost")) return "声音输出设备断开了，请接好后再播放";
  if (!answer) return "播放程序意外结束了，请再试一次";
  return mediaError(answer).what();
}

class MediaSession final : public AudioPlayback::Session {
 public:
  MediaSession(AudioPlayback::Request request, AudioPlayback::OnStatus onStatus)
      : request_(std::move(request)), onStatus_(std::move(onStatus)) {
    listener_ = std::jthread([this](const std::stop_token& stop) { run(stop); });
  }

  void setPaused(bool isPaused) override { send(isPaused ? "pause" : "resume"); }
  void seek(double seconds) override { send(fmt::format("seek {:.3f}", seconds)); }
  void setSpeed(double speed) override { send(fmt::format("speed {:.3f}", speed)); }

 private:
  void run(const std::stop_token& stop) {
    try {
      const Descriptor file = MediaFile::open(request_.file);
      HelperProcess process({.program = "nomely-media",
                             .arguments = {"play", device, fmt::format("{:.3f}", request_.from),
                                           fmt::format("{:.3f}", request_.speed)},
                             .file = file.get()});
      introduce(&process);
      try {
        listen(process, stop);
      } catch (...) {
        introduce(nullptr);
        throw;
      }
      introduce(nullptr);
    } catch (const CancellationError&) {
      // Nobody wants to know.
    } catch (const std::exception& error) {
      end(error.what());
    }
  }

  void listen(HelperProcess& process, const std::stop_token& stop) {
    for (;;) {
      const auto line = process.readLine(stop);
      if (line == "ended") return end({});
      if (!line || line->starts_with("error ")) return end(failureText(line));
      std::istringstream words(*line);
      std::string state;
      words >> state >> status_.position;
      status_.isPaused = state == "paused";
      onStatus_(status_);
    }
  }

  void end(std::string failure) {
    status_.hasEnded = true;
    status_.failure = std::move(failure);
    onStatus_(status_);
  }

  // What was asked for meanwhile is told first. Null takes it back.
  void introduce(HelperProcess* process) {
    const std::lock_guard lock(mutex_);
    process_ = process;
    if (process_ == nullptr) return;
    for (const std::string& command : std::exchange(waiting_, {})) process_->send(command);
  }

  void send(std::string command) {
    const std::lock_guard lock(mutex_);
    if (process_ != nullptr)
      process_->send(command);
    else
      waiting_.push_back(std::move(command));
  }

  AudioPlayback::Request request_;
  AudioPlayback::OnStatus onStatus_;
  PlaybackStatus status_;  // the listener's
  std::mutex mutex_;
  HelperProcess* process_ = nullptr;
  std::vector<std::string> waiting_;  // commands, as long as there is no process
  std::jthread listener_;
};

class MediaPlayback final : public AudioPlayback {
 public:
  std::unique_ptr<Session> start(const Request& request, OnStatus onStatus) override {
    return std::make_unique<MediaSession>(request, std::move(onStatus));
  }
};

}  // namespace

std::unique_ptr<AudioPlayback> makeAudioPlayback() {
  return std::make_unique<MediaPlayback>();
}

}  // namespace nomely
