#include "Desktop/Screens/SettingsScreen.h"

#include <QDesktopServices>
#include <algorithm>
#include <chrono>
#include <utility>

#include <fmt/format.h>

#include "App/Application.h"
#include "App/BackupAge.h"
#include "App/ChosenRoot.h"
#include "Core/Storage/TagConfigStore.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Screens/BannerScreen.h"
#include "Editor/Timeline/DayViewModel.h"

namespace nomely {
namespace {

constexpr std::chrono::seconds lookInterval{2};

// The palette by its name follows the desktop, unless one half of it was chosen.
constexpr const char* lookKey = "selectedColorTheme";
constexpr const char* lightLook = "morning-light";
constexpr const char* darkLook = "morning-dark";

QString nameOf(const std::filesystem::path& path, const Environment& environment) {
  const std::string home = environment.homeFolder().string();
  const std::string text = path.string();
  const bool isInHome =
      text.starts_with(home) && (text.size() == home.size() || text[home.size()] == '/');
  return isInHome ? QLatin1Char('~') + qt(text.substr(home.size())) : qt(text);
}

}  // namespace

SettingsScreen::SettingsScreen(const ScreenContext& context, BannerScreen& banner)
    : context_(context), banner_(banner), work_(context.executor, context.jobs) {
  look_ = storedLook();
  display_ = context_.application.settings().display();
  tags_ = context_.application.tagConfig().config().observe(
      [this](const TagConfig&) { emit tagOrderChanged(); });
  findOutFirstRun();
  watchFiles();
}

SettingsScreen::~SettingsScreen() = default;

SettingsScreen::Look SettingsScreen::storedLook() const {
  const std::string stored = context_.application.userDefaults().string(lookKey).value_or("");
  return stored == lightLook ? Light : stored == darkLook ? Dark : FollowDesktop;
}

void SettingsScreen::setLook(Look look) {
  if (std::exchange(look_, look) == look) return;
  emit lookChanged();
  save([&defaults = context_.application.userDefaults(), look] {
    defaults.setString(lookKey, look == Light ? lightLook : look == Dark ? darkLook : "morning");
  });
}

void SettingsScreen::setBodyFontSize(double size) {
  DisplayConfig shown = display_;
  shown.bodyFontSize = size;
  change("display.bodyFontSize", QString::number(size), shown);
}

void SettingsScreen::setTagFontSize(double size) {
  DisplayConfig shown = display_;
  shown.tagFontSize = size;
  change("display.tagFontSize", QString::number(size), shown);
}

void SettingsScreen::setSeriesNumberAscending(bool isAscending) {
  DisplayConfig shown = display_;
  shown.seriesNumberAscending = isAscending;
  change("display.seriesNumberAscending", QVariant(isAscending).toString(), shown);
}

void SettingsScreen::setShowsSeriesNumber(bool isShown) {
  DisplayConfig shown = display_;
  shown.defaultShowsSeriesNumber = isShown;
  change("display.defaultShowsSeriesNumber", QVariant(isShown).toString(), shown);
}

void SettingsScreen::setLinksAsCards(bool areCards) {
  DisplayConfig shown = display_;
  shown.linkDisplayMode =
      areCards ? DisplayConfig::LinkDisplayMode::card : DisplayConfig::LinkDisplayMode::text;
  change("display.linkDisplayMode", areCards ? QStringLiteral("card") : QStringLiteral("text"),
         shown);
}

void SettingsScreen::change(const char* key, const QString& value, const DisplayConfig& shown) {
  if (shown == display_) return;
  showDisplay(shown);
  save([&settings = context_.application.settings(), key, text = utf8(value)] {
    settings.set(key, text);
  });
}

void SettingsScreen::showDisplay(const DisplayConfig& display) {
  if (display == display_) return;
  display_ = display;
  emit displayChanged();
}

SettingsScreen::TagOrder SettingsScreen::tagOrder() const {
  return static_cast<TagOrder>(context_.application.tagConfig().config().get().sortMode);
}

void SettingsScreen::setTagOrder(TagOrder order) {
  if (order == tagOrder()) return;
  TagConfigStore& tags = context_.application.tagConfig();
  const TagConfig before = tags.config().get();
  TagConfig shown = before;
  shown.sortMode = static_cast<TagConfig::SortMode>(order);
  tags.adopt(shown);
  save([store = ConfigStore(context_.application.storage()), before, order] {
    store.change(TagConfig::fileName, before, [order](TagConfig& config) {
      config.sortMode = static_cast<TagConfig::SortMode>(order);
    });
  });
}

void SettingsScreen::save(std::function<void()> write) {
  ++changeNumber_;
  unsaved_.push_back(std::move(write));
  if (unsaved_.size() == 1) saveNext();
}

// One at a time: the file ends up with the last of several changes.
void SettingsScreen::saveNext() {
  if (unsaved_.empty()) return lookAtFiles();
  work_.run([write = unsaved_.front()](const std::stop_token&) { write(); },
            [this] {
              unsaved_.pop_front();
              ++changeNumber_;
              saveNext();
            },
            [this](const std::string& failure) {
              const auto write = unsaved_.front();
              unsaved_.pop_front();
              banner_.fail(tr("设置没有保存：%1").arg(qt(failure)), tr("重试"),
                           [this, write] { save(write); });
              stamp_.clear();  // what is shown goes back to what is saved
              saveNext();
            });
}

SettingsScreen::Files SettingsScreen::readFiles(const std::string& lastStamp) const {
  Application& application = context_.application;
  const auto tags = application.storage().files.attributes(application.paths().configFolder() /
                                                           TagConfig::fileName);
  Files files{.stamp = application.settings().stamp()};
  if (tags)
    files.stamp += fmt::format("{},{},{}", tags->fileNumber, tags->size,
                               tags->modified.time_since_epoch().count());
  files.look = storedLook();
  files.stamp += fmt::format(";{}", static_cast<int>(files.look));
  if (files.stamp == lastStamp) return files;
  files.areRead = true;
  application.settings().reload();
  files.display = application.settings().display();
  try {
    files.tags = ConfigStore(application.storage()).load<TagConfig>(TagConfig::fileName);
    if (!files.tags) files.tags.emplace();
  } catch (const Error& error) {
    files.tagsProblem = error.what();
  }
  return files;
}

void SettingsScreen::lookAtFiles() {
  work_.run([this, last = stamp_](const std::stop_token&) { return readFiles(last); },
            [this, number = changeNumber_](const Files& files) {
              // What was read may be from before a change of ours, or from before it was written.
              if (number == changeNumber_) show(files);
            });
}

void SettingsScreen::show(const Files& files) {
  if (!files.areRead || !unsaved_.empty()) return;
  stamp_ = files.stamp;
  showDisplay(files.display);
  if (std::exchange(look_, files.look) != files.look) emit lookChanged();
  TagConfigStore& tags = context_.application.tagConfig();
  if (files.tags && *files.tags != tags.config().get()) tags.adopt(*files.tags);
  banner_.fail(qt(files.tagsProblem));
}

// Looks instead of being told, which works on every file system.
void SettingsScreen::watchFiles() {
  lookAtFiles();
  timer_ = context_.timers.after(lookInterval,
                                 [&executor = context_.executor, guarded = lifetime_.guard([this] {
                                   watchFiles();
                                 })] { executor.post(guarded); });
}

QString SettingsScreen::rootName() const {
  return nameOf(context_.application.paths().rootURL, context_.application.environment());
}

QString SettingsScreen::rootNote() const {
  const std::string overruling = ChosenRoot::overruledBy(context_.application.environment());
  if (overruling.empty()) return {};
  return tr("环境变量 NOMELY_ROOT 设为 %1，下次启动仍用它。").arg(qt(overruling));
}

QString SettingsScreen::version() {
  return QStringLiteral(NOMELY_VERSION);
}

void SettingsScreen::open() {
  lookAtFiles();
  work_.run([&application = context_.application](
                const std::stop_token&) { return application.backups().newestBackup(); },
            [this](const std::optional<BackupFile>& newest) {
              const auto age =
                  newest ? context_.clock.now() - newest->date : std::chrono::microseconds::zero();
              isBackupOld_ = !newest || BackupAge::isTooOld(age);
              backupNote_ = newest ? qt(BackupAge::text(age)) : tr("还没有备份");
              emit backupChanged();
            });
}

void SettingsScreen::openRoot() {
  const QUrl folder = QUrl::fromLocalFile(qt(context_.application.paths().rootURL.string()));
  if (!QDesktopServices::openUrl(folder))
    banner_.fail(tr("没有能打开文件夹的程序：%1").arg(folder.toLocalFile()));
}

void SettingsScreen::chooseRoot(const QUrl& folder) {
  work_.run([files = context_.application.storage().files,
             chosen = std::filesystem::path(utf8(folder.toLocalFile()))](
                const std::stop_token&) { return ChosenRoot::within(chosen, files); },
            [this](const std::filesystem::path& root) { ask(root); },
            [this](const std::string& failure) { banner_.fail(qt(failure)); });
}

void SettingsScreen::ask(const std::filesystem::path& root) {
  if (root == context_.application.paths().rootURL)
    return banner_.succeed(tr("笔记已经在这个目录里。"));
  asked_ = root;
  question_ = {.title = tr("改用这个数据目录？"),
               .text = tr("以后的笔记写在 %1，命令行也一样。现有的笔记留在 %2，不会移动。")
                           .arg(nameOf(root, context_.application.environment()), rootName()),
               .confirmText = tr("改用"),
               .isDestructive = false};
  emit questionChanged();
}

void SettingsScreen::accept() {
  if (!question_.isAsked()) return;
  dismiss();
  work_.run(
      [&application = context_.application, root = asked_](const std::stop_token&) {
        const FileManager& files = application.storage().files;
        DiskPaths{root}.createRoot(files);
        ChosenRoot::settleOn(root, application.environment(), files);
      },
      [this] { emit rootChosen(qt(asked_.string())); },
      [this](const std::string& failure) { banner_.fail(qt(failure)); });
}

void SettingsScreen::dismiss() {
  question_ = {};
  emit questionChanged();
}

void SettingsScreen::findOutFirstRun() {
  work_.run(
      [days = context_.application.dayStore()](const std::stop_token&) {
        const FileManager& files = days.context().files;
        return !files.exists(days.paths().rootURL) ||
               std::ranges::none_of(days.namedDays(), [&](Day day) {
                 return files.isDirectory(days.paths().dayFolder(day));
               });
      },
      [this](bool isEmpty) {
        if (!isEmpty) return;
        isFirstRun_ = true;
        emit isFirstRunChanged();
        saved_ = context_.application.dayViewModel().allMemos.observe([this](const auto& memos) {
          if (memos.empty() || !std::exchange(isFirstRun_, false)) return;
          emit isFirstRunChanged();
        });
      });
}

}  // namespace nomely
