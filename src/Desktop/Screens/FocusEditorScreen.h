#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "Core/Storage/Drafts.h"
#include "Desktop/Base/BackgroundWork.h"
#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/ScreenContext.h"
#include "Desktop/Models/MemoHandle.h"
#include "Desktop/Models/TagChips.h"
#include "Desktop/Text/DraftWriter.h"
#include "Desktop/Text/MarkdownEditor.h"
#include "Desktop/Text/PendingAttachments.h"
#include "Desktop/Text/TagFieldCompletion.h"
#include "Platform/Concurrency/Lifetime.h"
#include "Platform/Concurrency/Subscription.h"

namespace nomely {

class DayViewModel;

// The page on which one memo is written. It knows the memo as it stood when editing began: saving
// never overwrites a change made elsewhere, but shows both texts for a choice. What is typed is a
// draft on the disk until it is saved. Main thread.
class FocusEditorScreen final : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("made by the window")
  Q_PROPERTY(bool isOpen READ isOpen NOTIFY opened)
  Q_PROPERTY(nomely::MemoHandle memo READ memo NOTIFY opened)  // as it stands on the disk
  Q_PROPERTY(QString title READ title NOTIFY opened)
  Q_PROPERTY(nomely::MarkdownEditor* editor READ editor CONSTANT)
  Q_PROPERTY(nomely::PendingAttachments* attachments READ attachments CONSTANT)
  Q_PROPERTY(nomely::TagChips* tags READ tags CONSTANT)
  Q_PROPERTY(nomely::TagFieldCompletion* tagChoices READ tagChoices CONSTANT)
  Q_PROPERTY(int mood READ mood WRITE setMood NOTIFY moodChanged)
  Q_PROPERTY(QStringList moods READ moods CONSTANT)
  Q_PROPERTY(QString count READ count NOTIFY countChanged)
  Q_PROPERTY(QString status READ status NOTIFY statusChanged)
  Q_PROPERTY(QString notice READ notice NOTIFY statusChanged)
  Q_PROPERTY(bool isSaving READ isSaving NOTIFY statusChanged)
  Q_PROPERTY(Conflict conflict READ conflict NOTIFY conflictChanged)
  Q_PROPERTY(QString conflictText READ conflictText NOTIFY conflictChanged)
  Q_PROPERTY(QString mine READ mine NOTIFY conflictChanged)
  Q_PROPERTY(QString theirs READ theirs NOTIFY conflictChanged)

 public:
  // With the disk: the memo says something else there, or its place holds it no longer.
  enum Conflict { NoConflict, Changed, Gone };
  Q_ENUM(Conflict)

  explicit FocusEditorScreen(const ScreenContext& context);
  ~FocusEditorScreen() override;

  [[nodiscard]] bool isOpen() const { return opened_.has_value(); }
  [[nodiscard]] MemoHandle memo() const;
  [[nodiscard]] QString title() const;
  [[nodiscard]] MarkdownEditor* editor() { return &editor_; }
  [[nodiscard]] PendingAttachments* attachments() { return &attachments_; }
  [[nodiscard]] TagChips* tags() { return &tags_; }
  [[nodiscard]] TagFieldCompletion* tagChoices() { return &tagChoices_; }
  [[nodiscard]] int mood() const { return static_cast<int>(mood_.value_or(0)); }
  void setMood(int mood);
  [[nodiscard]] QStringList moods() const;
  [[nodiscard]] QString count() const { return count_; }
  [[nodiscard]] QString status() const { return status_; }
  [[nodiscard]] QString notice() const { return notice_; }
  [[nodiscard]] bool isSaving() const { return isSaving_; }
  [[nodiscard]] Conflict conflict() const { return conflict_; }
  [[nodiscard]] QString conflictText() const { return conflictText_; }
  [[nodiscard]] QString mine() const;
  [[nodiscard]] QString theirs() const;

  // Reads the memo and its draft, and shows the page.
  Q_INVOKABLE void open(const nomely::MemoHandle& memo);
  // Keeps what isn't saved as a draft, and goes back.
  Q_INVOKABLE void leave();
  Q_INVOKABLE void save();
  Q_INVOKABLE void addTag(const QString& typed);
  Q_INVOKABLE void removeTag(const QString& tag);

  // Answers to a conflict. None of them loses a text without an undo.
  Q_INVOKABLE void keepMine();
  Q_INVOKABLE void takeTheirs();
  Q_INVOKABLE void keepBoth();
  Q_INVOKABLE void saveAsNew();

  // Looks whether the memo was changed elsewhere.
  void checkDisk();
  // Returns when the draft has been handed to its store. Blocking: for the end of the window.
  void flush();

 signals:
  void opened();
  void moodChanged();
  void countChanged();
  void statusChanged();
  void conflictChanged();

 private:
  // The memo that is open.
  struct Opened {
    Day date;
    Memo base;      // what saving expects on the disk
    QString shown;  // base's text as the area gave it back: equal means unchanged
  };

  void show(Day date, Memo base, const std::optional<FocusMemoDraft>& draft);
  void showMemo(const Memo& memo);
  void setFiles(const std::vector<std::string>& names,
                const std::map<std::string, std::string>& originalNames);
  void note();  // that something changed
  [[nodiscard]] Memo written() const;
  [[nodiscard]] bool hasChanges() const;
  [[nodiscard]] DraftWriter::Write draftWrite();
  void finishSave(const Memo& written, const std::optional<Memo>& stored,
                  const std::exception_ptr& failure);
  void raise(Conflict conflict, const QString& text, std::optional<Memo> theirs);
  void settle();  // a conflict
  // From a failure to what is written here: tries again, or shows it from another page.
  [[nodiscard]] Navigation::Action wayOn();
  void compare(const std::optional<Memo>& onDisk);
  void watch();
  void say(const QString& status);
  void tell(const QString& notice);  // for some seconds
  void countText();

  const ScreenContext context_;
  DayViewModel& timeline_;
  MarkdownEditor editor_;
  PendingAttachments attachments_;
  TagChips tags_;
  TagFieldCompletion tagChoices_;
  std::optional<Opened> opened_;
  std::optional<std::int64_t> mood_;
  std::optional<std::string> activeRecordingPath_;  // the draft's
  std::size_t generation_ = 0;                      // of `opened_` and its base
  Conflict conflict_ = NoConflict;
  QString conflictText_;
  std::optional<Memo> theirs_;
  QString count_;
  QString status_;
  QString notice_;
  bool isSaving_ = false;
  bool savesAgain_ = false;  // once it is known what the disk has
  QTimer countTimer_;
  QTimer savedTimer_;
  QTimer noticeTimer_;
  Lifetime lifetime_;
  std::vector<Subscription> subscriptions_;
  DraftWriter writer_;
  BackgroundWork work_;
};

}  // namespace nomely
