#pragma once

#include <QObject>
#include <QString>
#include <QStringListModel>
#include <QTimer>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Core/Query/TagOperation.h"
#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"
#include "Platform/Concurrency/Subscription.h"

namespace nomely {

class SidebarScreen;
class TimelineScreen;

// The sheet in which a tag is renamed, merged or deleted in all notes: it counts what would change,
// asks, does it, and can be stopped. Notes that it deleted can be brought back. One operation at a
// time. Main thread.
class TagsScreen : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(Stage stage READ stage NOTIFY changed)
  Q_PROPERTY(QString title READ title NOTIFY changed)
  // The tag's other name; only some operations have one.
  Q_PROPERTY(bool hasOther READ hasOther NOTIFY changed)
  Q_PROPERTY(QString other READ other WRITE setOther NOTIFY changed)
  Q_PROPERTY(bool offersTags READ offersTags NOTIFY changed)
  Q_PROPERTY(QStringListModel* suggestions READ suggestions CONSTANT)
  // What will happen, is happening, or why it can't.
  Q_PROPERTY(QString text READ text NOTIFY changed)
  Q_PROPERTY(bool isRefused READ isRefused NOTIFY changed)
  Q_PROPERTY(QString confirmText READ confirmText NOTIFY changed)
  Q_PROPERTY(bool isDestructive READ isDestructive NOTIFY changed)
  Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
  // Whether notes that were deleted last were deleted here.
  Q_PROPERTY(bool canUndo READ canUndo NOTIFY canUndoChanged)

 public:
  enum Operation { Rename, Merge, Delete, DeleteWithMemos };
  Q_ENUM(Operation)
  // Counting and Working can be stopped; only at Ready can it be confirmed.
  enum Stage { Closed, Waiting, Counting, Ready, Working };
  Q_ENUM(Stage)

  // What is referred to must outlive this.
  TagsScreen(const ScreenContext& context, SidebarScreen& sidebar, TimelineScreen& timeline);
  ~TagsScreen() override;

  [[nodiscard]] Stage stage() const { return stage_; }
  [[nodiscard]] QString title() const;
  [[nodiscard]] bool hasOther() const { return operation_.hasOther(); }
  [[nodiscard]] bool offersTags() const { return operation_.kind == TagOperation::Kind::merge; }
  [[nodiscard]] QString other() const { return other_; }
  void setOther(const QString& other);
  [[nodiscard]] QStringListModel* suggestions() { return &suggestions_; }
  [[nodiscard]] QString text() const { return text_; }
  [[nodiscard]] bool isRefused() const { return isRefused_; }
  [[nodiscard]] QString confirmText() const;
  [[nodiscard]] bool isDestructive() const { return !operation_.hasOther(); }
  [[nodiscard]] double progress() const { return progress_; }
  [[nodiscard]] bool canUndo() const { return undo_.has_value(); }

  Q_INVOKABLE void open(Operation operation, const QString& tag);
  Q_INVOKABLE void confirm();
  // Ends what is under way; what is done stays done.
  Q_INVOKABLE void close();
  // Brings back the notes that were deleted last, with the looks of their tag.
  Q_INVOKABLE void undo();

 signals:
  void changed();
  void progressChanged();
  void canUndoChanged();

 private:
  enum class Run { dry, real, undo };
  struct Outcome {
    TagChange change;
    std::vector<std::string> trashed;
    std::vector<std::string> errors;
    std::string failure;  // why nothing was begun
    bool isStopped = false;
  };

  struct Undo {
    std::vector<std::string> trashed;
    std::function<void()> bringsLooksBack;
  };

  void plan();
  void count();
  void suggest();
  void start(Run run);
  void finish(const Outcome& outcome);
  void finishUndo(const Outcome& outcome);
  void setUndo(std::optional<Undo> undo);
  void show(Stage stage, const QString& text);
  void setProgress(double share);
  [[nodiscard]] static Outcome perform(Application& application, const TagOperation& operation,
                                       const TagRun& run);
  [[nodiscard]] static Outcome bringBack(Application& application,
                                         const std::vector<std::string>& trashed,
                                         const TagRun& run);

  const ScreenContext context_;
  SidebarScreen& sidebar_;
  TimelineScreen& timeline_;
  TagOperation operation_;
  QString other_;
  QStringListModel suggestions_;
  Stage stage_ = Closed;
  QString text_;
  bool isRefused_ = false;
  double progress_ = 0;
  std::stop_source stop_{std::nostopstate};
  std::optional<Undo> undo_;
  bool isUndoing_ = false;
  Subscription deletions_;
  QTimer typing_;
  Lifetime progressLifetime_;
  BackgroundWork work_;
};

}  // namespace nomely
