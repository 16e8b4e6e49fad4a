#include "Desktop/Screens/FocusEditorScreen.h"

#include <QGuiApplication>
#include <algorithm>
#include <chrono>
#include <utility>

#include "App/Application.h"
#include "Core/Extensions/DateFormatters.h"
#include "Core/Extensions/TagUtilities.h"
#include "Core/Extensions/TextStats.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Core/Storage/MemoChanges.h"
#include "Core/Storage/MemoPlace.h"
#include "Core/Storage/WriteError.h"
#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Models/Moods.h"
#include "Desktop/Screens/EditedMemo.h"
#include "Desktop/Text/DayText.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/System/Log.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

// What is kept about files that the memo has no more goes with them.
template <typename Value>
void keepNamed(std::map<std::string, Value>& values, const std::vector<std::string>& names) {
  std::erase_if(values, [&](const auto& each) {
    return std::ranges::find(names, each.first) == names.end();
  });
}

struct Read {
  std::optional<Memo> memo;
  std::optional<FocusMemoDraft> draft;
};

}  // namespace

using EditedMemo::shownText;
using EditedMemo::without;

FocusEditorScreen::FocusEditorScreen(const ScreenContext& context)
    : context_(context),
      timeline_(context.application.dayViewModel()),
      editor_(context),
      attachments_(context, [this] { return opened_ ? opened_->date : Day({}); }),
      tags_(context.application.tagConfig()),
      tagChoices_(context, tags_.tags()),
      writer_([this] { return draftWrite(); }),
      work_(context.executor, context.jobs) {
  connect(&editor_, &MarkdownEditor::edited, this, &FocusEditorScreen::note);
  connect(&editor_, &MarkdownEditor::submitted, this, &FocusEditorScreen::save);
  connect(&editor_, &MarkdownEditor::escaped, this, &FocusEditorScreen::leave);
  connect(&editor_, &MarkdownEditor::filesOffered, &attachments_,
          qOverload<const QList<QUrl>&>(&PendingAttachments::add));
  connect(&editor_, &MarkdownEditor::pictureOffered, &attachments_,
          qOverload<const OfferedPicture&>(&PendingAttachments::add));
  connect(&attachments_, &PendingAttachments::added, this, &FocusEditorScreen::note);
  connect(&attachments_, &PendingAttachments::removed, this, &FocusEditorScreen::note);

  constexpr std::chrono::milliseconds countDelay{150};
  countTimer_.setSingleShot(true);
  countTimer_.setInterval(countDelay);
  connect(&countTimer_, &QTimer::timeout, this, &FocusEditorScreen::countText);
  constexpr std::chrono::seconds savedTime{2};
  savedTimer_.setSingleShot(true);
  savedTimer_.setInterval(savedTime);
  connect(&savedTimer_, &QTimer::timeout, this, [this] { say({}); });
  constexpr std::chrono::seconds noticeTime{4};
  noticeTimer_.setSingleShot(true);
  noticeTimer_.setInterval(noticeTime);
  connect(&noticeTimer_, &QTimer::timeout, this, [this] { tell({}); });
  watch();
}

FocusEditorScreen::~FocusEditorScreen() = default;

void FocusEditorScreen::watch() {
  // Who comes back to the window may have been in another program with this note.
  connect(qGuiApp, &QGuiApplication::applicationStateChanged, this,
          [this](Qt::ApplicationState state) {
            if (state == Qt::ApplicationActive) checkDisk();
          });
  subscriptions_.push_back(NotificationCenter::shared().observe(
      Notifications::externalMemoWritten,
      lifetime_.guard([this](const std::string&) { checkDisk(); })));
  // Another page of this window, or a panel, may change the memo as well.
  const auto check = [&executor = context_.executor,
                      guarded = lifetime_.guard([this](std::optional<MemoPlace> place) {
                        if (!place || (opened_ && place->day == opened_->date &&
                                       place->seqNumber == opened_->base.seqNumber))
                          checkDisk();
                      })](std::optional<MemoPlace> place) {
    executor.post([guarded, place] { guarded(place); });
  };
  subscriptions_.push_back(context_.application.storage().gate.changes().observe(
      {.written =
           [check](const Memo& memo, Day day) {
             check(MemoPlace{day, memo.seqNumber});
           },
       .removed =
           [check](Day day, std::int64_t number) {
             check(MemoPlace{day, number});
           },
       .manyChanged = [check] { check(std::nullopt); }}));
}

MemoHandle FocusEditorScreen::memo() const {
  MemoHandle handle;
  if (opened_) handle.entry = {opened_->date, std::make_shared<const Memo>(opened_->base)};
  return handle;
}

QString FocusEditorScreen::title() const {
  if (!opened_) return {};
  return DayText::absolute(qtDate(opened_->date), qtDate(Day::of(context_.clock.now()))) +
         QLatin1Char(' ') + qt(opened_->base.time);
}

void FocusEditorScreen::open(const MemoHandle& memo) {
  if (!memo.isValid()) return;
  writer_.push();
  const Day date = memo.entry.date;
  work_.run(
      [store = timeline_.draftStore(), memos = context_.application.dayStore().memoStore(), date,
       number = memo.entry.memo->seqNumber, id = memo.entry.memo->memoId](const std::stop_token&) {
        store.bringHome();
        return Read{memos.read(date, number), store.loadFocusDraft(date, number, id)};
      },
      [this, date](Read read) {
        if (read.memo) return show(date, *std::move(read.memo), read.draft);
        if (!read.draft || !read.draft->baseMemo)
          return context_.navigation.fail(qt(WriteError(WriteError::Kind::missingMemo).what()));
        // What was typed outlives the memo.
        show(date, *read.draft->baseMemo, read.draft);
        compare(std::nullopt);
      },
      [this](const std::string& failure) {
        context_.navigation.fail(tr("笔记打不开：") + qt(failure));
      });
}

void FocusEditorScreen::show(Day date, Memo onDisk, const std::optional<FocusMemoDraft>& draft) {
  ++generation_;
  settle();
  opened_ = Opened{date, onDisk, {}};
  activeRecordingPath_.reset();
  showMemo(onDisk);
  say({});
  if (draft) {
    Memo drafted = onDisk;
    drafted.body = draft->bodyText;
    drafted.tags = draft->tags;
    drafted.mood = draft->mood;
    drafted.attachments = draft->attachments;
    drafted.audioTranscripts = draft->audioTranscripts;
    drafted.originalNames = draft->originalNames;
    activeRecordingPath_ = draft->activeRecordingPath;
    opened_->base = draft->baseMemo.value_or(onDisk);
    opened_->base.seqNumber = onDisk.seqNumber;
    if (!isStoredAs(opened_->base, onDisk)) opened_->shown = QString();
    editor_.setText(shownText(drafted.body));
    if (!isStoredAs(drafted, onDisk)) tell(tr("已恢复草稿"));
    tags_.set(drafted.tags);
    mood_ = drafted.mood;
    setFiles(drafted.attachments, drafted.originalNames);
  }
  context_.navigation.show(Navigation::Editor);
  emit opened();
  emit moodChanged();
  countText();
  compare(onDisk);
}

// Everything as `memo` has it, which is on the disk.
void FocusEditorScreen::showMemo(const Memo& memo) {
  editor_.setText(shownText(memo.body));
  opened_->shown = editor_.text();
  tags_.set(memo.tags);
  mood_ = memo.mood;
  setFiles(memo.attachments, memo.originalNames);
}

void FocusEditorScreen::setFiles(const std::vector<std::string>& names,
                                 const std::map<std::string, std::string>& originalNames) {
  std::vector<PendingAttachments::File> files;
  for (const std::string& name : names) {
    const auto original = originalNames.find(name);
    files.push_back({name, original == originalNames.end() ? "" : original->second, opened_->date});
  }
  attachments_.set(std::move(files));
}

void FocusEditorScreen::setMood(int mood) {
  if (mood == this->mood()) return;
  mood_ = mood == 0 ? std::nullopt : std::optional<std::int64_t>(mood);
  emit moodChanged();
  note();
}

QStringList FocusEditorScreen::moods() const {
  QStringList faces;
  for (std::int64_t mood = 1; mood <= static_cast<std::int64_t>(Moods::faces.size()); ++mood)
    faces.append(Moods::face(mood));
  return faces;
}

void FocusEditorScreen::addTag(const QString& typed) {
  const auto tag = TagUtilities::cleanTag(utf8(typed));
  if (!tag) return;
  std::vector<std::string> tags = tags_.tags();
  tags.push_back(*tag);
  tags_.set(TagUtilities::uniqueTags(tags));
  note();
}

void FocusEditorScreen::removeTag(const QString& tag) {
  std::vector<std::string> tags = tags_.tags();
  std::erase(tags, utf8(tag));
  tags_.set(std::move(tags));
  note();
}

void FocusEditorScreen::note() {
  if (!opened_) return;
  writer_.changed();
  if (!countTimer_.isActive()) countTimer_.start();
}

void FocusEditorScreen::countText() {
  count_ = tr("%1 字").arg(TextStats::meaningfulCount(utf8(editor_.text())));
  emit countChanged();
}

void FocusEditorScreen::say(const QString& status) {
  savedTimer_.stop();
  status_ = status;
  emit statusChanged();
}

void FocusEditorScreen::tell(const QString& notice) {
  notice_ = notice;
  noticeTimer_.start();
  emit statusChanged();
}

// The memo as it would be saved.
Memo FocusEditorScreen::written() const {
  Memo memo = opened_->base;
  const QString text = editor_.text();
  // A text that nobody touched keeps every byte.
  if (text != opened_->shown)
    memo.body =
        MemoFrontmatterParser::bodyAsRead(MemoTextUtilities::editedBody(memo.body, utf8(text)));
  memo.tags = tags_.tags();
  memo.mood = mood_;
  memo.attachments.clear();
  for (const PendingAttachments::File& file : attachments_.files()) {
    memo.attachments.push_back(file.name);
    if (!file.originalName.empty()) memo.originalNames[file.name] = file.originalName;
  }
  keepNamed(memo.originalNames, memo.attachments);
  keepNamed(memo.attachmentDescriptions, memo.attachments);
  return memo;
}

bool FocusEditorScreen::hasChanges() const {
  return !isStoredAs(written(), opened_->base);
}

DraftWriter::Write FocusEditorScreen::draftWrite() {
  if (!opened_) return [] { return true; };
  const Memo memo = written();
  FocusMemoDraft draft{.memoId = opened_->base.memoId,
                       .baseMemo = opened_->base,
                       .bodyText = memo.body,
                       .tags = memo.tags,
                       .mood = memo.mood,
                       .attachments = memo.attachments,
                       .audioTranscripts = memo.audioTranscripts,
                       .originalNames = memo.originalNames,
                       .activeRecordingPath = activeRecordingPath_,
                       .updatedAt = context_.clock.now()};
  const auto told = lifetime_.guard([this, generation = generation_](bool isKept) {
    if (generation != generation_ || isSaving_ || savedTimer_.isActive()) return;
    say(isKept ? tr("草稿已存 ") + qt(DateFormatters::timeOnly.format(context_.clock.now()))
               : QString());
  });
  return [store = timeline_.draftStore(), draft = std::move(draft), date = opened_->date,
          number = memo.seqNumber, &executor = context_.executor, told] {
    const bool isKept = store.saveFocusDraft(draft, date, number);
    // One that says what the memo says is none.
    const bool isDraft = isKept && store.loadFocusDraft(date, number, draft.memoId).has_value();
    executor.post([told, isDraft] { told(isDraft); });
    return isKept;
  };
}

void FocusEditorScreen::save() {
  if (!opened_ || isSaving_ || attachments_.isImporting()) return;
  Memo memo = written();
  if (memo.attachments.empty() && trimSpaceAndBreaks(utf8(editor_.text())).empty())
    return context_.navigation.fail(tr("正文是空的，没有保存。写点什么，或者删除这条笔记。"));
  MemoService::addTagsIn(utf8(editor_.text()), memo.tags);
  if (isStoredAs(memo, opened_->base)) return finishSave(memo, memo, nullptr);
  memo.updatedAt = DateFormatters::timestamp(context_.clock.now());
  isSaving_ = true;
  say(tr("保存中…"));
  timeline_.saveMemoAsync(
      memo, opened_->date, opened_->base,
      lifetime_.guard([this, memo, generation = ++generation_](const std::optional<Memo>& stored,
                                                               const std::exception_ptr& failure) {
        isSaving_ = false;
        if (generation == generation_) finishSave(memo, stored, failure);
      }));
}

void FocusEditorScreen::finishSave(const Memo& written, const std::optional<Memo>& stored,
                                   const std::exception_ptr& failure) try {
  if (failure) std::rethrow_exception(failure);
  const std::vector<std::string> gone = without(opened_->base.attachments, written.attachments);
  const bool isUntouched = shownText(written.body) == editor_.text();
  // A memo without an identity has been given one.
  opened_->base = stored.value();
  opened_->shown = isUntouched ? editor_.text() : QString();
  tags_.set(stored->tags);
  settle();
  // The draft goes, unless something was typed meanwhile.
  writer_.changed();
  say(tr("已保存 ") + qt(DateFormatters::timeOnly.format(context_.clock.now())));
  savedTimer_.start();
  emit opened();
  NotificationCenter::shared().post(Notifications::refreshSidebarTags);
  if (!gone.empty())
    work_.run([days = context_.application.dayStore(), gone, date = opened_->date](
                  const std::stop_token&) { days.trashUnnamedFiles(gone, date); },
              [] {});
} catch (const WriteError& error) {
  say({});
  writer_.changed();
  if (error.kind() == WriteError::Kind::maintenance)
    return context_.navigation.fail(qt(error.what()));
  savesAgain_ = true;
  checkDisk();
} catch (const Error& error) {
  say(tr("没有保存"));
  writer_.changed();
  context_.navigation.fail(tr("没有保存，草稿还在：") + qt(error.what()), wayOn());
}

Navigation::Action FocusEditorScreen::wayOn() {
  const bool isShown = context_.navigation.page() == Navigation::Editor;
  return {isShown ? tr("重试") : tr("打开草稿"), lifetime_.guard([this, isShown, failed = memo()] {
            const bool isOpenStill = memo().key() == failed.key();
            if (isOpenStill && isShown) return save();
            if (isOpenStill) return context_.navigation.show(Navigation::Editor);
            open(failed);
          })};
}

void FocusEditorScreen::leave() {
  writer_.push();
  context_.navigation.back();
}

void FocusEditorScreen::flush() {
  writer_.flush();
}

}  // namespace nomely
