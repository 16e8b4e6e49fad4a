#include "Desktop/Screens/BannerScreen.h"

#include <QDesktopServices>
#include <QUrl>
#include <algorithm>
#include <chrono>
#include <utility>

#include "App/Application.h"
#include "Core/Extensions/DateFormatters.h"
#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/Qt.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Concurrency/NotificationCenter.h"

namespace nomely {
namespace {

constexpr std::chrono::seconds successTime{4};
constexpr std::chrono::seconds successTimeInQueue{2};
constexpr std::chrono::seconds offerTime{10};
constexpr std::chrono::seconds noteTime{2};

}  // namespace

BannerScreen::BannerScreen(const ScreenContext& context)
    : context_(context), timeline_(context.application.dayViewModel()) {
  watchModel();
  watchNotices();
  watchSettings();
  connect(&context_.navigation, &Navigation::toasted, this, &BannerScreen::succeed);
  connect(&context_.navigation, &Navigation::offered, this,
          [this](const QString& text, const Navigation::Action& action) {
            offer(text, action.text, action.run);
          });
  connect(&context_.navigation, &Navigation::failed, this,
          [this](const QString& text, const Navigation::Action& action) {
            fail(text, action.text, action.run);
          });
}

BannerScreen::~BannerScreen() {
  context_.application.settings().onProblem = nullptr;
}

void BannerScreen::watchModel() {
  const auto taken = [](auto& banner, auto tell) {
    return banner.observe([&banner, tell](const std::optional<std::string>& text) {
      if (!text) return;
      tell(qt(*text));
      banner.set(std::nullopt);
    });
  };
  subscriptions_.push_back(taken(timeline_.lastError, [this](const QString& text) { fail(text); }));
  subscriptions_.push_back(
      taken(timeline_.lastSuccess, [this](const QString& text) { succeed(text); }));
  subscriptions_.push_back(taken(context_.application.orphanRestoreToast,
                                 [this](const QString& text) { succeed(text); }));
  subscriptions_.push_back(timeline_.pendingUndoDelete.observe(
      [this](const auto& offer) { showOffer(offer ? &*offer : nullptr); }));
  subscriptions_.push_back(timeline_.saveState.observe([this](const SaveState& state) {
    if (state.kind == SaveState::Kind::saved)
      showSaveNote(tr("已保存 %1").arg(qt(DateFormatters::timeOnly.format(state.at))), false);
    else if (state.kind == SaveState::Kind::failed)
      showSaveNote(tr("没有保存"), true);
  }));
}

// Other threads post these, too.
void BannerScreen::watchNotices() {
  const auto observe = [this](std::string_view name, auto tell) {
    subscriptions_.push_back(NotificationCenter::shared().observe(
        name, [&executor = context_.executor,
               guarded = lifetime_.guard(std::move(tell))](const std::string& payload) {
          executor.post([guarded, payload] { guarded(payload); });
        }));
  };
  observe(Notifications::memoPassedOver, [this](const std::string& what) { tellUnreadable(what); });
  observe(Notifications::notesSettled, [this](const std::string& text) { succeed(qt(text)); });
  observe(Notifications::originalKept, [this](const std::string& memoId) {
    if (std::exchange(hasToldOfOriginal_, true)) return;
    offer(tr("文件头里有 Nomely 不用的内容，改写前的原文件已留在历史里。"), tr("查看"),
          [this, memoId] { emit historyAsked(qt(memoId)); });
  });
}

void BannerScreen::watchSettings() {
  context_.application.settings().onProblem =
      [&executor = context_.executor, guarded = lifetime_.guard([this](const std::string& problem) {
        fail(qt(problem));
      })](const std::string& problem) { executor.post([guarded, problem] { guarded(problem); }); };
}

// The model tells of an offer again when a part of it has gone from the trash: such a one is not
// made again.
void BannerScreen::showOffer(const PendingUndoDelete* offer) {
  std::set<std::string> entries;
  if (offer)
    for (const TrashEntry& entry : offer->entries) entries.insert(entry.trashSubdir);
  const bool isOld = std::ranges::includes(offered_, entries);
  offered_ = std::move(entries);
  if (offer && isOld) return;
  const bool wasShown = !toasts_.empty() && toasts_.front().kind == Kind::undoDelete;
  std::erase_if(toasts_, [](const Message& each) { return each.kind == Kind::undoDelete; });
  if (offer)
    toasts_.push_front({.text = qt(offer->label),
                        .actionText = tr("撤销"),
                        .action = [this] { timeline_.undoDelete(); },
                        .kind = Kind::undoDelete});
  else if (!wasShown)
    return;
  restartTimer();
  emit toastChanged();
}

void BannerScreen::tellUnreadable(const std::string& what) {
  if (!unreadable_.insert(what).second) return;
  constexpr std::string_view mark = "：";
  const std::string path = what.substr(0, what.find(mark));
  fail(tr("读不出 %1").arg(qt(what)), tr("打开文件"),
       [path] { QDesktopServices::openUrl(QUrl::fromLocalFile(qt(path))); });
}

QString BannerScreen::error() const {
  return errors_.empty() ? QString() : errors_.front().text;
}

QString BannerScreen::errorAction() const {
  return errors_.empty() ? QString() : errors_.front().actionText;
}

QString BannerScreen::toast() const {
  return toasts_.empty() ? QString() : toasts_.front().text;
}

QString BannerScreen::toastAction() const {
  return toasts_.empty() ? QString() : toasts_.front().actionText;
}

void BannerScreen::fail(const QString& text, const QString& actionText, Action action) {
  if (text.isEmpty() || std::ranges::find(errors_, text, &Message::text) != errors_.end()) return;
  errors_.push_back({text, actionText, std::move(action)});
  emit errorChanged();
}

void BannerScreen::succeed(const QString& text) {
  show({.text = text, .actionText = {}, .action = {}, .kind = Kind::success});
}

void BannerScreen::offer(const QString& text, const QString& actionText, Action action) {
  show({.text = text, .actionText = actionText, .action = std::move(action), .kind = Kind::offer});
}

// One that says the same takes the other's place: its action is the later one.
void BannerScreen::show(Message message) {
  if (message.text.isEmpty()) return;
  const auto same = std::ranges::find(toasts_, message.text, &Message::text);
  if (same != toasts_.end())
    *same = std::move(message);
  else
    toasts_.push_back(std::move(message));
  restartTimer();
  emit toastChanged();
}

void BannerScreen::closeError() {
  if (errors_.empty()) return;
  errors_.pop_front();
  emit errorChanged();
}

void BannerScreen::actOnError() {
  if (errors_.empty()) return;
  const Action action = errors_.front().action;
  closeError();
  if (action) action();
}

void BannerScreen::closeToast() {
  if (toasts_.empty()) return;
  toasts_.pop_front();
  restartTimer();
  emit toastChanged();
}

void BannerScreen::actOnToast() {
  if (toasts_.empty()) return;
  const Action action = toasts_.front().action;
  closeToast();
  if (action) action();
}

void BannerScreen::setHeld(bool isHeld) {
  if (std::exchange(isHeld_, isHeld) == isHeld) return;
  restartTimer();
  emit isHeldChanged();
}

void BannerScreen::restartTimer() {
  toastTimer_.reset();
  if (toasts_.empty() || isHeld_) return;
  const auto time = toasts_.front().kind != Kind::success ? offerTime
                    : toasts_.size() > 1                  ? successTimeInQueue
                                                          : successTime;
  toastTimer_ = context_.timers.after(
      time, [&executor = context_.executor, guarded = lifetime_.guard([this] { closeToast(); })] {
        executor.post(guarded);
      });
}

void BannerScreen::showSaveNote(const QString& text, bool isUnsaved) {
  saveNote_ = text;
  isUnsaved_ = isUnsaved;
  noteTimer_.reset();
  emit saveNoteChanged();
  if (text.isEmpty() || isUnsaved) return;
  noteTimer_ = context_.timers.after(
      noteTime, [&executor = context_.executor, guarded = lifetime_.guard([this] {
        showSaveNote({}, false);
      })] { executor.post(guarded); });
}

}  // namespace nomely
