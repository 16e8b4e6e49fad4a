#pragma once

#include <memory>

#include "AI/SpeechRecognizer.h"
#include "AI/TranscriptionConfig.h"
#include "Platform/Network/HttpClient.h"

namespace nomely {

// The recogniser that the settings name: "pocketsphinx:" or "pocketsphinx:/folder/of/a/model" as
// base URL is the engine on this machine, every other one a server. Null when there is none.
// `http` must outlive it.
[[nodiscard]] std::shared_ptr<SpeechRecognizer> makeSpeechRecognizer(
    const TranscriptionConfig& config, HttpClient& http);

}  // namespace nomely
