#include <fmt/format.h>

#include "AI/Writing/AIBeautifier.h"
#include "AI/Writing/AIWritingAssistant.h"
#include "AI/Writing/BeautifyPreset.h"
#include "CLI/ActionCommand.h"
#include "CLI/Arguments.h"
#include "CLI/ConfiguredAI.h"
#include "CLI/TextInput.h"
#include "CLI/UsageError.h"
#include "CLI/Waiting.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

class AiCommand final : public ActionCommand {
 public:
  void declare(Syntax& syntax) override {
    add(syntax, "test", "试一试设置里的 AI 能否使用", test);
    for (const InputAIActionInfo& info : InputAIActionInfo::all()) {
      Syntax& action = add(syntax, std::string(info.name),
                           std::string(info.heading.empty() ? info.title : info.heading),
                           [this, &info](Session& session) { perform(info.action, session); });
      if (info.action != InputAIAction::greeting) action.add(textArgument());
    }
    Syntax& beautifying =
        add(syntax, "beautify", "按你的要求修改", [this](Session& session) { beautify(session); });
    beautifying.add(textArgument());
    beautifying.add({.name = "--instruction",
                     .help = "要怎么改，一句话",
                     .target = &instruction_,
                     .value = "I"});
    beautifying.add({.name = "--preset",
                     .help = fmt::format("现成的要求，编号或名称：{}", presetList()),
                     .target = &preset_,
                     .value = "P"});
    syntax.examples = {"nomely ai polish 今天天气挺好的", "nomely ai translate - < 信.md",
                       "nomely ai beautify --preset 改成清单 - < 纪要.md"};
  }

 private:
  using Asking = std::function<AIService::Reply(const AIConfig&, const std::stop_token&)>;

  Argument textArgument() {
    return {.name = "TEXT",
            .help = "文字，可以是几个词；“-”为标准输入，省略则打开编辑器",
            .target = &text_};
  }

  // "1 整理成笔记、2 润色表达"
  static std::string presetList() {
    std::string list;
    for (const BeautifyPreset& preset : BeautifyPreset::all())
      list += fmt::format("{}{} {}", list.empty() ? "" : "、", preset.number, preset.title);
    return list;
  }

  static void ask(Session& session, const Asking& asking) {
    AIService::Reply reply;
    session.host([&](const std::stop_token& stop) {
      const AIConfig config = configuredAI(session);
      const Waiting waiting(
          session, fmt::format("正在等 {} 的回复", AIConfig::displayName(config.provider)));
      reply = asking(config, stop);
    });
    if (session.isJson()) {
      Json json{{"result", reply.text}};
      if (reply.isCutOff) json["isCutOff"] = true;
      session.printJson(json);
    } else {
      const std::string text = Terminal::printable(reply.text);
      session.print(text.ends_with('\n') ? text : text + "\n");
    }
    session.flush();
    if (reply.isCutOff) session.say(fmt::format("{}。", AIService::cutOffNotice));
  }

  void askAbout(Session& session,
                const std::function<AIService::Reply(const AIConfig&, const std::string& text,
                                                     const std::stop_token&)>& asking) const {
    TextInput input(session);
    const std::string text = input.read(Arguments::joined(text_), "").value_or("");
    if (trimSpaceAndBreaks(text).empty()) {
      input.accept();
      throw UsageError("没有文字，什么也没有发送");
    }
    ask(session, [&](const AIConfig& config, const std::stop_token& stop) {
      return asking(config, text, stop);
    });
    input.accept();
  }

  static void test(Session& session) {
    ask(session, [&](const AIConfig& config, const std::stop_token& stop) {
      AIService::Reply reply =
          AIService(config, session.http())
              .chat({"You are a helpful assistant.", "Say 'OK' in one word.", 10}, stop);
      reply.text.insert(0, "✓ ");
      return reply;
    });
  }

  void perform(InputAIAction action, Session& session) const {
    const auto asking = [&](const AIConfig& config, const std::string& text,
                            const std::stop_token& stop) {
      return AIWritingAssistant(config, session.http()).perform(action, text, stop);
    };
    if (action != InputAIAction::greeting) return askAbout(session, asking);
    ask(session, [&](const AIConfig& config, const std::stop_token& stop) {
      return asking(config, AIWritingAssistant::dateInfo(session.clock().today()), stop);
    });
  }

  void beautify(Session& session) const {
    askAbout(session,
             [&, instruction = instruction()](const AIConfig& config, const std::string& text,
                                              const std::stop_token& stop) {
               return AIBeautifier(config, session.http()).refine({text, "", instruction}, stop);
             });
  }

  [[nodiscard]] std::string instruction() const {
    if (instruction_.empty() == preset_.empty())
      throw UsageError("请用 --instruction 写出要怎么改，或用 --preset 选一个现成的要求");
    if (!instruction_.empty()) return instruction_;
    for (const BeautifyPreset& preset : BeautifyPreset::all())
      if (preset_ == preset.title || preset_ == std::to_string(preset.number))
        return std::string(preset.instruction);
    throw UsageError(fmt::format("没有这个现成的要求：{}，有 {}", preset_, presetList()));
  }

  std::vector<std::string> text_;
  std::string instruction_;
  std::string preset_;
};

}  // namespace

std::unique_ptr<Command> makeAiCommand() {
  return std::make_unique<AiCommand>();
}

}  // namespace nomely
