#pragma once

#include <memory>

#include "AI/Transcription/SpeechRecognizer.h"
#include "AI/Transcription/TranscriptionConfig.h"
#include "Platform/Network/HttpClient.h"

namespace nomely {

// Whether the settings name a server, which may want the key.
[[nodiscard]] bool asksServer(const TranscriptionConfig& config);

// The recogniser that the settings name: the model "pocketsphinx" or "pocketsphinx:/its/folder" is
// the engine on this machine, every other one is asked of the server. Null when none was chosen.
// `http` must outlive it.
[[nodiscard]] std::shared_ptr<SpeechRecognizer> makeSpeechRecognizer(
    const TranscriptionConfig& config, HttpClient& http);

}  // namespace nomely
