#include "Desktop/Screens/QuickInputScreen.h"

#include <chrono>
#include <utility>

#include "App/Application.h"
#include "Core/Extensions/DateFormatters.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Core/Storage/AttachmentManager.h"
#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Models/Moods.h"
#include "Desktop/Text/DayText.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::chrono::seconds noticeTime{4};

}  // namespace

QuickInputScreen::QuickInputScreen(const ScreenContext& context)
    : context_(context),
      timeline_(context.application.dayViewModel()),
      editor_(context),
      attachments_(context, [this] { return day(); }),
      writer_([this]() -> DraftWriter::Write {
        return [store = timeline_.draftStore(), draft = draft()] {
          return store.saveQuickInputDraft(draft);
        };
      }),
      work_(context.executor, context.jobs) {
  connect(&editor_, &MarkdownEditor::edited, this, &QuickInputScreen::note);
  connect(&editor_, &MarkdownEditor::submitted, this, &QuickInputScreen::submit);
  connect(&editor_, &MarkdownEditor::filesOffered, &attachments_,
          qOverload<const QList<QUrl>&>(&PendingAttachments::add));
  connect(&editor_, &MarkdownEditor::pictureOffered, &attachments_,
          qOverload<const OfferedPicture&>(&PendingAttachments::add));
  connect(&attachments_, &PendingAttachments::added, this, &QuickInputScreen::note);
  connect(&attachments_, &PendingAttachments::removed, this, &QuickInputScreen::discard);
  connect(&month_, &MonthInView::chosen, this, &QuickInputScreen::setDay);
  connect(&attachments_, &PendingAttachments::importingChanged, this, &QuickInputScreen::changed);
  const auto dayChanged = [this](const auto&) { emit changed(); };
  subscriptions_.push_back(timeline_.selectedDate.observe(dayChanged));
  subscriptions_.push_back(timeline_.timelineMode.observe(dayChanged));

  noticeTimer_.setSingleShot(true);
  connect(&noticeTimer_, &QTimer::timeout, this, [this] { say({}); });

  work_.run(
      [store = timeline_.draftStore()](const std::stop_token&) {
        store.bringHome();
        return store.loadQuickInputDraft();
      },
      [this](std::optional<QuickInputDraft> draft) { restore(std::move(draft)); });
}

QuickInputScreen::~QuickInputScreen() = default;

void QuickInputScreen::say(const QString& text) {
  notice_ = text;
  if (!text.isEmpty()) noticeTimer_.start(noticeTime);
  emit noticeChanged();
}

void QuickInputScreen::restore(std::optional<QuickInputDraft> draft) {
  if (std::exchange(isRestored_, true)) return;
  if (!draft || !draft->hasContent()) {
    if (hasContent()) note();
    return;
  }
  // Who types faster than the disk reads goes on after what was there.
  const QString typed = editor_.text();
  editor_.setText(qt(draft->text) + typed);
  mood_ = static_cast<int>(draft->selectedMood.value_or(mood_));
  chosenDay_ = draft->selectedDate;
  std::vector<PendingAttachments::File> files;
  for (const std::string& name : draft->pendingAttachments) {
    const auto original = draft->pendingOriginalNames.find(name);
    const auto date = draft->pendingAttachmentDates.find(name);
    files.push_back(
        {name, original == draft->pendingOriginalNames.end() ? "" : original->second,
         date == draft->pendingAttachmentDates.end() ? draft->selectedDate : date->second});
  }
  for (const PendingAttachments::File& file : attachments_.files()) files.push_back(file);
  attachments_.set(std::move(files));
  kept_ = *std::move(draft);
  note();
  say(tr("已恢复草稿"));
}

bool QuickInputScreen::hasContent() const {
  return !editor_.isEmpty() || attachments_.count() > 0 || mood_ != 0;
}

void QuickInputScreen::note() {
  isFilled_ = hasContent();
  if (isRestored_) writer_.changed();
  emit changed();
}

bool QuickInputScreen::canSubmit() const {
  return !isSaving_ && !attachments_.isImporting() &&
         (!editor_.isEmpty() || attachments_.count() > 0);
}

void QuickInputScreen::setMood(int mood) {
  if (mood == mood_) return;
  mood_ = mood;
  note();
}

QStringList QuickInputScreen::moods() const {
  QStringList faces;
  for (std::int64_t mood = 1; mood <= static_cast<std::int64_t>(Moods::faces.size()); ++mood)
    faces.append(Moods::face(mood));
  return faces;
}

// A memo that is written while one looks at a day belongs to it, where it then shows.
Day QuickInputScreen::day() const {
  if (chosenDay_) return *chosenDay_;
  return timeline_.timelineMode.get() == TimelineMode::day ? timeline_.selectedDate.get()
                                                           : Day::of(context_.clock.now());
}

void QuickInputScreen::beginPicking() {
  month_.show(qtDate(day()));
}

void QuickInputScreen::setDay(QDate date) {
  chosenDay_ = dayOf(date);
  note();
}

QString QuickInputScreen::dateText() const {
  return DayText::relative(qtDate(day()), qtDate(Day::of(context_.clock.now())));
}

QuickInputDraft QuickInputScreen::draft() const {
  QuickInputDraft draft = kept_;
  draft.text = utf8(editor_.text());
  draft.pendingAttachments.clear();
  draft.pendingAttachmentDates.clear();
  draft.pendingOriginalNames.clear();
  for (const PendingAttachments::File& file : attachments_.files()) {
    draft.pendingAttachments.push_back(file.name);
    draft.pendingAttachmentDates.insert_or_assign(file.name, file.day);
    if (!file.originalName.empty()) draft.pendingOriginalNames[file.name] = file.originalName;
  }
  draft.selectedMood = mood_ == 0 ? std::nullopt : std::optional<std::int64_t>(mood_);
  draft.selectedDate = day();
  draft.updatedAt = context_.clock.now();
  return draft;
}

void QuickInputScreen::submit() {
  if (!canSubmit()) return;
  const QuickInputDraft content = draft();
  if (content.pendingAttachments.empty() && trimSpaceAndBreaks(content.text).empty()) return;
  isSaving_ = true;
  emit changed();
  DayViewModel::CompleteMemo memo{
      .body = content.originalTextBeforeAI
                  ? MemoTextUtilities::appendOriginal(*content.originalTextBeforeAI, content.text)
                  : content.text,
      .mood = content.selectedMood,
      .attachments = PendingMemoAttachments::merged(content.pendingAttachments,
                                                    content.pendingAudioTranscripts),
      .transcripts = content.pendingAudioTranscripts,
      .originalNames = content.pendingOriginalNames,
      .date = content.selectedDate,
      .sourceDates = content.pendingAttachmentDates,
      .fallbackDate = content.selectedDate};
  const auto done = [self = QPointer(this), text = qt(content.text), date = content.selectedDate](
                        const std::optional<Memo>& made, const std::exception_ptr& failure) {
    if (!self) return;
    self->isSaving_ = false;
    if (made) return self->finish(text, date, *made);
    emit self->changed();
    self->tellUnsaved(qt(Outcome<Memo>{{}, failure}.message()));
  };
  timeline_.createCompleteMemo(std::move(memo), done);
}

void QuickInputScreen::tellUnsaved(const QString& why) {
  const bool isShown = context_.navigation.page() == Navigation::Timeline;
  context_.navigation.fail(
      tr("没有存成笔记：") + why,
      {isShown ? tr("重试") : tr("打开草稿"), [self = QPointer(this), isShown] {
         if (!self) return;
         if (isShown) return self->submit();
         self->context_.navigation.show(Navigation::Timeline);
         emit self->shownAsked();
       }});
}

void QuickInputScreen::finish(const QString& submittedText, Day date, const Memo& made) {
  // What was typed while the memo was being written stays.
  const QString now = editor_.text();
  editor_.setText(now.startsWith(submittedText) ? now.mid(submittedText.size()) : QString());
  attachments_.set({});
  mood_ = 0;
  chosenDay_.reset();
  kept_ = {};
  note();
  constexpr std::chrono::seconds savedTime{2};
  say(tr("已保存 %1").arg(qt(DateFormatters::timeOnly.format(context_.clock.now()))));
  noticeTimer_.start(savedTime);
  timeline_.refreshCurrentTimeline(DayViewModel::Cause::externalWrite);
  context_.application.entryDateIndex().refresh();
  NotificationCenter::shared().post(Notifications::refreshSidebarTags);
  emit submitted(qtDate(date), static_cast<int>(made.seqNumber));
}

// No memo names the file yet, and the draft no longer does.
void QuickInputScreen::discard(const std::string& name, Day day) {
  note();
  work_.run([storage = context_.application.storage(), name,
             day](const std::stop_token&) { AttachmentManager(storage).deleteFile(name, day); },
            [] {});
}

void QuickInputScreen::flush() {
  if (!isRestored_) restore(timeline_.draftStore().loadQuickInputDraft());
  writer_.flush();
}

}  // namespace nomely
