#include <fmt/format.h>

#include "AI/Voice/TTSService.h"
#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/InputFile.h"
#include "CLI/OutputFile.h"
#include "CLI/Progress.h"
#include "CLI/UsageError.h"
#include "Core/Markdown/SpokenText.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

class SpeakCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add({.name = "TEXT",
                .help = "REF（朗读那条笔记）或一段文字，- 为标准输入",
                .target = &words_,
                .kind = WordKind::reference,
                .isRequired = true});
    syntax.add({.name = "-o,--output",
                .help = "写到哪个文件（MP3）",
                .target = &output_,
                .value = "FILE",
                .kind = WordKind::file});
    syntax.examples = {"nomely speak today/1 -o 日记.mp3", "nomely speak 早上好 -o 早上好.mp3"};
  }

  void run(Session& session) override {
    if (output_.empty()) throw UsageError("请用 -o 给出声音文件，例如 -o 日记.mp3");
    OutputFile file(output_, session);
    const std::string text = spoken(session);
    if (!isValidUtf8(text)) throw UsageError("文字不是有效的 UTF-8，请先转换编码");
    if (trimSpaceAndBreaks(text).empty()) throw UsageError("没有可以朗读的文字");
    const TTSConfig config = session.settings().tts();
    if (config.appid.empty() || config.apiKey.empty())
      session.say("先用 nomely secret set tts-appid 和 nomely secret set tts-key 存入。");
    const TTSService service(config, session.http(), session.environment());
    if (!file.confirm(session)) return;
    session.host([&](const std::stop_token& stop) {
      Progress progress(session, "合成");
      file.write(session.files(), [&](const FileManager::Sink& sink) {
        service.synthesizeLongText(text, sink, stop, [&](double share) { progress.show(share); });
      });
    });
    if (session.isJson())
      session.printJson({{"file", file.path().string()}});
    else
      session.say(fmt::format("已写到 {}", file.path().string()));
  }

 private:
  // What has the form of a REF is one, though it may name nothing.
  [[nodiscard]] std::string spoken(Session& session) const {
    if (words_.size() == 1 && words_.front() == "-") return InputFile::readStandardInput();
    if (words_.size() == 1) {
      try {
        return spokenText(Arguments::memo(words_.front(), session).memo.body);
      } catch (const UsageError&) {
        if (words_.front().starts_with('@') || words_.front().starts_with("memo_")) throw;
      }
    }
    return Arguments::joined(words_).value_or("");
  }

  std::vector<std::string> words_;
  std::string output_;
};

}  // namespace

std::unique_ptr<Command> makeSpeakCommand() {
  return std::make_unique<SpeakCommand>();
}

}  // namespace nomely
