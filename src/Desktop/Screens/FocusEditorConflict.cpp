#include <utility>

#include "App/Application.h"
#include "Core/Extensions/TagUtilities.h"
#include "Core/Storage/WriteError.h"
#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Screens/EditedMemo.h"
#include "Desktop/Screens/FocusEditorScreen.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/System/Log.h"

namespace nomely {

using EditedMemo::shownText;
using EditedMemo::without;

void FocusEditorScreen::checkDisk() {
  if (!opened_ || isSaving_) return;
  work_.run([memos = context_.application.dayStore().memoStore(), date = opened_->date,
             number = opened_->base.seqNumber](
                const std::stop_token&) { return memos.read(date, number); },
            [this, generation = generation_](const std::optional<Memo>& onDisk) {
              if (opened_ && !isSaving_ && generation == generation_) compare(onDisk);
            },
            [](const std::string& failure) {
              Log::error(LogChannel::app, "⚠️ FocusEditorScreen.checkDisk: {}", failure);
            });
}

void FocusEditorScreen::compare(const std::optional<Memo>& onDisk) {
  const Memo& base = opened_->base;
  if (!onDisk) {
    // Off the page and with nothing of one's own there is nothing to lose.
    if (hasChanges() || context_.navigation.page() == Navigation::Editor)
      raise(Gone, qt(WriteError(WriteError::Kind::missingMemo).what()), std::nullopt);
  } else if (onDisk->memoId && base.memoId && *onDisk->memoId != *base.memoId) {
    raise(Gone, qt(WriteError(WriteError::Kind::identityChanged).what()), std::nullopt);
  } else if (isStoredAs(*onDisk, base)) {
    if (conflict_ != NoConflict) settle();
  } else if (isStoredAs(written(), *onDisk) || !hasChanges()) {
    const bool isOtherText = onDisk->body != base.body;
    opened_->base = *onDisk;
    if (isOtherText) editor_.replaceText(shownText(onDisk->body));
    opened_->shown = editor_.text();
    tags_.set(onDisk->tags);
    mood_ = onDisk->mood;
    setFiles(onDisk->attachments, onDisk->originalNames);
    settle();
    emit opened();
    emit moodChanged();
    if (isOtherText) tell(tr("这条笔记在别处改过，已换成新的内容"));
  } else if (EditedMemo::saySame(*onDisk, base)) {
    opened_->base = *onDisk;
    if (std::exchange(savesAgain_, false)) save();
  } else {
    raise(Changed, qt(WriteError(WriteError::Kind::conflict).what()), onDisk);
  }
}

void FocusEditorScreen::raise(Conflict conflict, const QString& text, std::optional<Memo> theirs) {
  savesAgain_ = false;
  conflict_ = conflict;
  conflictText_ = text;
  theirs_ = std::move(theirs);
  emit conflictChanged();
  // Nobody sees it on the page.
  if (conflict != NoConflict && context_.navigation.page() != Navigation::Editor)
    context_.navigation.fail(text, wayOn());
}

void FocusEditorScreen::settle() {
  raise(NoConflict, {}, std::nullopt);
}

QString FocusEditorScreen::mine() const {
  return conflict_ == NoConflict ? QString() : editor_.text();
}

QString FocusEditorScreen::theirs() const {
  return theirs_ ? shownText(theirs_->body) : QString();
}

void FocusEditorScreen::keepMine() {
  if (!theirs_) return;
  const QString text = editor_.text();
  opened_->base = *theirs_;
  opened_->shown = text == shownText(theirs_->body) ? text : QString();
  settle();
  save();
}

void FocusEditorScreen::takeTheirs() {
  if (!theirs_) return;
  opened_->base = *theirs_;
  editor_.replaceText(shownText(opened_->base.body));
  opened_->shown = editor_.text();
  tags_.set(opened_->base.tags);
  mood_ = opened_->base.mood;
  setFiles(opened_->base.attachments, opened_->base.originalNames);
  settle();
  emit opened();
  emit moodChanged();
  note();
}

void FocusEditorScreen::keepBoth() {
  if (!theirs_) return;
  const Memo theirs = *theirs_;
  editor_.replaceText(editor_.text() + QLatin1String("\n\n---\n\n") + shownText(theirs.body));
  std::vector<std::string> tags = tags_.tags();
  tags.insert(tags.end(), theirs.tags.begin(), theirs.tags.end());
  tags_.set(TagUtilities::uniqueTags(tags));
  std::vector<PendingAttachments::File> files = attachments_.files();
  std::vector<std::string> names;
  names.reserve(files.size());
  for (const PendingAttachments::File& file : files) names.push_back(file.name);
  for (const std::string& name : without(theirs.attachments, names)) {
    const auto original = theirs.originalNames.find(name);
    files.push_back(
        {name, original == theirs.originalNames.end() ? "" : original->second, opened_->date});
  }
  attachments_.set(std::move(files));
  opened_->base = theirs;
  opened_->shown = QString();
  settle();
  note();
}

// The place is another memo's, or empty: the text gets a place of its own.
void FocusEditorScreen::saveAsNew() {
  if (!opened_) return;
  const Memo memo = written();
  const Day date = opened_->date;
  timeline_.createCompleteMemo(
      {.body = memo.body,
       .tags = memo.tags,
       .mood = memo.mood,
       .attachments = memo.attachments,
       .transcripts = memo.audioTranscripts,
       .originalNames = memo.originalNames,
       .date = date,
       .fallbackDate = date},
      lifetime_.guard([this, date, before = opened_->base](const std::optional<Memo>& created,
                                                           const std::exception_ptr& failure) {
        if (!created)
          return context_.navigation.fail(
              tr("没有保存，草稿还在：") + qt(Outcome<Memo>{{}, failure}.message()), wayOn());
        writer_.cancel();
        show(date, *created, std::nullopt);
        say(tr("已存成新的笔记"));
        timeline_.refreshCurrentTimeline(DayViewModel::Cause::externalWrite);
        work_.run(
            [store = timeline_.draftStore(), date, before](const std::stop_token&) {
              store.clearFocusDraft(date, before.seqNumber, before.memoId);
            },
            [] {});
      }));
}

}  // namespace nomely
