#include <fmt/format.h>

#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/UsageError.h"
#include "CLI/Voice.h"
#include "Core/Extensions/AttachmentKinds.h"

namespace nomely {
namespace {

class TranscribeCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add({.name = "FILE|REF",
                .help = "音频或视频文件，或者一条笔记：它的录音",
                .target = &source_,
                .kind = WordKind::file,
                .isRequired = true});
    syntax.add({.name = "--save", .help = "把文字存入这条笔记", .target = &saves_});
    syntax.examples = {"nomely transcribe 会议.m4a", "nomely transcribe @ --save"};
  }

  void run(Session& session) override {
    if (session.files().exists(source_)) {
      if (saves_) throw UsageError("--save 只用于笔记：nomely transcribe REF --save");
      return print({transcribe(source_, session)}, session);
    }
    const TimelineEntry entry = Arguments::memo(source_, session);
    std::vector<TranscriptionResult> results;
    for (const std::string& name : entry.memo.attachments) {
      if (!AttachmentKinds::isAudio(name)) continue;
      results.push_back(
          transcribe(session.dayStore().paths().dayFolder(entry.date) / name, session));
      if (saves_ && !Voice::keep(results.back(), name, entry, session))
        session.say("笔记已在别处改动，文字没有存入。");
    }
    if (results.empty()) throw NameNotFoundError("这条笔记没有录音");
    print(results, session);
  }

 private:
  static TranscriptionResult transcribe(const std::filesystem::path& file, Session& session) {
    try {
      TranscriptionResult result = Voice::transcribe(file, session);
      if (result.failedSegmentCount > 0)
        session.say(fmt::format("已完成 {}/{} 段转写",
                                result.totalSegmentCount - result.failedSegmentCount,
                                result.totalSegmentCount));
      return result;
    } catch (const TranscriberError& error) {
      Voice::advise(error, session);
      throw;
    }
  }

  static void print(const std::vector<TranscriptionResult>& results, const Session& session) {
    if (!session.isJson()) {
      for (const TranscriptionResult& result : results)
        session.print(Terminal::printable(result.text) + "\n");
      return;
    }
    Json all = Json::array();
    for (const TranscriptionResult& result : results) all.push_back(Voice::json(result));
    session.printJson(all.size() == 1 ? all.front() : all);
  }

  std::string source_;
  bool saves_ = false;
};

}  // namespace

std::unique_ptr<Command> makeTranscribeCommand() {
  return std::make_unique<TranscribeCommand>();
}

}  // namespace nomely
