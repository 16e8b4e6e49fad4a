#pragma once

#include <QObject>
#include <functional>
#include <optional>
#include <stop_token>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "App/RiskyOperation.h"
#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Models/Question.h"
#include "Desktop/Models/TrashModel.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/Subscription.h"

namespace nomely {

class BannerScreen;
class DayViewModel;

// The trash's page. What is destroyed for good is asked about, and backed up first: with its
// progress shown, a way to stop it, and a way on without it where it fails. Main thread.
class TrashScreen : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(nomely::TrashModel* model READ model CONSTANT)
  Q_PROPERTY(bool isLoading READ isLoading NOTIFY busyChanged)
  Q_PROPERTY(bool isBusy READ isBusy NOTIFY busyChanged)
  Q_PROPERTY(bool isBackingUp READ isBackingUp NOTIFY backupChanged)
  Q_PROPERTY(double backupShare READ backupShare NOTIFY backupChanged)
  Q_PROPERTY(nomely::Question question READ question NOTIFY questionChanged)
  // Of the notes in the trash, as "2026-03-01".
  Q_PROPERTY(QString firstDay READ firstDay NOTIFY daysChanged)
  Q_PROPERTY(QString lastDay READ lastDay NOTIFY daysChanged)

 public:
  TrashScreen(const ScreenContext& context, BannerScreen& banner);
  ~TrashScreen() override;

  [[nodiscard]] TrashModel* model() { return &model_; }
  [[nodiscard]] bool isLoading() const;
  [[nodiscard]] bool isBusy() const;
  [[nodiscard]] bool isBackingUp() const { return backup_.has_value(); }
  [[nodiscard]] double backupShare() const { return backup_ ? backup_->share : 0; }
  [[nodiscard]] Question question() const { return question_; }
  [[nodiscard]] QString firstDay() const;
  [[nodiscard]] QString lastDay() const;

  // Reads the trash anew: to be called when the page is shown.
  Q_INVOKABLE void open();

  Q_INVOKABLE void restore(int row);
  Q_INVOKABLE void restoreChecked();
  // These ask first.
  Q_INVOKABLE void remove(int row);
  Q_INVOKABLE void removeChecked();
  Q_INVOKABLE void empty();
  // Days as a user types them, "2026-3-1"; both are included, in either order.
  Q_INVOKABLE void removeBetween(const QString& first, const QString& last);
  // "这些天共 3 条笔记", "该范围内没有笔记".
  [[nodiscard]] Q_INVOKABLE QString countBetween(const QString& first, const QString& last) const;

  Q_INVOKABLE void accept();
  Q_INVOKABLE void dismiss();
  Q_INVOKABLE void stopBackup();

 signals:
  void busyChanged();
  void backupChanged();
  void questionChanged();
  void daysChanged();

 private:
  using Entries = TrashModel::Entries;

  struct Erasing {
    const RiskyOperation& operation;
    std::function<void()> run;
  };
  struct Backup {
    double share = 0;
    std::stop_source stop;
  };

  void showEntries();
  void restore(const Entries& entries);
  void tellRestored();
  void remove(const Entries& entries, const QString& title, const std::string& warning);
  [[nodiscard]] Entries between(const QString& first, const QString& last) const;
  void ask(Question question, std::function<void()> accepted);
  void backUpAndErase(const Erasing& erasing);
  void showShare(double share);

  const ScreenContext context_;
  BannerScreen& banner_;
  DayViewModel& timeline_;
  TrashModel model_;
  Question question_;
  std::function<void()> accepted_;
  std::optional<Backup> backup_;
  Entries restoring_;  // asked for, and not told of yet
  std::vector<Subscription> subscriptions_;
  Lifetime lifetime_;
  BackgroundWork work_;
};

}  // namespace nomely
