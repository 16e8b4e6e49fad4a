#pragma once

#include <filesystem>
#include <functional>
#include <stop_token>
#include <string>
#include <string_view>

#include "AI/Voice/TTSConfig.h"
#include "Platform/Error.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/System/Environment.h"

namespace nomely {

// The speech service gave no sound. `what()` never holds the credentials.
class TTSError : public Error {
 public:
  enum class Kind { connectionFailed, synthesisFailed, notConfigured, audioDecodeFailed };

  // `detail` ends the texts of the first two.
  explicit TTSError(Kind kind, const std::string& detail = {});
  [[nodiscard]] Kind kind() const noexcept { return kind_; }

 private:
  Kind kind_;
};

// Turns text into speech by the vendor's interface, one request for each piece of text. The root of
// that interface may be moved by NOMELY_TTS_ROOT. Calls block; they throw TTSError, what the HTTP
// client throws, JsonError, and CancellationError when asked to stop. The client must outlive it.
class TTSService {
 public:
  static constexpr std::size_t mostCharacters = 500;  // of one request, as a reader counts

  TTSService(TTSConfig config, HttpClient& http, const Environment& environment)
      : config_(std::move(config)), http_(http), environment_(environment) {}

  // MP3.
  [[nodiscard]] std::string synthesize(std::string_view text, const std::stop_token& stop) const;

  // Speaks a text of any length, piece after piece: MP3 goes to `sink`, the share that is done to
  // `progress`.
  using Progress = std::function<void(double share)>;
  void synthesizeLongText(std::string_view text, const FileManager::Sink& sink,
                          const std::stop_token& stop, const Progress& progress = {}) const;
  // The same into a new file of `folder`, "tts_<UUID>.mp3"; a failure leaves none. Throws FileError
  // too.
  [[nodiscard]] std::filesystem::path synthesizeLongText(std::string_view text,
                                                         const FileManager& files,
                                                         const std::filesystem::path& folder,
                                                         const std::stop_token& stop) const;

 private:
  [[nodiscard]] HttpResponse send(std::string_view text, const std::stop_token& stop) const;
  [[nodiscard]] std::string failureText(const HttpResponse& response) const;

  TTSConfig config_;
  HttpClient& http_;
  Environment environment_;
};

}  // namespace nomely
