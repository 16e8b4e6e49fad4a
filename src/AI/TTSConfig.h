#pragma once

#include <string>

namespace nomely {

// The voice that reads texts aloud, kept in tts-config.yaml; appid and apiKey lie in the secret
// store. A value.
struct TTSConfig {
  std::string appid;   // empty in the file
  std::string apiKey;  // empty in the file
  std::string voiceType;
  double speedRatio = 1.0;

  friend bool operator==(const TTSConfig&, const TTSConfig&) = default;
};

}  // namespace nomely
