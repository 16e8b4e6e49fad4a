#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "App/ResidentBot.h"
#include "CLI/Command.h"
#include "Core/Extensions/DateFormatters.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/NotificationCenter.h"
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

// Staying at the root's path, whichever folder that names: where it names another one, as after a
// restore, everything that knows the former one is destroyed and built anew, and where it names
// none the next one is waited for. Lives on the main executor.
class Residence {
 public:
  static constexpr std::chrono::seconds retryInterval{2};

  Residence(Session& session, const EventLines& lines) : session_(session), lines_(lines) {}

  // Throws where the root can't be stayed at.
  void begin() {
    const bool isNewRoot = !session_.hasRoot();
    if (!session_.application().becomeResident()) throw Error("run.already", takenByAnother);
    if (isNewRoot) session_.tellOfNewRoot();
    follow("started", "开始运行：" + root());
  }

  void reload() {
    lines_.print("reload", "重新读取设置");
    if (isResident_) session_.application().residentBot().reload();
  }

  void end() {
    again_.reset();
    leave();
  }

 private:
  static constexpr auto takenByAnother = "这个数据目录已经有一个 nomely run 在运行";

  [[nodiscard]] std::string root() const { return session_.application().paths().rootURL.string(); }

  void follow(const char* event, const std::string& text) {
    Application& application = session_.application();
    isResident_ = true;
    tellOf(application.residentBot());
    application.onRootReplaced = [this] { startOver(); };
    application.onRootMissing = [this] {
      leave();
      tryLater();  // between the two steps of a restore there is none, either
    };
    noticed_ = NotificationCenter::shared().observe(
        Notifications::externalMemoWritten, [this](const std::string&) {
          lines_.print("externalMemoWritten", "其他程序写入了笔记，已刷新");
        });
    settled_ = NotificationCenter::shared().observe(
        Notifications::notesSettled, [this](const std::string& told) {
          lines_.print("notesSettled", told, {{"text", told}});
        });
    rescued_ = application.orphanRestoreToast.observe([this](const auto& toast) {
      if (toast) lines_.print("recordingsRestored", *toast, {{"text", *toast}});
    });
    DayViewModel& timeline = application.dayViewModel();
    loaded_ = timeline.hasLoadedInitialTimeline.observe(
        [&application](bool isLoaded) { application.startMaintenance(isLoaded); });
    lines_.print(event, text, {{"root", root()}});
    timeline.loadDay(session_.clock().today());
  }

  void leave() {
    if (std::exchange(isResident_, false)) session_.application().endResidence();
    noticed_ = {};
    settled_ = {};
    rescued_ = {};
    loaded_ = {};
    session_.endApplication();
  }

  void startOver() {
    leave();
    try {
      if (!session_.hasRoot()) return putOff("rootMissing", "数据目录不见了，等它回来：" + root());
      if (!session_.application().becomeResident()) return putOff("waiting", takenByAnother);
    } catch (const Error& error) {
      return putOff("waiting", error.what());
    }
    const bool wasPutOff = !std::exchange(obstacle_, {}).empty();
    follow("restarted", wasPutOff ? "数据目录可以使用了，重新开始" : "数据目录已被替换，重新开始");
  }

  void putOff(const char* event, const std::string& obstacle) {
    if (std::exchange(obstacle_, obstacle) != obstacle) {
      tellServiceManager(fmt::format("STATUS={}", obstacle).c_str());
      lines_.print(event, obstacle, {{"text", obstacle}});
    }
    tryLater();
  }

  void tryLater() {
    again_ = session_.timers().after(
        retryInterval, [&executor = session_.executor(), guarded = lifetime_.guard([this] {
          startOver();
        })] { executor.post(guarded); });
  }

  void tellOf(ResidentBot& bot) {
    bot.onStatus = [this](const ConnectionStatus& status) {
      const std::string text = connectionText(status);
      tellServiceManager(fmt::format("STATUS={}", text).c_str());
      Json more{{"status", connectionCode(status.kind)}};
      if (!status.text.empty()) more["text"] = status.text;
      lines_.print("status", "机器人" + text, more);
    };
    bot.onEvent = [this](const BotEvent& event) { tell(event, lines_); };
    bot.onNotice = [this](const std::string& notice) {
      session_.say(fmt::format("{} {}", session_.errorStyle().warning("注意"), notice));
      if (session_.isJson()) lines_.print("notice", notice, {{"text", notice}});
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

  Session& session_;
  const EventLines& lines_;
  bool isResident_ = false;
  std::string obstacle_;  // that was told last
  Timers::Timer again_;
  Subscription noticed_;
  Subscription settled_;
  Subscription rescued_;
  Subscription loaded_;
  Lifetime lifetime_;
};

class RunCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.examples = {"nomely run", "systemctl --user enable --now nomely"};
  }

  void run(Session& session) override {
    const EventLines lines(session);
    Residence residence(session, lines);
    residence.begin();
    session.hostResident(awaitStop, [&] { residence.reload(); });
    tellServiceManager("STOPPING=1");
    residence.end();
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
};

}  // namespace

std::unique_ptr<Command> makeRunCommand() {
  return std::make_unique<RunCommand>();
}

}  // namespace nomely
