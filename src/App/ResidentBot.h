#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "App/AppSettings.h"
#include "App/BotStatus.h"
#include "Core/Service/MemoService.h"
#include "Feishu/Bridge/FeishuBridge.h"
#include "Platform/Concurrency/JobGroup.h"
#include "Platform/Concurrency/JobPool.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/SerialQueue.h"
#include "Platform/Concurrency/Timers.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Network/WebSocketClient.h"
#include "Platform/System/Environment.h"

namespace nomely {

// The chat bot in the process that stays: runs the bridge by the settings as they are at each
// moment, begins again where the bridge gives up, and keeps a BotStatus for others to read. Lives
// on the main executor; never blocks it.
class ResidentBot {
 public:
  // What is referred to must outlive it.
  struct Context {
    const Environment& environment;
    const MemoService& memos;
    AppSettings& settings;
    HttpClient& http;
    WebSocketClient& webSockets;
    Timers& timers;
    JobPool& jobs;
    MainExecutor& executor;
  };

  static constexpr std::chrono::minutes retryAfterGivingUp{15};
  static constexpr std::chrono::seconds retryLockedKeyring{30};
  static constexpr std::chrono::seconds settingsInterval{2};

  // Throws HttpError for a NOMELY_FEISHU_ROOT that may not be asked.
  explicit ResidentBot(const Context& context);
  // Ends the bridge; returns when that has happened.
  ~ResidentBot();
  ResidentBot(const ResidentBot&) = delete;
  ResidentBot& operator=(const ResidentBot&) = delete;

  // On the main executor. `onNotice` gets what a user should do, in Chinese.
  std::function<void(const ConnectionStatus&)> onStatus;
  std::function<void(const BotEvent&)> onEvent;
  std::function<void(const std::string& notice)> onNotice;

  // Once.
  void start();
  // Reads the settings and the secret again. What changed in a file is noticed without this.
  void reload();

  [[nodiscard]] const BotStatus& status() const { return status_; }

 private:
  // Why the settings are asked for: a bridge that gave up begins again, or not yet.
  enum class Reason { beginAgain, look };
  // Asks for them and the secret on a background job.
  void load(Reason reason);
  void apply(const FeishuConfig& config);
  void secretIsMissing(const std::string& why);
  void makeBridge(const FeishuConfig& config);
  void watchSettings();
  void lookAtSettings();
  void beginAgain();
  [[nodiscard]] Timers::Timer later(std::chrono::milliseconds delay, void (ResidentBot::*call)());

  void connectionChanged(const ConnectionStatus& status);
  void happened(const BotEvent& event);
  void tell(const std::string& notice);
  void save();

  Context context_;
  std::filesystem::path folder_;
  std::string platformRoot_;
  BotStatus status_;
  std::string settingsStamp_;
  std::string lastNotice_;
  bool isLoading_ = false;
  bool hasToLoadAgain_ = false;
  bool beginsAgain_ = false;  // with the next settings that are there
  SerialQueue saving_{"Nomely.bot.status"};
  Timers::Timer again_;     // after giving up, or a locked keyring
  Timers::Timer settings_;  // the next look at the settings' files
  Lifetime lifetime_;
  std::unique_ptr<FeishuBridge> bridge_;
  JobGroup loading_;
};

}  // namespace nomely
