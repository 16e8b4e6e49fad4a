#include "App/Application.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

#include "App/BackgroundSettling.h"
#include "App/HourlyBackup.h"
#include "App/ResidentBot.h"
#include "Editor/Intelligence/SummaryGeneration.h"
#include "Editor/Recording/RecordingRecovery.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Cancellation.h"
#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/System/Log.h"
#include "Platform/System/Uuid.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

bool isUiTesting(const Environment& environment) {
  return environment.get("NOMELY_UI_TESTING") == "1";
}

bool isTestHost(const Environment& environment) {
  return environment.get("XCTestConfigurationFilePath").has_value();
}

constexpr std::size_t keptBackups = 3;
constexpr std::chrono::hours backupInterval{12};

// Letters, numbers and "-" alone: the name becomes part of a path.
std::string fixtureName(const Environment& environment) {
  const std::string given = environment.get("NOMELY_UI_FIXTURE").value_or(Uuid::random().string());
  std::string name;
  for (std::string_view rest = given; !rest.empty();) {
    const DecodedCharacter character = decodeFirst(rest);
    if (character.value == '-' || isLetterOrNumber(character.value))
      appendUtf8(name, character.value);
    rest.remove_prefix(character.length);
  }
  return name;
}

DiskPaths choosePaths(const ApplicationContext& context, const FileManager& files) {
  const std::filesystem::path temporary = context.environment.temporaryFolder();
  if (isUiTesting(context.environment))
    return {temporary / ("Nomely-UIFixture-" + fixtureName(context.environment))};
  if (isTestHost(context.environment))
    return {temporary / fmt::format("Nomely-TestHost-{}", ::getpid())};
  if (context.root) return {*context.root};
  return DiskPaths::defaultPaths(context.environment, files);
}

// On a small machine more threads than cores: building the search index waits for the disk while
// the files are not in the system's cache, and with eight reads under way it is done in half
// the time that two take. With the files there more threads cost nothing.
std::size_t jobThreads() {
  constexpr std::size_t readsUnderWay = 8;
  return std::max<std::size_t>(readsUnderWay, std::thread::hardware_concurrency());
}

}  // namespace

Application::Application(const ApplicationContext& context)
    : executor_(context.executor),
      http_(context.http),
      webSockets_(context.webSockets),
      timers_(context.timers),
      environment_(context.environment),
      isUnitTesting_(isUiTesting(context.environment) || isTestHost(context.environment)),
      storage_(choosePaths(context, FileManager(context.fileSystem)),
               FileManager(context.fileSystem), context.clock),
      memos_(storage_),
      backups_(storage_, keptBackups, {.app = context.version, .build = {}}),
      stateFolder_(isUnitTesting_ ? storage_.paths.rootURL / ".state"
                                  : context.environment.stateFolder()),
      userDefaults_(stateFolder_, storage_.files),
      settings_(storage_, isUnitTesting_ ? testSecrets_ : context.secrets,
                isUnitTesting_ ? AppSettings::Source::defaults : AppSettings::Source::files),
      jobs_(jobThreads()),
      searchIndex_(storage_, jobs_),
      residentLock_(storage_),
      startup_(context.executor) {
  if (isUnitTesting_) return;
  settling_ = std::make_unique<BackgroundSettling>(
      BackgroundSettling::Context{memos_, searchIndex_, jobs_, timers_, executor_}, [this] {
        refreshLists();
        NotificationCenter::shared().post(Notifications::refreshSidebarTags);
      });
  dataDirWatcher_ = makeWatcher();
  externalMemoWritten_ = NotificationCenter::shared().observe(
      Notifications::externalMemoWritten,
      lifetime_.guard([this](const std::string&) { readAgain(); }));
}

Application::~Application() = default;

std::unique_ptr<DataDirWatcher> Application::makeWatcher() {
  const auto posted = [this](auto call) {
    return [&executor = executor_, guarded = lifetime_.guard(std::move(call))] {
      executor.post(guarded);
    };
  };
  // Called as copies, which outlive an application that they destroy.
  return std::make_unique<DataDirWatcher>(
      storage_, systemFileEvents(), timers_,
      DataDirWatcher::Observer{
          .onExternalWrite =
              posted([] { NotificationCenter::shared().post(Notifications::externalMemoWritten); }),
          .onRootReplaced = posted([this] {
            if (const auto call = onRootReplaced) call();
          }),
          .onRootMissing = posted([this] {
            if (const auto call = onRootMissing) call();
          }),
          .onQuiet = posted([this] {
            if (!dataMaintenance()) settling_->run();
          })});
}

void Application::readAgain() {
  if (isReading_) {
    hasToReadAgain_ = true;
    return;
  }
  isReading_ = true;
  const auto read = lifetime_.guard([this] {
    isReading_ = false;
    refreshLists();
    if (std::exchange(hasToReadAgain_, false)) readAgain();
  });
  reading_.submit([this, read](const std::stop_token&) {
    (void)searchIndex_.rebuildIfDiskChanged();
    executor_.post(read);
  });
}

void Application::refreshLists() {
  if (entryDateIndex_) entryDateIndex_->refresh();
  if (dayViewModel_) dayViewModel_->refreshCurrentTimeline(DayViewModel::Cause::externalWrite);
}

DayViewModel& Application::dayViewModel() {
  if (!dayViewModel_)
    dayViewModel_ = std::make_unique<DayViewModel>(
        DayViewModel::Context{.service = memos_,
                              .searchIndex = &searchIndex_,
                              .executor = executor_,
                              .jobs = jobs_,
                              .machineDrafts = stateFolder_ / "drafts"});
  return *dayViewModel_;
}

SummaryGeneration& Application::summaries() {
  if (!summaries_)
    summaries_ = std::make_unique<SummaryGeneration>(
        memos_, AIAccess{[this] { return settings_.ai(); }, http_, executor_, storage_.clock},
        SummaryGeneration::Shown{
            .reload = [this] { dayViewModel().loadAllMemos(); },
            .failure = [this](const std::string& text) { dayViewModel().lastError.set(text); }});
  return *summaries_;
}

EntryDateIndex& Application::entryDateIndex() {
  if (!entryDateIndex_) entryDateIndex_.emplace(dayStore(), jobs_, executor_);
  return *entryDateIndex_;
}

TagConfigStore& Application::tagConfig() {
  if (!tagConfig_) tagConfig_.emplace(ConfigStore(storage_));
  return *tagConfig_;
}

bool Application::becomeResident() {
  if (residentBot_) return true;
  if (!residentLock_.acquire()) return false;
  if (dataDirWatcher_) dataDirWatcher_->rememberRoot();
  residentBot_ = std::make_unique<ResidentBot>(ResidentBot::Context{.environment = environment_,
                                                                    .memos = memos_,
                                                                    .settings = settings_,
                                                                    .http = http_,
                                                                    .webSockets = webSockets_,
                                                                    .timers = timers_,
                                                                    .jobs = jobs_,
                                                                    .executor = executor_});
  hourlyBackup_ = std::make_unique<HourlyBackup>(
      HourlyBackup::Context{timers_, jobs_, executor_},
      [this](const std::stop_token& stop) { backupWhenDue({.stop = stop}); });
  return true;
}

void Application::backupBeforeRiskyOperation(const RiskyOperation& operation,
                                             const BackupWork& work) const {
  if (!storage_.files.exists(storage_.paths.rootURL)) return;
  try {
    backups_.backup(work);
  } catch (const CancellationError&) {
    throw;
  } catch (const Error& error) {
    throw ImportSafetyError(operation, error.what());
  }
}

bool Application::backupWhenDue(const BackupWork& work) const {
  const bool isMade = backups_.backupIfNeeded(backupInterval, work);
  Log::information(LogChannel::storage, "{}",
                   isMade ? "自动备份完成" : "距上次备份不足 12 小时，跳过");
  return isMade;
}

RestoreResult Application::restoreBackup(const std::filesystem::path& archive,
                                         SafetyCopy safetyCopy, const BackupWork& work) {
  RestoreResult restored = backups_.restore(archive, safetyCopy, work);
  searchIndex_.invalidateCache();
  return restored;
}

void Application::endResidence() {
  if (dataDirWatcher_) dataDirWatcher_->stop();
  hourlyBackup_.reset();
  residentBot_.reset();
}

StartupMaintenance::Result Application::runMaintenance(const std::stop_token& stop) {
  const auto rescueRecordings = [this](const std::stop_token& token) {
    return RecordingRecovery::run(memos_, token).size();
  };
  backups_.finishInterruptedRestore();
  return StartupMaintenance(
             memos_, userDefaults_,
             {.backup = [this](const std::stop_token& token) { backups_.backup({.stop = token}); },
              .census = BackgroundSettling::censusOf(searchIndex_),
              .rescueRecordings = rescueRecordings})
      .run(stop);
}

void Application::showMaintenance(const StartupMaintenance::Result& result) {
  if (result.changed) {
    searchIndex_.invalidateCache();
    searchIndex_.warmUp([] {});
    refreshLists();
    NotificationCenter::shared().post(Notifications::refreshSidebarTags);
  }
  BackgroundSettling::tell(result.settled);
  if (result.settled.isWaiting) settling_->run();
  if (result.restoredAudio > 0)
    orphanRestoreToast.set(fmt::format("自动恢复 {} 段录音，已挂在「{}」标签下",
                                       result.restoredAudio, MemoService::recordingTag));
}

void Application::startMaintenance(bool ready) {
  if (isUnitTesting_ || dataMaintenance()) return;
  const auto maintenance = [this](const std::stop_token& stop,
                                  const StartupCoordinator::Completion& completion) {
    const auto finish =
        lifetime_.guard([this, stop, completion](const StartupMaintenance::Result& result) {
          if (!stop.stop_requested()) showMaintenance(result);
          completion(nullptr);
        });
    jobs_.submit(
        [this, stop, completion, finish](const std::stop_token&) {
          try {
            executor_.post([finish, result = runMaintenance(stop)] { finish(result); });
          } catch (...) {
            completion(std::current_exception());
          }
        },
        JobPool::Priority::utility);
  };
  const auto connection = [this](const std::stop_token&,
                                 const StartupCoordinator::Completion& completion) {
    if (residentBot_) residentBot_->start();
    if (dataDirWatcher_) dataDirWatcher_->start();
    completion(nullptr);
  };
  const auto backup = [this](const std::stop_token& stop,
                             const StartupCoordinator::Completion& completion) {
    jobs_.submit(
        [this, stop, completion](const std::stop_token&) {
          try {
            backupWhenDue({.stop = stop});
            completion(nullptr);
          } catch (...) {
            completion(std::current_exception());
          }
        },
        JobPool::Priority::utility);
    if (hourlyBackup_) hourlyBackup_->start();
  };
  startup_.start(ready,
                 {{"存储维护", maintenance}, {"连接与更新检查", connection}, {"自动备份", backup}});
}

}  // namespace nomely
