#pragma once

#include <QObject>
#include <QString>
#include <cstddef>
#include <optional>
#include <string>

#include <QtQml/qqmlregistration.h>

#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Models/HistoryModel.h"
#include "Desktop/Models/MemoHandle.h"
#include "Desktop/Models/Question.h"
#include "Desktop/Models/WordChanges.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/Subscription.h"

namespace nomely {

class BannerScreen;
class DayViewModel;

// The history of one memo: its versions, what became of the chosen one, and the way back to it.
// Main thread.
class HistoryScreen : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(nomely::HistoryModel* model READ model CONSTANT)
  Q_PROPERTY(QString title READ title NOTIFY memoChanged)
  Q_PROPERTY(bool isLoading READ isLoading NOTIFY loadingChanged)
  Q_PROPERTY(bool isRestoring READ isRestoring NOTIFY loadingChanged)
  Q_PROPERTY(int chosen READ chosen NOTIFY chosenChanged)
  Q_PROPERTY(bool isVersionChosen READ isVersionChosen NOTIFY chosenChanged)
  // Whether the chosen version is compared with the next newer one instead of the memo as it is.
  Q_PROPERTY(
      bool comparesWithNext READ comparesWithNext WRITE setComparesWithNext NOTIFY chosenChanged)
  Q_PROPERTY(nomely::WordChanges changes READ changes NOTIFY changesChanged)
  // "新增标签 #读书 · 取下附件 会议", and "+12 −3 字".
  Q_PROPERTY(QString details READ details NOTIFY changesChanged)
  Q_PROPERTY(QString size READ size NOTIFY changesChanged)
  // Of an original file.
  Q_PROPERTY(QString originalText READ originalText NOTIFY changesChanged)
  Q_PROPERTY(nomely::Question question READ question NOTIFY questionChanged)

 public:
  HistoryScreen(const ScreenContext& context, BannerScreen& banner);
  ~HistoryScreen() override;

  [[nodiscard]] HistoryModel* model() { return &model_; }
  [[nodiscard]] QString title() const;
  [[nodiscard]] bool isLoading() const { return isLoading_; }
  [[nodiscard]] bool isRestoring() const { return isRestoring_; }
  [[nodiscard]] int chosen() const { return chosen_; }
  [[nodiscard]] bool isVersionChosen() const { return model_.versionAt(chosen_) != nullptr; }
  [[nodiscard]] bool comparesWithNext() const { return comparesWithNext_; }
  void setComparesWithNext(bool isNext);
  [[nodiscard]] WordChanges changes() const { return changes_; }
  [[nodiscard]] QString details() const;
  [[nodiscard]] QString size() const;
  [[nodiscard]] QString originalText() const { return originalText_; }
  [[nodiscard]] Question question() const { return question_; }

  // Shows the panel.
  Q_INVOKABLE void open(const nomely::MemoHandle& memo);
  // The same for one of the timeline's memos.
  void openIdentity(const QString& memoId);
  Q_INVOKABLE void choose(int row);
  // Puts the chosen version in the memo's place, and offers to take that back.
  Q_INVOKABLE void restore();
  // Asks first.
  Q_INVOKABLE void clear();
  Q_INVOKABLE void accept();
  Q_INVOKABLE void dismiss();

 signals:
  void memoChanged();
  void loadingChanged();
  void chosenChanged();
  void changesChanged();
  void questionChanged();

 private:
  struct Loaded;
  struct Restored;

  void load();
  void show(Loaded&& loaded);
  void compare();
  void showChanges(WordChanges changes, const QString& original);
  void putBack(const VersionEntry& version, bool isUndo);
  void tellRestored(const Restored& restored, const VersionEntry& version, bool isUndo);
  void tellFailure(const QString& text, const VersionEntry& version, bool isUndo);
  void setRestoring(bool isRestoring);

  const ScreenContext context_;
  BannerScreen& banner_;
  DayViewModel& timeline_;
  HistoryModel model_;
  MemoEntry subject_{.date = Day({}), .memo = nullptr};
  std::optional<Memo> current_;  // as it is on the disk
  int chosen_ = -1;
  bool comparesWithNext_ = false;
  bool isLoading_ = false;
  bool isRestoring_ = false;
  std::size_t loadNumber_ = 0;
  std::size_t comparisonNumber_ = 0;
  WordChanges changes_;
  QString originalText_;
  Question question_;
  Subscription saved_;
  Lifetime lifetime_;
  BackgroundWork work_;
};

}  // namespace nomely
