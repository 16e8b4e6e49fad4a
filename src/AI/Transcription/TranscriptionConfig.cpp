#include "AI/Transcription/TranscriptionConfig.h"

namespace nomely {

// A file with baseURL alone will do.
ConfigFields configFields(TranscriptionConfig& config) {
  using enum ConfigField::Presence;
  return {{.key = "baseURL", .target = &config.baseURL, .isURL = true},
          {.key = "apiKey",
           .target = &config.apiKey,
           .presence = defaulted,
           .account = "Nomely.transcriptionAPIKey"},
          {.key = "model", .target = &config.model, .presence = defaulted},
          {.key = "language", .target = &config.language, .presence = defaulted}};
}

}  // namespace nomely
