#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "App/AppSettings.h"
#include "App/ResidentLock.h"
#include "App/RiskyOperation.h"
#include "Core/Lifecycle/Backup/BackupManager.h"
#include "Core/Lifecycle/DataDirWatcher.h"
#include "Core/Lifecycle/Maintenance/StartupMaintenance.h"
#include "Core/Lifecycle/StartupCoordinator.h"
#include "Core/Query/EntryDateIndex.h"
#include "Core/Query/SearchIndex.h"
#include "Core/Service/MemoService.h"
#include "Core/Storage/TagConfigStore.h"
#include "Platform/Concurrency/JobGroup.h"
#include "Platform/Concurrency/JobPool.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/MainExecutor.h"
#include "Platform/Concurrency/Observable.h"
#include "Platform/Concurrency/Subscription.h"
#include "Platform/Concurrency/Timers.h"
#include "Platform/Network/HttpClient.h"
#include "Platform/Network/WebSocketClient.h"
#include "Platform/Settings/MemorySecrets.h"
#include "Platform/Settings/UserDefaults.h"
#include "Platform/System/Environment.h"
#include "Platform/Time/Clock.h"

namespace nomely {

class BackgroundSettling;
class DayViewModel;
class HourlyBackup;
class ResidentBot;
class SummaryGeneration;

// What the outside world gives an application. What is referred to must outlive it.
struct ApplicationContext {
  Environment environment;
  std::optional<std::filesystem::path> root;  // chosen by the user; absent: the usual one
  MainExecutor& executor;
  const Clock& clock;
  FileSystem& fileSystem;
  SecretBackend& secrets;
  HttpClient& http;
  WebSocketClient& webSockets;
  Timers& timers;
  std::string version = {};  // of this program; archives tell it
};

// Builds everything once, in order, and owns it for the life of the process. Lives on the main
// executor. Nothing in its construction fails: what can't be read has its defaults, and an
// unreadable root shows empty days and reports itself at the first write.
class Application {
 public:
  explicit Application(const ApplicationContext& context);
  ~Application();
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;

  // Under a test host the root is a private folder, and no setting or secret of the user's is read.
  [[nodiscard]] bool isUnitTesting() const { return isUnitTesting_; }
  // Since a restore has replaced the data, until the process ends: start-up jobs refuse to start.
  [[nodiscard]] bool dataMaintenance() const { return storage_.gate.isFrozen(); }

  [[nodiscard]] const Environment& environment() const { return environment_; }
  [[nodiscard]] const DiskPaths& paths() const { return storage_.paths; }
  [[nodiscard]] const StoreContext& storage() const { return storage_; }
  [[nodiscard]] const DayStore& dayStore() const { return memos_.days(); }
  // What changes notes.
  [[nodiscard]] const MemoService& memos() const { return memos_; }
  [[nodiscard]] SearchIndex& searchIndex() { return searchIndex_; }
  [[nodiscard]] const BackupManager& backups() const { return backups_; }
  // Before something that is hard to take back: makes a backup, and returns when it stands. Nothing
  // happens where there is no root. Blocking. Throws ImportSafetyError, CancellationError.
  void backupBeforeRiskyOperation(const RiskyOperation& operation, const BackupWork& work) const;
  // Makes the automatic backup if the newest is twelve hours old. Returns whether it did. Blocking.
  // Throws as BackupManager does.
  bool backupWhenDue(const BackupWork& work) const;
  // See BackupManager::restore. What was read of the former data is forgotten.
  RestoreResult restoreBackup(const std::filesystem::path& archive, SafetyCopy safetyCopy,
                              const BackupWork& work);
  // The models of a user interface, made when first asked for: a single command needs none.
  [[nodiscard]] DayViewModel& dayViewModel();
  [[nodiscard]] SummaryGeneration& summaries();
  [[nodiscard]] EntryDateIndex& entryDateIndex();
  [[nodiscard]] TagConfigStore& tagConfig();
  [[nodiscard]] AppSettings& settings() { return settings_; }
  [[nodiscard]] HttpClient& http() { return http_; }
  [[nodiscard]] UserDefaults& userDefaults() { return userDefaults_; }
  [[nodiscard]] StartupCoordinator& startup() { return startup_; }

  // Whether this process is the one of the root that stays: asked before the jobs below, it runs
  // the chat bot with them. False while another process is. Throws FileError, WriteError,
  // and HttpError for a NOMELY_FEISHU_ROOT that may not be asked.
  [[nodiscard]] bool becomeResident();
  // Of the process that stays.
  [[nodiscard]] ResidentBot& residentBot() { return *residentBot_; }
  // Ends the bot and stops watching the root; returns when that has happened.
  void endResidence();

  // Once the jobs below have run: the root's path names another folder than at the start, or none
  // any more. What stays then needs another application. They may destroy this one.
  std::function<void()> onRootReplaced;
  std::function<void()> onRootMissing;

  // Starts the jobs that follow the first content, once, when `ready`. Called at each change of
  // that condition.
  void startMaintenance(bool ready);
  // Tells the user of recordings that the maintenance pass has put into memos.
  Observable<std::optional<std::string>> orphanRestoreToast;

 private:
  [[nodiscard]] std::unique_ptr<DataDirWatcher> makeWatcher();
  // After other programs' writes.
  void readAgain();
  // After writes that went through the gate: the index has followed.
  void refreshLists();
  // The pass over the stored data, on a background thread.
  [[nodiscard]] StartupMaintenance::Result runMaintenance(const std::stop_token& stop);
  void showMaintenance(const StartupMaintenance::Result& result);

  MainExecutor& executor_;
  HttpClient& http_;
  WebSocketClient& webSockets_;
  Timers& timers_;
  Environment environment_;
  bool isUnitTesting_;
  StoreContext storage_;
  MemoService memos_;
  BackupManager backups_;
  std::filesystem::path stateFolder_;
  UserDefaults userDefaults_;
  MemorySecrets testSecrets_;  // under a test host
  AppSettings settings_;
  JobPool jobs_;
  SearchIndex searchIndex_;
  std::unique_ptr<DayViewModel> dayViewModel_;
  std::unique_ptr<SummaryGeneration> summaries_;
  std::optional<EntryDateIndex> entryDateIndex_;
  std::optional<TagConfigStore> tagConfig_;
  ResidentLock residentLock_;
  std::unique_ptr<ResidentBot> residentBot_;
  std::unique_ptr<HourlyBackup> hourlyBackup_;  // of the process that stays
  StartupCoordinator startup_;
  JobGroup reading_{jobs_};
  bool isReading_ = false;  // after other programs' writes
  bool hasToReadAgain_ = false;
  Lifetime lifetime_;
  std::unique_ptr<BackgroundSettling> settling_;    // with the watcher
  std::unique_ptr<DataDirWatcher> dataDirWatcher_;  // none under a test host
  Subscription externalMemoWritten_;
};

}  // namespace nomely
