#include "AI/Voice/AudioRecorder.h"

#include "Platform/System/Log.h"

namespace nomely {
namespace {

std::string textOf(RecorderError::Kind kind, const std::string& detail) {
  switch (kind) {
    case RecorderError::Kind::setupFailed:
      return "录音初始化失败: " + detail;
    case RecorderError::Kind::alreadyRecording:
      return "已在录音中";
    case RecorderError::Kind::notRecording:
      break;
  }
  return "未在录音";
}

}  // namespace

RecorderError::RecorderError(Kind kind, const std::string& detail)
    : Error("recorder", textOf(kind, detail)), kind_(kind) {}

std::filesystem::path AudioRecorder::startRecording(const std::filesystem::path& directory,
                                                    const std::string& device,
                                                    const AudioCapture::OnStatus& onStatus) {
  const std::lock_guard lock(mutex_);
  if (session_) throw RecorderError(RecorderError::Kind::alreadyRecording);
  recording_ = LockedRecording::create(directory, clock_.now());
  try {
    session_ = capture_.start(device, recording_->descriptor(), onStatus);
  } catch (const Error& error) {
    recording_->remove();
    recording_.reset();
    throw RecorderError(RecorderError::Kind::setupFailed, error.what());
  }
  return recording_->path();
}

std::filesystem::path AudioRecorder::stopRecording() {
  const std::lock_guard lock(mutex_);
  if (!session_) throw RecorderError(RecorderError::Kind::notRecording);
  session_->stop();
  session_.reset();
  try {
    recording_->makePlain({});
  } catch (const Error& error) {
    Log::error(LogChannel::app, "⚠️ AudioRecorder.stopRecording: {}", error.what());
  }
  return recording_->path();
}

bool AudioRecorder::setPaused(bool isPaused) {
  const std::lock_guard lock(mutex_);
  if (!session_ || session_->status().hasEnded) return false;
  session_->setPaused(isPaused);
  return !session_->status().hasEnded;
}

void AudioRecorder::cancelRecording() {
  const std::lock_guard lock(mutex_);
  if (!session_) return;
  session_->cancel();
  session_.reset();
  recording_->remove();
  recording_.reset();
}

void AudioRecorder::discardRecording() noexcept {
  const std::lock_guard lock(mutex_);
  if (session_ || !recording_) return;
  try {
    recording_->remove();
  } catch (const std::exception& error) {
    Log::error(LogChannel::app, "⚠️ AudioRecorder.discardRecording: {}", error.what());
  }
  recording_.reset();
}

void AudioRecorder::letGo() {
  const std::lock_guard lock(mutex_);
  if (!session_) recording_.reset();
}

CaptureStatus AudioRecorder::status() const {
  const std::lock_guard lock(mutex_);
  return session_ ? session_->status() : CaptureStatus{.hasEnded = true};
}

}  // namespace nomely
