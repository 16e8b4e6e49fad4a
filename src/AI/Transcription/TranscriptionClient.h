#pragma once

#include "AI/Transcription/SpeechRecognizer.h"
#include "AI/Transcription/TranscriptionConfig.h"
#include "Platform/Network/HttpClient.h"

namespace nomely {

// A server that speaks the OpenAI dialect of transcription, as local ones for Whisper do. Of its
// answer come the words with their times, else its segments, else the text as one without times.
class TranscriptionClient final : public SpeechRecognizer {
 public:
  // `http` must outlive this.
  TranscriptionClient(TranscriptionConfig config, HttpClient& http)
      : config_(std::move(config)), http_(http) {}

  [[nodiscard]] bool isAvailable() const override { return !config_.baseURL.empty(); }
  // Throws TranscriberError, HttpError, JsonError.
  [[nodiscard]] Recognition recognize(const std::filesystem::path& file,
                                      const std::stop_token& stop) override;

 private:
  [[nodiscard]] HttpRequest request(const std::filesystem::path& file) const;

  TranscriptionConfig config_;
  HttpClient& http_;
};

}  // namespace nomely
