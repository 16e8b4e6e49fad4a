#include "Desktop/App/DesktopApplication.h"

#include <QCoreApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QUrl>
#include <cerrno>
#include <chrono>
#include <utility>

#include "Desktop/App/FocusReturn.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Pictures/DiagramProvider.h"
#include "Desktop/Pictures/IconProvider.h"
#include "Desktop/Pictures/ThumbnailProvider.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Error.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

constexpr std::chrono::seconds retryInterval{2};

}  // namespace

DesktopApplication::DesktopApplication(DesktopMachine machine, std::filesystem::path root)
    : machine_(std::move(machine)), root_(std::move(root)) {
  open();
}

DesktopApplication::~DesktopApplication() {
  lifetime_.end();
  again_.reset();
  engine_.reset();
  leave();
}

QString DesktopApplication::version() {
  return QStringLiteral(NOMELY_VERSION);
}

void DesktopApplication::start() {
  engine_ = std::make_unique<QQmlApplicationEngine>();
  engine_->addImportPath(QStringLiteral("qrc:/qt/qml"));
  engine_->addImageProvider(QStringLiteral("icon"), new IconProvider);
  engine_->addImageProvider(QLatin1String(ThumbnailProvider::name), new ThumbnailProvider);
  engine_->addImageProvider(QStringLiteral("diagram"),
                            new DiagramProvider(executor_, machine_.timers));
  engine_->setInitialProperties({{QStringLiteral("desktop"), QVariant::fromValue(this)}});
  engine_->load(QUrl(QStringLiteral("qrc:/qt/qml/Nomely/Qml/Main.qml")));
  if (engine_->rootObjects().isEmpty())
    throw Error("desktop.window", "窗口无法打开，请重新安装 nomely-desktop");
  window_ = qobject_cast<QQuickWindow*>(engine_->rootObjects().first());
  new FocusReturn(*window_);
  // Other programs may have written while the window was away.
  connect(window_, &QWindow::activeChanged, this, [this] {
    if (window_->isActive() && screens_) screens_->timeline()->refresh();
  });
}

void DesktopApplication::open() {
  application_ = std::make_unique<Application>(ApplicationContext{
      machine_.environment, root_, executor_, machine_.clock, machine_.fileSystem, machine_.secrets,
      machine_.http, machine_.webSockets, machine_.timers, utf8(version())});
  const StoreContext& storage = application_->storage();
  try {
    const auto found = storage.files.attributes(storage.paths.rootURL);
    if (found && found->type != FileType::directory)
      throw FileError("打开数据目录", storage.paths.rootURL, ENOTDIR);
    // One that isn't there yet is made: whether it vanishes later could not be told else.
    if (!found) storage.paths.createRoot(storage.files);
    (void)application_->becomeResident();
  } catch (const Error& error) {
    setObstacle(qt(error.what()));
    return tryLater();
  }
  setObstacle({});
  application_->onRootReplaced = [this] { startOver(); };
  application_->onRootMissing = [this] {
    setObstacle(tr("数据目录不见了，等它回来：%1").arg(qt(root_.string())));
    tryLater();
  };
  DayViewModel& timeline = application_->dayViewModel();
  loaded_ = timeline.hasLoadedInitialTimeline.observe(
      [this](bool isLoaded) { application_->startMaintenance(isLoaded); });
  screens_ = std::make_unique<DesktopScreens>(DesktopScreens::Context{
      *application_, executor_, jobs_, machine_.clock, machine_.timers, machine_.fileSystem});
  // Queued: the screen that tells of it goes with the root before.
  connect(
      screens_->settings(), &SettingsScreen::rootChosen, this,
      [this](const QString& root) {
        root_ = utf8(root);
        startOver();
      },
      Qt::QueuedConnection);
  screens_->timeline()->showAll();
  emit screensChanged();
}

void DesktopApplication::leave() {
  loaded_ = {};
  const std::unique_ptr<DesktopScreens> screens = std::move(screens_);
  emit screensChanged();  // the window lets go of them first
  if (application_) application_->endResidence();
}

// What is typed stays: it is put into the root that is there by now.
void DesktopApplication::startOver() {
  const FileManager files(machine_.fileSystem);
  if (!files.isDirectory(root_)) return tryLater();
  again_.reset();
  if (screens_ && !screens_->flush()) {
    setObstacle(tr("写下的文字还存不下来，请腾出磁盘空间，或让数据目录可以写入：%1")
                    .arg(qt(root_.string())));
    return tryLater();
  }
  const MemoHandle edited = editedMemo();
  leave();
  application_.reset();
  open();
  if (screens_ && edited.isValid()) screens_->focusEditor()->open(edited);
}

MemoHandle DesktopApplication::editedMemo() const {
  const bool isEditing = screens_ && screens_->navigation()->page() == Navigation::Editor;
  return isEditing ? screens_->focusEditor()->memo() : MemoHandle();
}

void DesktopApplication::tryLater() {
  again_ = machine_.timers.after(
      retryInterval,
      [this, guarded = lifetime_.guard([this] { startOver(); })] { executor_.post(guarded); });
}

void DesktopApplication::setObstacle(const QString& text) {
  if (std::exchange(obstacle_, text) != text) emit obstacleChanged();
}

void DesktopApplication::take(const StartRequest& request) {
  if (!request.activationToken.isEmpty())
    qputenv("XDG_ACTIVATION_TOKEN", request.activationToken.toUtf8());
  window_->show();
  window_->raise();
  window_->requestActivate();
  if (!screens_) return;
  if (request.day.isValid()) screens_->timeline()->showDay(request.day);
  QList<QUrl> files;
  for (const QString& file : request.files) files.append(QUrl::fromLocalFile(file));
  if (!files.isEmpty()) screens_->quickInput()->attachments()->add(files);
  if (request.isCapture || !request.files.isEmpty()) {
    screens_->navigation()->show(Navigation::Timeline);
    emit inputAsked();
  }
}

void DesktopApplication::close() {
  if (isClosing_) return;
  if (!screens_ || screens_->flush()) return end();
  ask({.title = tr("现在关闭，写下的文字会丢失"),
       .text = tr("数据目录和这台机器的状态目录都存不下它。腾出磁盘空间，或让数据目录回来，"
                  "再关闭就不会丢。"),
       .confirmText = tr("仍然关闭")});
}

void DesktopApplication::closeAnyway() {
  ask({});
  end();
}

void DesktopApplication::stay() {
  ask({});
}

void DesktopApplication::ask(const Question& question) {
  question_ = question;
  emit questionChanged();
}

void DesktopApplication::end() {
  if (std::exchange(isClosing_, true)) return;
  again_.reset();
  // Not quit(), which asks the window once more and takes its no for an answer.
  if (!screens_) return QCoreApplication::exit();
  application_->dayViewModel().afterWrites(lifetime_.guard([] { QCoreApplication::exit(); }));
}

}  // namespace nomely
