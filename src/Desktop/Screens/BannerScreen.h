#pragma once

#include <QObject>
#include <QString>
#include <deque>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/ScreenContext.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/Subscription.h"

namespace nomely {

class DayViewModel;
struct PendingUndoDelete;

// What the window tells the user. A failure stays until it is closed; a success goes by itself
// after a while, an offer to take something back after a longer one. Several wait for each other,
// and nothing is dropped but what is already there in the same words. Main thread.
class BannerScreen : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(QString error READ error NOTIFY errorChanged)
  Q_PROPERTY(QString errorAction READ errorAction NOTIFY errorChanged)
  Q_PROPERTY(int errorCount READ errorCount NOTIFY errorChanged)
  Q_PROPERTY(QString toast READ toast NOTIFY toastChanged)
  Q_PROPERTY(QString toastAction READ toastAction NOTIFY toastChanged)
  // While it is: the pointer rests on the toast, or the keyboard is there. It doesn't go then.
  Q_PROPERTY(bool isHeld READ isHeld WRITE setHeld NOTIFY isHeldChanged)
  // How saving goes: "已保存 14:32" for a moment, "没有保存" until a save goes well.
  Q_PROPERTY(QString saveNote READ saveNote NOTIFY saveNoteChanged)
  Q_PROPERTY(bool isUnsaved READ isUnsaved NOTIFY saveNoteChanged)

 public:
  using Action = std::function<void()>;

  explicit BannerScreen(const ScreenContext& context);
  ~BannerScreen() override;

  [[nodiscard]] QString error() const;
  [[nodiscard]] QString errorAction() const;
  [[nodiscard]] int errorCount() const { return static_cast<int>(errors_.size()); }
  [[nodiscard]] QString toast() const;
  [[nodiscard]] QString toastAction() const;
  [[nodiscard]] bool isHeld() const { return isHeld_; }
  void setHeld(bool isHeld);
  [[nodiscard]] QString saveNote() const { return saveNote_; }
  [[nodiscard]] bool isUnsaved() const { return isUnsaved_; }

  // For other screens. The action's words stand beside the text; it closes the message and is
  // called.
  void fail(const QString& text, const QString& actionText = {}, Action action = {});
  void succeed(const QString& text);
  void offer(const QString& text, const QString& actionText, Action action);

  Q_INVOKABLE void closeError();
  Q_INVOKABLE void actOnError();
  Q_INVOKABLE void closeToast();
  Q_INVOKABLE void actOnToast();

 signals:
  void errorChanged();
  void toastChanged();
  void isHeldChanged();
  void saveNoteChanged();
  // Asks for the history of the memo with that identity.
  void historyAsked(const QString& memoId);

 private:
  enum class Kind { success, offer, undoDelete };
  struct Message {
    QString text;
    QString actionText;
    Action action;
    Kind kind = Kind::success;
  };

  void watchModel();
  void watchNotices();
  void watchSettings();
  void showOffer(const PendingUndoDelete* offer);
  void tellUnreadable(const std::string& what);
  void show(Message message);
  void restartTimer();
  void showSaveNote(const QString& text, bool isUnsaved);

  const ScreenContext context_;
  DayViewModel& timeline_;
  std::deque<Message> errors_;  // the first is shown
  std::deque<Message> toasts_;
  std::set<std::string> offered_;     // in the trash, by the latest offer
  std::set<std::string> unreadable_;  // told of
  bool hasToldOfOriginal_ = false;
  bool isHeld_ = false;
  QString saveNote_;
  bool isUnsaved_ = false;
  Timers::Timer toastTimer_;
  Timers::Timer noteTimer_;
  std::vector<Subscription> subscriptions_;
  Lifetime lifetime_;
};

}  // namespace nomely
