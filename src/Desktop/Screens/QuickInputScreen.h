#pragma once

#include <QDate>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <optional>
#include <string>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Core/Storage/Drafts.h"
#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Models/MonthInView.h"
#include "Desktop/Text/DraftWriter.h"
#include "Desktop/Text/MarkdownEditor.h"
#include "Desktop/Text/PendingAttachments.h"
#include "Platform/Concurrency/Subscription.h"

namespace nomely {

class DayViewModel;

// The input above the timeline: a text with its mood, day and files, until it is saved as a memo.
// What stands in it is on the disk all the while, and comes back at the next start. Main thread.
class QuickInputScreen final : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(nomely::MarkdownEditor* editor READ editor CONSTANT)
  Q_PROPERTY(nomely::PendingAttachments* attachments READ attachments CONSTANT)
  Q_PROPERTY(bool canSubmit READ canSubmit NOTIFY changed)
  Q_PROPERTY(bool isFilled READ isFilled NOTIFY changed)
  Q_PROPERTY(bool isSaving READ isSaving NOTIFY changed)
  // 0 for none.
  Q_PROPERTY(int mood READ mood WRITE setMood NOTIFY changed)
  Q_PROPERTY(QStringList moods READ moods CONSTANT)
  Q_PROPERTY(nomely::MonthInView* month READ month CONSTANT)
  Q_PROPERTY(QString dateText READ dateText NOTIFY changed)
  // Something said quietly for some seconds.
  Q_PROPERTY(QString notice READ notice NOTIFY noticeChanged)

 public:
  explicit QuickInputScreen(const ScreenContext& context);
  ~QuickInputScreen() override;

  [[nodiscard]] MarkdownEditor* editor() { return &editor_; }
  [[nodiscard]] PendingAttachments* attachments() { return &attachments_; }
  [[nodiscard]] bool canSubmit() const;
  // Whether there is anything that a draft would keep.
  [[nodiscard]] bool isFilled() const { return isFilled_; }
  [[nodiscard]] bool isSaving() const { return isSaving_; }
  [[nodiscard]] int mood() const { return mood_; }
  void setMood(int mood);
  [[nodiscard]] QStringList moods() const;
  // From which the memo's day is picked, in place of the one that follows the timeline.
  [[nodiscard]] MonthInView* month() { return &month_; }
  [[nodiscard]] QString dateText() const;
  [[nodiscard]] QString notice() const { return notice_; }

  // Makes a memo of it. A failure is told and leaves everything as it is.
  Q_INVOKABLE void submit();
  // Shows the month of the present day.
  Q_INVOKABLE void beginPicking();
  // Returns when the draft has been handed to its store. Blocking: for the end of the window.
  void flush();

 signals:
  void changed();
  void noticeChanged();
  // A memo was made of it, which stands there.
  void submitted(QDate day, int seqNumber);
  // Asks the view for the input.
  void shownAsked();

 private:
  [[nodiscard]] Day day() const;
  [[nodiscard]] QuickInputDraft draft() const;
  [[nodiscard]] bool hasContent() const;
  void setDay(QDate date);
  void note();  // that something changed
  void say(const QString& text);
  void restore(std::optional<QuickInputDraft> draft);
  void discard(const std::string& name, Day day);
  void tellUnsaved(const QString& why);
  void finish(const QString& submittedText, Day date, const Memo& made);

  const ScreenContext context_;
  DayViewModel& timeline_;
  MarkdownEditor editor_;
  PendingAttachments attachments_;
  MonthInView month_;
  int mood_ = 0;
  std::optional<Day> chosenDay_;
  // What the draft holds beside what shows here.
  QuickInputDraft kept_;
  bool isRestored_ = false;
  bool isFilled_ = false;
  bool isSaving_ = false;
  QString notice_;
  QTimer noticeTimer_;
  std::vector<Subscription> subscriptions_;
  DraftWriter writer_;
  BackgroundWork work_;
};

}  // namespace nomely
