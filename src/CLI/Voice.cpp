#include "CLI/Voice.h"

#include <algorithm>

#include "AI/Transcription/SpeechEngines.h"
#include "CLI/Waiting.h"
#include "Core/Extensions/DateFormatters.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Core/Models/MemoJson.h"
#include "Editor/Recording/RecordingRecovery.h"
#include "Platform/Text/Unicode.h"

namespace nomely {

TranscriptionResult Voice::transcribe(const std::filesystem::path& file, Session& session) {
  SpeechTranscriber transcriber(
      makeSpeechRecognizer(session.settings().transcription(), session.http()),
      session.environment().temporaryFolder());
  TranscriptionResult result;
  session.host([&](const std::stop_token& stop) {
    const Waiting line(session);
    result = transcriber.transcribeWithTimeline(
        file, [&](const TranscriptionProgress& progress) { line.show(progress.message()); }, stop);
  });
  return result;
}

void Voice::advise(const TranscriberError& error, const Session& session) {
  if (error.kind() == TranscriberError::Kind::notAuthorized)
    session.say(
        "还没有选择语音识别服务：nomely config set transcription.baseURL URL（如 "
        "http://127.0.0.1:8000），密钥用 nomely secret set transcription 存入。");
}

std::optional<Memo> Voice::keep(const TranscriptionResult& result, const std::string& attachment,
                                const TimelineEntry& entry, Session& session) {
  return session.memos().rewrite(entry.date, entry.memo.seqNumber, [&](Memo& memo) {
    if (memo.memoId != entry.memo.memoId ||
        std::ranges::find(memo.attachments, attachment) == memo.attachments.end())
      return false;
    if (!result.transcript.isEmpty()) memo.audioTranscripts[attachment] = result.transcript;
    if (!result.text.empty()) {
      if (trimSpaceAndBreaks(memo.body).empty()) std::erase(memo.tags, MemoService::recordingTag);
      memo.body = MemoTextUtilities::editedBody(
          memo.body, MemoTextUtilities::textWithParagraph(memo.body, result.text));
    }
    memo.updatedAt = DateFormatters::timestamp(session.clock().now());
    return true;
  });
}

Json Voice::json(const TranscriptionResult& result) {
  return MemoJson::json(result.transcript);
}

}  // namespace nomely
