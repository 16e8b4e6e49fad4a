#include <condition_variable>
#include <mutex>
#include <optional>

#include <fmt/format.h>

#include "App/ResidentBot.h"
#include "CLI/Command.h"
#include "Core/Extensions/DateFormatters.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/System/ServiceManager.h"

namespace nomely {
namespace {

// What happens, a line each: for a person with the time, under --json an object.
class EventLines {
 public:
  explicit EventLines(const Session& session) : session_(session) {}

  void print(const char* event, const std::string& text, const Json& more = Json::object()) const {
    const Moment now = session_.clock().now();
    if (session_.isJson()) {
      Json json{{"event", event}, {"time", DateFormatters::utcTimestamp(now)}};
      json.update(more);
      session_.printJson(json);
    } else {
      session_.print(fmt::format("{}  {}\n",
                                 session_.style().dim(DateFormatters::isoDateTime.format(now)),
                                 Terminal::printable(text)));
    }
    session_.flush();
  }

 private:
  const Session& session_;
};

class RunCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.examples = {"nomely run", "systemctl --user enable --now nomely"};
  }

  void run(Session& session) override {
    Application& application = session.application();
    const bool isNewRoot = !session.hasRoot();
    if (!application.becomeResident())
      throw Error("run.already", "这个数据目录已经有一个 nomely run 在运行");
    if (isNewRoot) session.tellOfNewRoot();

    const EventLines lines(session);
    ResidentBot& bot = application.residentBot();
    tellOf(bot, lines, session);
    DayViewModel& timeline = application.dayViewModel();
    const Subscription loaded = timeline.hasLoadedInitialTimeline.observe(
        [&](bool isLoaded) { application.startMaintenance(isLoaded); });
    lines.print("started", fmt::format("开始运行：{}", application.paths().rootURL.string()),
                {{"root", application.paths().rootURL.string()}});
    timeline.loadDay(session.clock().today());
    session.hostResident(awaitStop, [&] {
      lines.print("reload", "重新读取设置");
      bot.reload();
    });
    tellServiceManager("STOPPING=1");
    application.endResidence();
    lines.print("stopped", "已停止");
  }

 private:
  static void awaitStop(const std::stop_token& stop) {
    // By now a SIGHUP is taken for what it means.
    tellServiceManager("READY=1");
    std::mutex mutex;
    std::condition_variable_any changed;
    std::unique_lock lock(mutex);
    changed.wait(lock, stop, [] { return false; });
  }

  static void tellOf(ResidentBot& bot, const EventLines& lines, const Session& session) {
    bot.onStatus = [&lines](const ConnectionStatus& status) {
      const std::string text = connectionText(status);
      tellServiceManager(fmt::format("STATUS={}", text).c_str());
      Json more{{"status", connectionCode(status.kind)}};
      if (!status.text.empty()) more["text"] = status.text;
      lines.print("status", "机器人" + text, more);
    };
    bot.onEvent = [&lines](const BotEvent& event) { tell(event, lines); };
    bot.onNotice = [&](const std::string& notice) {
      session.say(fmt::format("{} {}", session.errorStyle().warning("注意"), notice));
      if (session.isJson()) lines.print("notice", notice, {{"text", notice}});
    };
  }

  static void tell(const BotEvent& event, const EventLines& lines) {
    using Kind = BotEvent::Kind;
    switch (event.kind) {
      case Kind::recorded: {
        const std::string place =
            event.place ? fmt::format("{}/{}", event.place->day.string(), event.place->seqNumber)
                        : std::string();
        return lines.print("recorded", "已记录 " + place, {{"memo", place}});
      }
      case Kind::answered:
        return lines.print("answered", "已回答一条查询");
      case Kind::failed:
        return lines.print("failed", "有一条消息没能写下，稍后再试：" + event.detail,
                           {{"text", event.detail}});
      case Kind::keptAside:
        return lines.print("keptAside",
                           "有一条消息没能写下，留在 .meta/feishu-inbox/aside：" + event.detail,
                           {{"text", event.detail}});
      case Kind::paired:
        return lines.print("paired", "已绑定，以后只有这个用户能使用机器人");
    }
  }
};

}  // namespace

std::unique_ptr<Command> makeRunCommand() {
  return std::make_unique<RunCommand>();
}

}  // namespace nomely
