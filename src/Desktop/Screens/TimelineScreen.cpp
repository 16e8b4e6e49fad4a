#include "Desktop/Screens/TimelineScreen.h"

#include <QLocale>
#include <algorithm>
#include <chrono>
#include <utility>

#include "App/Application.h"
#include "Desktop/Base/Qt.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Time/ChineseDates.h"

namespace nomely {
namespace {

constexpr std::size_t searchLimit = 50;
constexpr std::chrono::seconds dayCheck{20};

}  // namespace

TimelineScreen::TimelineScreen(const ScreenContext& context)
    : context_(context),
      timeline_(context.application.dayViewModel()),
      work_(context.executor, context.jobs) {
  model_.setToday(context_.clock.today());
  subscriptions_.push_back(timeline_.displayMemos.observe([this](const auto&) { showRows(); }));
  subscriptions_.push_back(timeline_.allMemos.observe([this](const auto&) { countAll(); }));
  subscriptions_.push_back(timeline_.isLoadingTimeline.observe([this](bool) {
    showRows();
    emit loadingChanged();
    emit countsChanged();
    revealAsked();
  }));
  timeline_.onSavedSuccessfully = [this] { emit changed(); };
  connect(&moveMonth_, &MonthInView::chosen, this, [this](QDate day) { move(moving_, day); });
  midnight_.setInterval(dayCheck);
  connect(&midnight_, &QTimer::timeout, this, [this] {
    model_.setToday(context_.clock.today());
    if (list_ == Today && day() != qtDate(context_.clock.today())) showToday();
  });
  midnight_.start();
}

TimelineScreen::~TimelineScreen() {
  timeline_.onSavedSuccessfully = nullptr;
}

QDate TimelineScreen::day() const {
  return list_ == Today || list_ == DayList ? qtDate(timeline_.selectedDate.get()) : QDate();
}

QString TimelineScreen::dayTitle() const {
  const Day date = timeline_.selectedDate.get();
  const bool isThisYear = date.civil().year() == context_.clock.today().civil().year();
  return qt(ChineseDates(isThisYear ? "M月d日 EEEE" : "yyyy年M月d日 EEEE").format(date));
}

QString TimelineScreen::title() const {
  switch (list_) {
    case Today:
      return tr("今天");
    case DayList:
      return dayTitle();
    case All:
      return tr("全部笔记");
    case Pinned:
      return tr("置顶");
    case OnThisDay:
      return tr("那年今日");
    case Tag:
      return tag_;
    case Untagged:
      return tr("无标签");
    case Images:
      return tr("有图片");
    case Links:
      return tr("有链接");
    case Audio:
      return tr("有录音");
    case Attachments:
      return tr("有附件");
    case Search:
      return tr("搜索「%1」").arg(query_);
  }
  return {};
}

QString TimelineScreen::counts() const {
  if (isLoading() || memoCount_ == 0) return {};
  const QLocale locale(QLocale::Chinese);
  const QString memos = locale.toString(static_cast<qulonglong>(memoCount_));
  if (dayCount_ < 2) return tr("%1 条").arg(memos);
  return tr("%1 条 · %2 天").arg(memos, locale.toString(static_cast<qulonglong>(dayCount_)));
}

bool TimelineScreen::isLoading() const {
  return timeline_.isLoadingTimeline.get();
}

bool TimelineScreen::isEmpty() const {
  return model_.entries().empty() && !isLoading();
}

QDate TimelineScreen::dayInView() const {
  const MemoHandle memo = model_.at(rowInView_);
  return memo.isPinned() || memo.isLockedOnTop() ? qtDate(context_.clock.today()) : memo.date();
}

EmptyText TimelineScreen::emptyText() const {
  using Text = EmptyText::List;
  constexpr Text texts[]{Text::today,     Text::day,   Text::all,         Text::pinned,
                         Text::onThisDay, Text::tag,   Text::untagged,    Text::images,
                         Text::links,     Text::audio, Text::attachments, Text::search};
  static_assert(std::size(texts) == Search + 1);
  return EmptyText::of(texts[list_], list_ == Tag ? tag_ : query_, day());
}

void TimelineScreen::followEmptyText() {
  switch (emptyText().action) {
    case EmptyText::Action::ShowAll:
      return showAll();
    case EmptyText::Action::Write:
      return emit inputAsked();
    case EmptyText::Action::AddFile:
      return emit fileAsked();
    case EmptyText::Action::None:
      break;
  }
}

void TimelineScreen::lookAt(int row) {
  if (std::exchange(rowInView_, row) != row) emit inViewChanged();
}

void TimelineScreen::choose(List list, const QString& tag, const QString& query) {
  list_ = list;
  tag_ = tag;
  query_ = query;
  isOtherList_ = true;
  ++choices_;
  toReveal_.reset();
  toFollow_.reset();
  beforeSearch_.reset();
  // A list that isn't sorted by day has no days to stand under.
  model_.setHeadings(list == Audio ? TimelineModel::Headings::none : TimelineModel::Headings::days);
}

void TimelineScreen::showAll() {
  choose(All);
  timeline_.loadAllMemos();
  emit listChanged();
}

void TimelineScreen::showToday() {
  choose(Today);
  timeline_.loadDay(context_.clock.today());
  emit listChanged();
}

void TimelineScreen::showDay(QDate day) {
  if (!day.isValid()) return;
  choose(dayOf(day) == context_.clock.today() ? Today : DayList);
  timeline_.loadDay(dayOf(day));
  emit listChanged();
}

void TimelineScreen::showPinned() {
  choose(Pinned);
  timeline_.loadPinnedMemos();
  emit listChanged();
}

void TimelineScreen::showOnThisDay() {
  choose(OnThisDay);
  timeline_.loadOnThisDay();
  emit listChanged();
}

void TimelineScreen::showTag(const QString& tag) {
  choose(Tag, tag);
  timeline_.loadMemosWithTag(utf8(tag));
  emit listChanged();
}

void TimelineScreen::showUntagged() {
  choose(Untagged);
  timeline_.loadMemosNoTag();
  emit listChanged();
}

void TimelineScreen::showImages() {
  choose(Images);
  timeline_.loadMemosWithImages();
  emit listChanged();
}

void TimelineScreen::showLinks() {
  choose(Links);
  timeline_.loadMemosWithLinks();
  emit listChanged();
}

void TimelineScreen::showAudio() {
  choose(Audio);
  timeline_.loadMemosWithAudio();
  emit listChanged();
}

void TimelineScreen::showAttachments() {
  choose(Attachments);
  timeline_.loadMemosWithAttachments();
  emit listChanged();
}

void TimelineScreen::show(const Place& place) {
  switch (place.list) {
    case Today:
      return showToday();
    case DayList:
      return showDay(place.day);
    case Pinned:
      return showPinned();
    case OnThisDay:
      return showOnThisDay();
    case Tag:
      return showTag(place.tag);
    case Untagged:
      return showUntagged();
    case Images:
      return showImages();
    case Links:
      return showLinks();
    case Audio:
      return showAudio();
    case Attachments:
      return showAttachments();
    case All:
    case Search:
      break;
  }
  showAll();
}

void TimelineScreen::leaveSearch() {
  ++choices_;
  if (!beforeSearch_) return;
  const Place place = *beforeSearch_;
  show(place);
  toReveal_ = place.atTop;
}

TimelineScreen::Place TimelineScreen::here() const {
  Place place{list_, tag_, day(), {}};
  if (const MemoHandle atTop = model_.at(rowInView_); atTop.isValid() && rowInView_ > 0)
    place.atTop = MemoPlace{atTop.entry.date, atTop.entry.memo->seqNumber};
  return place;
}

void TimelineScreen::revealFound(QDate day, int seqNumber) {
  const Place place = beforeSearch_.value_or(here());
  reveal(day, seqNumber);
  beforeSearch_ = place;
}

void TimelineScreen::showSearch(const QString& query) {
  if (query.trimmed().isEmpty()) return;
  SearchIndex& index = context_.application.searchIndex();
  work_.run([&index, text = utf8(query)](
                const std::stop_token&) { return index.search(text, searchLimit); },
            [this, query, asked = ++choices_](const std::vector<SearchResult>& results) {
              if (asked != choices_) return;
              const Place place = beforeSearch_.value_or(here());
              choose(Search, {}, query);
              beforeSearch_ = place;
              timeline_.loadSearchResults(results, utf8(query));
              emit listChanged();
            });
}

void TimelineScreen::reveal(QDate day, int seqNumber) {
  if (!day.isValid()) return;
  showDay(day);
  toReveal_ = MemoPlace{dayOf(day), seqNumber};
}

void TimelineScreen::revealAsked() {
  if (!toReveal_ || isLoading()) return;
  const MemoPlace asked = *std::exchange(toReveal_, {});
  int row = rowOf(asked);
  if (row < 0 && timeline_.canLoadMoreDisplayMemos()) {
    timeline_.loadAllDisplayMemos();
    row = rowOf(asked);
  }
  if (row >= 0) emit revealed(row);
}

void TimelineScreen::follow(QDate day, int seqNumber) {
  toFollow_ = MemoPlace{dayOf(day), seqNumber};
  followAsked();
}

void TimelineScreen::followAsked() {
  const int row = toFollow_ ? rowOf(*toFollow_) : -1;
  if (row < 0) return;
  toFollow_.reset();
  emit followed(row);
}

int TimelineScreen::rowOf(const MemoPlace& place) const {
  const TimelineModel::Entries& rows = model_.entries();
  const auto found = std::ranges::find_if(rows, [&](const MemoEntry& entry) {
    return entry.date == place.day && entry.memo->seqNumber == place.seqNumber;
  });
  return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

void TimelineScreen::stepDay(int days) {
  showDay((day().isValid() ? day() : qtDate(context_.clock.today())).addDays(days));
}

void TimelineScreen::loadMore() {
  timeline_.loadMoreDisplayMemos();
}

void TimelineScreen::togglePinned(const MemoHandle& memo) {
  if (memo.isValid()) timeline_.togglePinned(*memo.entry.memo, memo.entry.date);
}

void TimelineScreen::toggleLocked(const MemoHandle& memo) {
  if (memo.isValid()) timeline_.toggleLockedOnTop(*memo.entry.memo, memo.entry.date);
}

void TimelineScreen::remove(const MemoHandle& memo) {
  if (memo.isValid()) timeline_.deleteMemo(*memo.entry.memo, memo.entry.date);
}

void TimelineScreen::move(const MemoHandle& memo, QDate to) {
  if (memo.isValid() && to.isValid())
    timeline_.moveMemo(*memo.entry.memo, memo.entry.date, dayOf(to));
}

void TimelineScreen::beginMoving(const MemoHandle& memo) {
  moving_ = memo;
  moveMonth_.show(memo.date());
}

void TimelineScreen::undoDelete() {
  timeline_.undoDelete();
}

void TimelineScreen::toggleExpanded(const MemoHandle& memo) {
  model_.setExpanded(memo.key(), !model_.isExpanded(memo.key()));
}

void TimelineScreen::refresh() {
  model_.setToday(context_.clock.today());
  SearchIndex& index = context_.application.searchIndex();
  work_.run([&index](const std::stop_token&) { return index.rebuildIfDiskChanged(); },
            [this](bool isOther) {
              if (isOther) timeline_.refreshCurrentTimeline(DayViewModel::Cause::externalWrite);
            });
}

// A filter that is read anew is empty for a moment; the cards stay until it is there.
void TimelineScreen::showRows() {
  const TimelineModel::Entries& rows = timeline_.displayMemos.get();
  if (isOtherList_) {
    model_.reset(rows);
    isOtherList_ = rows.empty() && isLoading();
  } else if (!rows.empty() || !isLoading()) {
    model_.show(rows);
  }
  emit inViewChanged();
  followAsked();
}

void TimelineScreen::countAll() {
  const TimelineModel::Entries& all = timeline_.allMemos.get();
  memoCount_ = all.size();
  dayCount_ = 0;
  const MemoEntry* before = nullptr;
  for (const MemoEntry& entry : all) {
    if (!before || before->date != entry.date) ++dayCount_;
    before = &entry;
  }
  emit countsChanged();
}

}  // namespace nomely
