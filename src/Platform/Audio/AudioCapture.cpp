#include "Platform/Audio/AudioCapture.h"

#include <condition_variable>
#include <mutex>
#include <sstream>
#include <string_view>
#include <thread>
#include <utility>

#include <fmt/format.h>

#include "Platform/Audio/HelperProcess.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

// "error KIND DETAIL" → KIND; the word of an end without a word is "crash".
std::string kindOf(const std::optional<std::string>& line) {
  if (!line) return "crash";
  std::istringstream words(*line);
  std::string word;
  words >> word >> word;
  return word;
}

std::string failureText(std::string_view kind) {
  if (kind == "deviceLost") return "麦克风断开了";
  if (kind == "noSpace") return "磁盘空间不足";
  if (kind == "unwritable") return "录音文件无法写入";
  return "录音程序意外结束了";
}

[[noreturn]] void failToStart(const std::optional<std::string>& line, const std::string& device) {
  Log::information(LogChannel::app, "nomely-media record: {}",
                   line.value_or("ended without an answer"));
  const std::string kind = kindOf(line);
  using Kind = AudioCapture::DeviceError::Kind;
  if (kind == "deviceMissing")
    throw AudioCapture::DeviceError(
        Kind::missing, fmt::format("找不到麦克风“{}”，请接上麦克风或换一个设备", device));
  if (kind == "deviceBusy")
    throw AudioCapture::DeviceError(
        Kind::busy, fmt::format("麦克风“{}”正被别的程序使用，请先关掉那个程序", device));
  if (kind == "noSpace") throw AudioCapture::DeviceError(Kind::other, failureText(kind));
  throw AudioCapture::DeviceError(Kind::other, "无法开始录音");
}

class MediaSession final : public AudioCapture::Session {
 public:
  MediaSession(const std::string& device, int file, AudioCapture::OnStatus onStatus)
      : process_({.program = "nomely-media", .arguments = {"record", device}, .file = file}),
        onStatus_(std::move(onStatus)) {
    const auto line = process_.readLine();
    if (line != "ready") failToStart(line, device);
    listener_ = std::thread([this] { listen(); });
  }

  ~MediaSession() override {
    end("stop");
    listener_.join();
  }

  void setPaused(bool isPaused) override {
    process_.send(isPaused ? "pause" : "resume");
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return status_.hasEnded || status_.isPaused == isPaused; });
  }
  void stop() override { end("stop"); }
  void cancel() override { end("cancel"); }

  [[nodiscard]] CaptureStatus status() const override {
    const std::lock_guard lock(mutex_);
    return status_;
  }

 private:
  void end(const char* how) {
    process_.send(how);
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return status_.hasEnded; });
  }

  void listen() {
    try {
      while (const auto line = process_.readLine())
        if (take(*line)) return;
    } catch (const std::exception& error) {
      Log::error(LogChannel::app, "⚠️ MediaSession.listen: {}", error.what());
    }
    update([](CaptureStatus& status) {
      status.hasEnded = true;
      if (status.failure.empty()) status.failure = failureText("crash");
    });
  }

  // Whether that was the last line.
  bool take(const std::string& line) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    if (word == "level")
      update([&](CaptureStatus& status) { words >> status.seconds >> status.level; });
    if (word == "paused" || word == "resumed")
      update([&](CaptureStatus& status) { status.isPaused = word == "paused"; });
    if (word == "stopped")
      update([&](CaptureStatus& status) {
        words >> status.seconds;
        status.hasEnded = true;
      });
    if (word == "error") {
      Log::information(LogChannel::app, "nomely-media record: {}", line);
      update([&](CaptureStatus& status) {
        status.hasEnded = true;
        status.failure = failureText(kindOf(line));
      });
    }
    return word == "stopped" || word == "error";
  }

  template <typename Change>
  void update(Change change) {
    CaptureStatus told;
    {
      const std::lock_guard lock(mutex_);
      change(status_);
      told = status_;
    }
    // Before whoever waits for the end goes on: it may destroy what is called.
    if (onStatus_) onStatus_(told);
    changed_.notify_all();
  }

  HelperProcess process_;
  AudioCapture::OnStatus onStatus_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  CaptureStatus status_;
  std::thread listener_;
};

class MediaCapture final : public AudioCapture {
 public:
  std::unique_ptr<Session> start(const std::string& device, int file, OnStatus onStatus) override {
    return std::make_unique<MediaSession>(device, file, std::move(onStatus));
  }
};

}  // namespace

std::unique_ptr<AudioCapture> makeAudioCapture() {
  return std::make_unique<MediaCapture>();
}

}  // namespace nomely
