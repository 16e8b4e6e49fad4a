#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "AI/Transcription/SpeechTranscriber.h"
#include "CLI/Session.h"
#include "Core/Query/TimelineQueryStore.h"

namespace nomely {

// What the commands for voice share.
namespace Voice {

// The file's speech, by the recogniser of the settings; how far it has come is shown on a terminal.
// Throws TranscriberError, CancellationError on an interrupt.
[[nodiscard]] TranscriptionResult transcribe(const std::filesystem::path& file, Session& session);

// Says what to do about it, where the user can do something.
void advise(const TranscriberError& error, const Session& session);

// Puts the text at the end of the memo's and the transcript beside its attachment, whatever has
// been changed in the memo since it was read; the tag of recordings without text goes. Absent, and
// nothing changed, when the memo has gone or has let go of the attachment.
[[nodiscard]] std::optional<Memo> keep(const TranscriptionResult& result,
                                       const std::string& attachment, const TimelineEntry& entry,
                                       Session& session);

// {"text", "segments"}
[[nodiscard]] Json json(const TranscriptionResult& result);

}  // namespace Voice

}  // namespace nomely
