#include <chrono>
#include <condition_variable>
#include <mutex>

#include <fmt/format.h>

#include "App/BotAdvice.h"
#include "App/BotStatus.h"
#include "App/ResidentLock.h"
#include "CLI/ActionCommand.h"
#include "CLI/PagedOutput.h"
#include "CLI/SecretState.h"
#include "CLI/UsageError.h"
#include "CLI/Waiting.h"
#include "Core/Extensions/DateFormatters.h"
#include "Feishu/Conversation/BotPairing.h"
#include "Feishu/Conversation/FeishuLogStore.h"
#include "Feishu/Messages/FeishuInbox.h"
#include "Feishu/Protocol/FeishuAPI.h"
#include "Platform/Cancellation.h"
#include "Platform/Text/Replacing.h"

namespace nomely {
namespace {

class BotCommand final : public ActionCommand {
 public:
  void declare(Syntax& syntax) override {
    addDefault(syntax, "status", "机器人的设置和连接情况", status);
    add(syntax, "pair", "显示一个六位数，把它发给机器人，以后只有你能使用它", pair);
    add(syntax, "test", "用现在的凭证向平台要一次令牌，不需要 nomely run", test);
    add(syntax, "log", "最近 200 条往来消息", [this](Session& session) {
      log(session);
    }).add({.name = "--clear", .help = "清空这份记录", .target = &clear_});
    syntax.examples = {"nomely bot", "nomely bot pair", "nomely bot log --clear"};
  }

 private:
  static void status(Session& session);
  static void pair(Session& session);
  static void test(Session& session);
  void log(Session& session) const;

  bool clear_ = false;
};

struct Known {
  FeishuConfig config;  // without the secret
  SecretLookup secret;
  bool isRunning = false;
  std::optional<BotStatus> bot;  // of the process that runs
  FeishuInbox::Counts inbox;

  [[nodiscard]] static Known of(Session& session) {
    const StoreContext& storage = session.application().storage();
    Known known{.config = session.settings().withoutSecrets<FeishuConfig>(),
                .secret = session.settings().lookUpSecret("feishu"),
                .isRunning = ResidentLock::isHeld(storage),
                .bot = {},
                .inbox = FeishuInbox::counts(storage)};
    if (known.isRunning)
      known.bot = BotStatus::read(BotStatus::folder(session.environment(), storage.paths.rootURL),
                                  session.files());
    return known;
  }

  [[nodiscard]] Json json() const {
    Json json{{"enabled", config.enabled},
              {"appId", config.appId},
              {"secret", secretStateCode(secret.state)},
              {"allowedOpenID", config.allowedOpenID},
              {"running", isRunning}};
    if (bot) json["connection"] = bot->json();
    json["waiting"] = inbox.waiting;
    json["keptAside"] = inbox.aside;
    return json;
  }
};

std::string connectionLine(const Known& known) {
  if (!known.isRunning) return "nomely run 没有在运行";
  if (!known.bot) return "nomely run 在运行，还没有写下情况";
  return fmt::format("{}（{} 起）", connectionText(known.bot->connection),
                     DateFormatters::isoDateTime.format(known.bot->since));
}

void BotCommand::status(Session& session) {
  const Known known = Known::of(session);
  if (session.isJson()) return session.printJson(known.json());
  const Style style = session.style();
  const auto line = [&](const char* name, std::string_view text) {
    session.print(fmt::format("{}  {}\n", style.bold(name), Terminal::printable(text)));
  };
  line("启用", known.config.enabled ? "是" : "否");
  line("应用", known.config.appId.empty() ? "（未设置 feishu.appId）" : known.config.appId);
  line("密钥", secretStateText(known.secret.state));
  line("绑定", known.config.allowedOpenID.empty() ? "还没有" : known.config.allowedOpenID);
  line("连接", connectionLine(known));
  if (known.bot && known.bot->lastRecorded)
    line("记录", fmt::format("{} 条，最近一条在 {}", known.bot->recorded,
                             DateFormatters::isoDateTime.format(*known.bot->lastRecorded)));
  line("等待", fmt::format("{} 条还没写下的消息", known.inbox.waiting));
  if (known.inbox.aside > 0)
    line("搁置", fmt::format("{} 条，在 .meta/feishu-inbox/aside", known.inbox.aside));
  session.flush();
  if (!known.secret.problem.empty()) session.say(known.secret.problem);
  if (known.config.enabled && known.config.allowedOpenID.empty())
    session.say(fmt::format("{} {}", session.errorStyle().warning("注意"), BotAdvice::openToAll));
}

// The credentials as they are set. Throws Error where there are none.
FeishuConfig credentials(Session& session) {
  FeishuConfig config = session.settings().feishu();
  if (!config.isConfigured()) throw Error("bot.notConfigured", BotAdvice::hasNoCredentials);
  return config;
}

void BotCommand::test(Session& session) {
  const FeishuConfig config = credentials(session);
  FeishuAPI::Token token;
  session.host([&](const std::stop_token& stop) {
    const Waiting line(session);
    line.show("正在连接……");
    token = FeishuAPI::fetchToken({session.http(), FeishuAPI::platformRoot(session.environment())},
                                  config.appId, config.appSecret, stop);
  });
  if (session.isJson()) return session.printJson({{"ok", true}, {"expires", token.lifetime}});
  session.print("连接正常，凭证有效。\n");
}

// Until the code has been used, which who is allowed then tells; throws when it has not been.
std::string awaitPairing(const BotPairing& pairing, Session& session, const std::stop_token& stop) {
  constexpr std::chrono::milliseconds interval{300};
  std::mutex mutex;
  std::condition_variable_any never;
  std::unique_lock lock(mutex);
  while (pairing.isWaiting()) {
    never.wait_for(lock, stop, interval, [] { return false; });
    throwIfStopped(stop);
  }
  session.settings().reload();
  std::string openID = session.settings().withoutSecrets<FeishuConfig>().allowedOpenID;
  if (pairing.hasRunOut() || openID.empty())
    throw Error("bot.notPaired", "没有绑定：过了十分钟，或者发错了五次。请再运行 nomely bot pair");
  return openID;
}

// Standard output belongs to the JSON.
void showCode(const std::string& code, const Session& session) {
  const Style style = session.isJson() ? session.errorStyle() : session.style();
  const std::string line = fmt::format("请在十分钟内把这个数发给机器人：{}\n", style.bold(code));
  if (session.isJson()) {
    fmt::print(stderr, "{}", line);
  } else {
    session.print(line);
    session.flush();
  }
}

void BotCommand::pair(Session& session) {
  if (!session.settings().withoutSecrets<FeishuConfig>().enabled)
    throw Error("bot.off", BotAdvice::isOff);
  const StoreContext& storage = session.application().storage();
  const BotPairing pairing(BotStatus::folder(session.environment(), storage.paths.rootURL),
                           session.files(), session.clock());
  if (!ResidentLock::isHeld(storage))
    session.say("机器人还没有运行：请在另一个终端里运行 nomely run。");
  showCode(pairing.begin(), session);
  std::string openID;
  try {
    session.host(
        [&](const std::stop_token& stop) { openID = awaitPairing(pairing, session, stop); });
  } catch (const CancellationError&) {
    pairing.end();
    throw;
  }
  if (session.isJson()) return session.printJson({{"allowedOpenID", openID}});
  session.print(
      fmt::format("已绑定 {}，以后只有这个用户能使用机器人。\n", Terminal::printable(openID)));
}

void BotCommand::log(Session& session) const {
  const auto store = FeishuLogStore::of(session.application().storage());
  if (clear_) {
    if (!session.confirm("将清空与机器人往来的记录。")) return;
    store->clear();
    if (session.isJson()) return session.printJson(Json::array());
    return session.say("已清空。");
  }
  const std::vector<FeishuLogEntry> entries = store->load();
  const auto isIncoming = [](const FeishuLogEntry& entry) {
    return entry.direction == FeishuLogEntry::Direction::incoming;
  };
  if (session.isJson()) {
    Json json = Json::array();
    for (const FeishuLogEntry& entry : entries)
      json.push_back({{"id", entry.id},
                      {"direction", isIncoming(entry) ? "incoming" : "outgoing"},
                      {"timestamp", DateFormatters::utcTimestamp(entry.timestamp)},
                      {"text", entry.text}});
    return session.printJson(json);
  }
  const PagedOutput pager(session);
  const Style style = session.style();
  constexpr auto indented = "\n                       ";
  for (const FeishuLogEntry& entry : entries)
    session.print(fmt::format("{}  {} {}\n",
                              style.dim(DateFormatters::isoDateTime.format(entry.timestamp)),
                              isIncoming(entry) ? "→" : "←",
                              replacingAll(Terminal::printable(entry.text), "\n", indented)));
  session.flush();
  if (entries.empty()) session.say("还没有往来消息。");
}

}  // namespace

std::unique_ptr<Command> makeBotCommand() {
  return std::make_unique<BotCommand>();
}

}  // namespace nomely
