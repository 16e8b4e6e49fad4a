#include "App/ResidentBot.h"

#include <exception>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

#include "AI/Transcription/SpeechEngines.h"
#include "App/BotAdvice.h"
#include "Feishu/Protocol/FeishuAPI.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

using Kind = ConnectionStatus::Kind;

}  // namespace

ResidentBot::ResidentBot(const Context& context)
    : context_(context),
      folder_(BotStatus::folder(context.environment, context.memos.context().paths.rootURL)),
      platformRoot_(FeishuAPI::platformRoot(context.environment)),
      loading_(context.jobs) {
  status_.since = context_.memos.context().clock.now();
  status_.process = ::getpid();
}

ResidentBot::~ResidentBot() {
  lifetime_.end();
  bridge_.reset();
  status_.connection = {};
  status_.since = context_.memos.context().clock.now();
  save();
}

void ResidentBot::start() {
  save();
  settingsStamp_ = context_.settings.stamp();
  load(Reason::beginAgain);
  watchSettings();
}

void ResidentBot::reload() {
  settingsStamp_ = context_.settings.stamp();
  context_.settings.reload();
  load(Reason::beginAgain);
}

Timers::Timer ResidentBot::later(std::chrono::milliseconds delay, void (ResidentBot::*call)()) {
  return context_.timers.after(
      delay, [&executor = context_.executor, guarded = lifetime_.guard([this, call] {
        (this->*call)();
      })] { executor.post(guarded); });
}

// Looks instead of being told, which works on every file system and costs five calls.
void ResidentBot::watchSettings() {
  settings_ = later(settingsInterval, &ResidentBot::lookAtSettings);
}

void ResidentBot::lookAtSettings() {
  if (context_.settings.stamp() != settingsStamp_) reload();
  watchSettings();
}

void ResidentBot::beginAgain() {
  load(Reason::beginAgain);
}

void ResidentBot::load(Reason reason) {
  if (reason == Reason::beginAgain) beginsAgain_ = true;
  if (isLoading_) {
    hasToLoadAgain_ = true;
    return;
  }
  isLoading_ = true;
  const auto ended = [this](auto then) {
    context_.executor.post(lifetime_.guard([this, then] {
      isLoading_ = false;
      if (std::exchange(hasToLoadAgain_, false)) return load(Reason::look);
      then();
    }));
  };
  loading_.submit([this, ended](const std::stop_token&) {
    try {
      // Who doesn't use the bot is not asked to unlock anything.
      FeishuConfig config = context_.settings.withoutSecrets<FeishuConfig>();
      if (config.enabled) config = context_.settings.feishu();
      ended([this, config] { apply(config); });
    } catch (const std::exception& error) {
      // Most often a keyring that is locked; whatever it was is tried again.
      ended([this, why = std::string(error.what())] { secretIsMissing(why); });
    }
  });
}

void ResidentBot::apply(const FeishuConfig& config) {
  const bool beginsAgain = std::exchange(beginsAgain_, false);
  if (bridge_)
    bridge_->updateConfig(config);
  else if (config.enabled)
    makeBridge(config);
  if (beginsAgain && bridge_) {
    again_.reset();
    if (status_.connection.text == ConnectionStatus::gaveUp) bridge_->stop();
    bridge_->start();
  }
  if (!config.enabled) return tell(BotAdvice::isOff);
  if (!config.isConfigured()) return tell(BotAdvice::hasNoCredentials);
  if (config.allowedOpenID.empty()) tell(BotAdvice::openToAll);
}

void ResidentBot::secretIsMissing(const std::string& why) {
  if (!bridge_ || status_.connection.kind == Kind::error)
    connectionChanged({Kind::error, fmt::format("拿不到机器人的密钥，稍后再试：{}", why)});
  beginsAgain_ = true;
  again_ = later(retryLockedKeyring, &ResidentBot::beginAgain);
}

void ResidentBot::makeBridge(const FeishuConfig& config) {
  const auto posted = [this](auto call) {
    return [this, call = lifetime_.guard(std::move(call))](const auto& what) {
      context_.executor.post([call, what] { call(what); });
    };
  };
  AppSettings& settings = context_.settings;
  bridge_ = std::make_unique<FeishuBridge>(
      config, FeishuContext{.memos = context_.memos,
                            .http = context_.http,
                            .webSockets = context_.webSockets,
                            .timers = context_.timers,
                            .platformRoot = platformRoot_,
                            .temporaryFolder = context_.environment.temporaryFolder(),
                            .stateFolder = folder_,
                            .makeTranscriber =
                                [&settings, &http = context_.http,
                                 folder = context_.environment.temporaryFolder()] {
                                  return std::make_unique<SpeechTranscriber>(
                                      makeSpeechRecognizer(settings.transcription(), http), folder);
                                },
                            .saveAllowedOpenID =
                                [&settings](const std::string& openID) {
                                  settings.set("feishu.allowedOpenID", openID);
                                },
                            .onEvent = posted([this](const BotEvent& event) { happened(event); })});
  bridge_->setStatusObserver(
      posted([this](const ConnectionStatus& status) { connectionChanged(status); }));
}

void ResidentBot::connectionChanged(const ConnectionStatus& status) {
  if (status == status_.connection) return;
  status_.connection = status;
  status_.since = context_.memos.context().clock.now();
  save();
  if (onStatus) onStatus(status);
  if (status.kind != Kind::error || !bridge_) return;
  if (status.text == ConnectionStatus::gaveUp)
    again_ = later(retryAfterGivingUp, &ResidentBot::beginAgain);
  else if (status.text != ConnectionStatus::notConfigured)
    load(Reason::look);  // it may be the secret, which no file tells of
}

void ResidentBot::happened(const BotEvent& event) {
  if (event.kind == BotEvent::Kind::recorded) {
    status_.lastRecorded = context_.memos.context().clock.now();
    ++status_.recorded;
    save();
  }
  if (event.kind == BotEvent::Kind::paired) lastNotice_.clear();
  if (onEvent) onEvent(event);
}

void ResidentBot::tell(const std::string& notice) {
  if (std::exchange(lastNotice_, notice) != notice && onNotice) onNotice(notice);
}

void ResidentBot::save() {
  saving_.async([status = status_, folder = folder_, files = context_.memos.context().files] {
    try {
      status.write(folder, files);
    } catch (const Error& error) {
      Log::error(LogChannel::feishu, "⚠️ ResidentBot.save: {}", error.what());
    }
  });
}

}  // namespace nomely
