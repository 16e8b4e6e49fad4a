#include "CLI/Voice.h"

#include <cstdio>

#include <fmt/format.h>

#include "AI/Transcription/SpeechEngines.h"
#include "Core/Extensions/DateFormatters.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Core/Models/MemoJson.h"
#include "Editor/Recording/RecordingRecovery.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// The line is taken away at the end.
class ProgressLine {
 public:
  explicit ProgressLine(const Session& session)
      : isShown_(!session.options.quiet && Terminal::isError()) {}
  ~ProgressLine() { print("\r\x1B[K"); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  void show(const std::string& text) const { print("\r\x1B[K" + text); }

 private:
  void print(const std::string& text) const {
    if (!isShown_) return;
    fmt::print(stderr, "{}", text);
    std::fflush(stderr);
  }

  bool isShown_;
};

std::string withParagraph(const std::string& body, const std::string& paragraph) {
  std::string text = MemoTextUtilities::textForEditing(body);
  if (!text.empty()) text += text.ends_with('\n') ? "\n" : "\n\n";
  return MemoTextUtilities::editedBody(body, text + paragraph);
}

}  // namespace

TranscriptionResult Voice::transcribe(const std::filesystem::path& file, Session& session) {
  auto config = session.settings().withoutSecrets<TranscriptionConfig>();
  if (asksServer(config)) config = session.settings().transcription();
  SpeechTranscriber transcriber(makeSpeechRecognizer(config, session.http()),
                                session.environment().temporaryFolder());
  TranscriptionResult result;
  session.host([&](const std::stop_token& stop) {
    const ProgressLine line(session);
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
      if (trimSpaceAndBreaks(memo.body).empty()) std::erase(memo.tags, RecordingRecovery::tag);
      memo.body = withParagraph(memo.body, result.text);
    }
    memo.updatedAt = DateFormatters::timestamp(session.clock().now());
    return true;
  });
}

Json Voice::json(const TranscriptionResult& result) {
  return MemoJson::json(result.transcript);
}

}  // namespace nomely
