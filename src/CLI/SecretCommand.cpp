#include <fmt/format.h>

#include "CLI/ActionCommand.h"
#include "CLI/HiddenInput.h"
#include "CLI/InputFile.h"
#include "CLI/SecretState.h"
#include "CLI/UsageError.h"

namespace nomely {
namespace {

// What was typed or piped, without the line end that comes with it.
std::string checkedSecret(std::string secret) {
  constexpr std::size_t longest = 4096;  // bytes
  if (secret.ends_with('\n')) secret.pop_back();
  if (secret.ends_with('\r')) secret.pop_back();
  if (secret.empty()) throw UsageError("密钥是空的，未作任何改动。要删除请用 nomely secret delete");
  if (secret.size() > longest || !isOneLine(secret))
    throw UsageError("密钥应当是一行文字，没有控制字符，也不超过 4096 字节，未作任何改动");
  return secret;
}

class SecretCommand final : public ActionCommand {
 public:
  void declare(Syntax& syntax) override {
    addDefault(syntax, "list", "列出哪些密钥已设置，不显示内容", list);
    add(syntax, "set", "存入一个密钥，从标准输入读，或在终端上输入", [this](Session& session) {
      set(session);
    }).add(nameArgument());
    add(syntax, "delete", "删除一个密钥", [this](Session& session) {
      erase(session);
    }).add(nameArgument());
    syntax.examples = {"nomely secret set ai", "pass show deepseek | nomely secret set ai"};
  }

 private:
  Argument nameArgument() {
    Argument argument{
        .name = "NAME", .help = "密钥的名称", .target = &name_, .choices = {}, .isRequired = true};
    for (const AppSettings::SecretName& secret : AppSettings::secretNames())
      argument.choices.emplace_back(secret.name);
    return argument;
  }

  static void list(Session& session) {
    Json json = Json::object();
    std::string problem;
    for (const AppSettings::SecretName& secret : AppSettings::secretNames()) {
      const SecretLookup found = session.settings().lookUpSecret(secret.name);
      if (!found.problem.empty()) problem = found.problem;
      if (session.isJson())
        json[std::string(secret.name)] = secretStateCode(found.state);
      else
        session.print(fmt::format("{:14} {}  {}\n", secret.name, secretStateText(found.state),
                                  session.style().dim(secret.help)));
    }
    if (session.isJson()) session.printJson(json);
    session.flush();
    if (!problem.empty()) session.say(problem);
  }

  void set(Session& session) const {
    const bool isTyped = Terminal::isInput();
    if (isTyped && session.options.noInput)
      throw UsageError("请从标准输入给出密钥，或去掉 --no-input 再输入");
    const std::string secret =
        checkedSecret(isTyped ? readHidden(fmt::format("{} 的密钥（输入时不显示）：", name_))
                              : InputFile::readStandardInput());
    const SecretPlace place = session.settings().setSecret(name_, secret);
    const bool isInKeyring = place == SecretPlace::keyring;
    if (session.isJson())
      session.printJson({{"name", name_}, {"place", isInKeyring ? "keyring" : "file"}});
    else
      session.say(isInKeyring ? "已存入密钥环。"
                              : "这台电脑没有可用的密钥环，已存入只有你能读的文件。");
  }

  void erase(Session& session) const {
    const SecretLookup found = session.settings().lookUpSecret(name_);
    const bool isThere = found.state != SecretLookup::State::none;
    if (!isThere)
      session.say(fmt::format("没有设置 {} 的密钥。", name_));
    else if (session.confirm(fmt::format("将删除 {} 的密钥。", name_)))
      session.settings().removeSecret(name_);
    if (session.isJson()) list(session);
  }

  std::string name_;
};

}  // namespace

std::unique_ptr<Command> makeSecretCommand() {
  return std::make_unique<SecretCommand>();
}

}  // namespace nomely
