#pragma once

#include <string>
#include <string_view>

#include "Core/Storage/ConfigField.h"

namespace nomely {

// A server that turns speech into text, kept in transcription-config.yaml; the key lies in the
// secret store. A value.
struct TranscriptionConfig {
  static constexpr std::string_view fileName = "transcription-config.yaml";

  std::string baseURL = {};  // "/v1/audio/transcriptions" is appended; empty: no server
  std::string apiKey = {};   // empty in the file; a server of one's own needs none
  std::string model = "whisper-1";
  std::string language = "zh";

  friend bool operator==(const TranscriptionConfig&, const TranscriptionConfig&) = default;
};

[[nodiscard]] ConfigFields configFields(TranscriptionConfig& config);

}  // namespace nomely
