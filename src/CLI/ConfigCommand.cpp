#include <algorithm>

#include <fmt/format.h>

#include "CLI/ActionCommand.h"
#include "CLI/PagedOutput.h"
#include "CLI/SecretState.h"
#include "CLI/UsageError.h"

namespace nomely {
namespace {

using Setting = AppSettings::Setting;

Json jsonOf(const ConfigValue& value) {
  return std::visit(
      [](const auto& held) -> Json {
        if constexpr (std::is_same_v<std::decay_t<decltype(held)>, std::monostate>)
          return nullptr;
        else
          return held;
      },
      value);
}

std::string textOf(const ConfigValue& value) {
  return std::visit(
      [](const auto& held) -> std::string {
        using Held = std::decay_t<decltype(held)>;
        if constexpr (std::is_same_v<Held, std::monostate>)
          return {};
        else if constexpr (std::is_same_v<Held, std::string>)
          return Terminal::printable(held);
        else
          return fmt::format("{}", held);
      },
      value);
}

bool isEmpty(const ConfigValue& value) {
  return textOf(value).empty();
}

class ConfigCommand final : public ActionCommand {
 public:
  void declare(Syntax& syntax) override {
    addDefault(syntax, "list", "列出设置", list);
    add(syntax, "get", "显示一项设置", [this](Session& session) {
      get(session);
    }).add(keyArgument());
    Syntax& setting =
        add(syntax, "set", "修改一项设置", [this](Session& session) { set(session); });
    setting.add(keyArgument());
    setting.add({.name = "VALUE",
                 .help = "新的值，空的 \"\" 为取消",
                 .target = &value_,
                 .kind = WordKind::settingValue,
                 .isRequired = true});
    syntax.examples = {"nomely config set ai.provider deepseek", "nomely config get ai.model"};
  }

 private:
  Argument keyArgument() {
    return {.name = "KEY",
            .help = "设置的名称，见 nomely config list",
            .target = &key_,
            .kind = WordKind::setting,
            .isRequired = true};
  }

  static void list(Session& session) {
    std::vector<Setting> settings = session.settings().settings();
    std::erase_if(settings, [](const Setting& setting) { return setting.isSecret; });
    if (session.isJson()) {
      Json json = Json::object();
      for (const Setting& setting : settings) json[setting.key] = jsonOf(setting.value);
      return session.printJson(json);
    }
    std::size_t width = 0;
    for (const Setting& setting : settings) width = std::max(width, setting.key.size());
    const PagedOutput pager(session);
    const Style style = session.style();
    for (const Setting& setting : settings)
      session.print(
          fmt::format("{} {}\n", style.bold(fmt::format("{:{}}", setting.key, width)),
                      isEmpty(setting.value) ? style.dim("（未设置）") : textOf(setting.value)));
    session.flush();
    session.say("密钥另见 nomely secret。");
  }

  [[nodiscard]] Setting named(Session& session) const {
    for (Setting& setting : session.settings().settings())
      if (setting.key == key_) return std::move(setting);
    throw NameNotFoundError(fmt::format("没有这项设置：{}，见 nomely config list", key_));
  }

  void get(Session& session) const {
    const Setting setting = named(session);
    if (setting.isSecret) return tellOfSecret(session);
    if (session.isJson())
      return session.printJson({{"key", setting.key}, {"value", jsonOf(setting.value)}});
    session.print(textOf(setting.value) + "\n");
    if (isEmpty(setting.value)) session.say("（未设置）");
  }

  void tellOfSecret(Session& session) const {
    for (const AppSettings::SecretName& secret : AppSettings::secretNames()) {
      if (secret.key != key_) continue;
      const SecretLookup found = session.settings().lookUpSecret(secret.name);
      if (session.isJson())
        session.printJson({{"key", key_}, {"secret", secretStateCode(found.state)}});
      else
        session.print(fmt::format("{}\n", secretStateText(found.state)));
      if (!found.problem.empty()) session.say(found.problem);
    }
  }

  void set(Session& session) const {
    const Setting before = named(session);
    if (before.isSecret) refuseSecret();
    const bool isNewRoot = !session.hasRoot();
    try {
      session.settings().set(key_, value_);
    } catch (const ConfigError& error) {
      if (error.kind() == ConfigError::Kind::badValue) throw UsageError(error.what());
      throw;
    }
    if (isNewRoot) session.tellOfNewRoot();
    tellOfChange(session);
  }

  [[noreturn]] void refuseSecret() const {
    const auto secrets = AppSettings::secretNames();
    const auto found = std::ranges::find(secrets, key_, &AppSettings::SecretName::key);
    throw UsageError(
        fmt::format("{} 是密钥，不写在命令行里，请用 nomely secret set {}", key_, found->name));
  }

  // A vendor brings its model and address along.
  void tellOfChange(Session& session) const {
    const Setting after = named(session);
    if (session.isJson())
      return session.printJson({{"key", after.key}, {"value", jsonOf(after.value)}});
    const auto tell = [&](const Setting& setting) {
      session.say(fmt::format("{} = {}", setting.key,
                              isEmpty(setting.value) ? "（未设置）" : textOf(setting.value)));
    };
    tell(after);
    if (key_ != "ai.provider") return;
    for (const Setting& setting : session.settings().settings())
      if (setting.key == "ai.model" || setting.key == "ai.baseURL") tell(setting);
  }

  std::string key_;
  std::string value_;
};

}  // namespace

std::unique_ptr<Command> makeConfigCommand() {
  return std::make_unique<ConfigCommand>();
}

}  // namespace nomely
