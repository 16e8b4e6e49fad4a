#pragma once

#include <span>
#include <string>
#include <string_view>

#include "Core/Storage/ConfigField.h"

namespace nomely {

// The voice that reads texts aloud, kept in tts-config.yaml; appid and apiKey lie in the secret
// store. A value.
struct TTSConfig {
  // A voice that is offered.
  struct Voice {
    std::string_view id;
    std::string_view name;
    std::string_view resourceID;  // what has to be granted for it
  };
  static constexpr std::string_view fileName = "tts-config.yaml";

  std::string appid = {};   // empty in the file
  std::string apiKey = {};  // empty in the file
  std::string voiceType = {};
  double speedRatio = 1.0;

  [[nodiscard]] static std::span<const Voice> voices();  // the default one first
  [[nodiscard]] std::string effectiveVoiceType() const;
  // Of the effective voice.
  [[nodiscard]] std::string resourceID() const;

  friend bool operator==(const TTSConfig&, const TTSConfig&) = default;
};

[[nodiscard]] ConfigFields configFields(TTSConfig& config);

}  // namespace nomely
