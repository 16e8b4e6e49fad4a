#include "Desktop/Screens/SidebarScreen.h"

#include <QLocale>
#include <chrono>
#include <optional>
#include <utility>

#include "App/Application.h"
#include "Core/Extensions/TagNames.h"
#include "Core/Extensions/TagUtilities.h"
#include "Core/Query/MemoFilter.h"
#include "Core/Storage/TagColors.h"
#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Screens/TimelineScreen.h"
#include "Editor/Timeline/DayViewModel.h"

namespace nomely {
namespace {

constexpr std::chrono::seconds dayCheck{20};
constexpr std::string_view pinnedKey = "pinnedTags";
constexpr std::string_view pinnedOpenKey = "isPinnedTagsExpanded";
constexpr std::string_view openKey = "expandedTags";

}  // namespace

SidebarScreen::SidebarScreen(const ScreenContext& context, TimelineScreen& timeline)
    : context_(context),
      timeline_(timeline),
      calendar_(context),
      today_(context.clock.today()),
      changes_(context.application, context.executor, [this] { refresh(); }),
      work_(context.executor, context.jobs) {
  DayViewModel& model = context.application.dayViewModel();
  const auto takeLooks = [this](const TagConfig& config) {
    tags_.alter([&](TagView& view) { view.config = config; });
    tagStyles_.config = std::make_shared<const TagConfig>(config);
    emit tagStylesChanged();
  };
  looks_ = context.application.tagConfig().config().observe(takeLooks);
  takeLooks(context.application.tagConfig().config().get());
  onThisDay_ = model.hasOnThisDay.observe([this](bool) { emit onThisDayChanged(); });
  connect(&tags_, &TagTreeModel::viewChanged, this, &SidebarScreen::saveView);
  connect(&timeline_, &TimelineScreen::listChanged, this, &SidebarScreen::followTimeline);
  connect(&timeline_, &TimelineScreen::inViewChanged, this, &SidebarScreen::followTimeline);
  loadView();
  // What is read for the sidebar would hold up the first notes.
  if (model.hasLoadedInitialTimeline.get())
    refresh();
  else
    firstLoad_ = model.hasLoadedInitialTimeline.observe([this](bool) { refresh(); });
  dayCheck_.setInterval(dayCheck);
  connect(&dayCheck_, &QTimer::timeout, this, &SidebarScreen::checkDay);
  dayCheck_.start();
}

SidebarScreen::~SidebarScreen() = default;

bool SidebarScreen::hasOnThisDay() const {
  return context_.application.dayViewModel().hasOnThisDay.get();
}

QString SidebarScreen::text(std::int64_t count) {
  return count < 0 ? QString() : QLocale(QLocale::Chinese).toString(static_cast<qlonglong>(count));
}

SidebarScreen::Contents SidebarScreen::contentsOf(Application& application, Day today) {
  SearchIndex& index = application.searchIndex();
  const MemoFilter main{.mainTimeline = true};
  const MemoFilter earlier{.onThisDay = today};
  Counts counts{.all = 0, .today = 0, .pinned = 0, .onThisDay = 0};
  TagTree tree(today.plusDays(-TagRows::activeDays));
  TagSource tags;
  index.forEachEntry([&](const MemoEntry& entry) {
    const Memo& memo = *entry.memo;
    tree.add(entry.date, memo);
    for (const std::string& tag : memo.tags)
      if (TagNames::isBelow(tag, TagNames::notesRoot)) tags.stored.insert(tag);
    if (!isVisible(memo)) return true;
    if (main.holds(entry.date, memo)) ++counts.all;
    if (entry.date == today) ++counts.today;
    if (memo.pinned) ++counts.pinned;
    if (earlier.holds(entry.date, memo)) ++counts.onThisDay;
    return true;
  });
  tags.roots = tree.roots();
  const TagManagementStore store(application.memos(), index);
  tags.notes = store.sidebarNotesSummary();
  tags.personalColumn = store.sidebarPersonalColumnSummary();
  tags.dedao = store.sidebarDedaoSummary();
  return {counts, std::move(tags)};
}

void SidebarScreen::refresh() {
  calendar_.refresh();
  context_.application.dayViewModel().refreshOnThisDayFlag();
  read();
}

void SidebarScreen::read() {
  if (std::exchange(isReading_, true)) {
    hasToReadAgain_ = true;
    return;
  }
  work_.run([&application = context_.application,
             today = today_](const std::stop_token&) { return contentsOf(application, today); },
            [this](Contents&& contents) {
              isReading_ = false;
              tags_.show(std::move(contents.tags));
              if (std::exchange(counts_, contents.counts) != contents.counts) emit countsChanged();
              if (std::exchange(hasToReadAgain_, false)) read();
            },
            [this](const std::string&) { isReading_ = false; });
}

void SidebarScreen::checkDay() {
  const Day today = context_.clock.today();
  if (std::exchange(today_, today) == today) return;
  calendar_.setToday(today);
  refresh();
}

// A list of one day marks it; in the others the month goes along with what is in view.
void SidebarScreen::followTimeline() {
  const QDate day = timeline_.day();
  calendar_.choose(day.isValid() ? day : timeline_.dayInView());
}

bool SidebarScreen::openRow(int row) {
  const QString tag = tags_.tagAt(row);
  if (tag.isEmpty()) {
    tags_.toggle(row);
    return false;
  }
  context_.navigation.show(Navigation::Timeline);
  timeline_.showTag(tag);
  return true;
}

void SidebarScreen::showCell(int cell) {
  const QDate day = calendar_.dayAt(cell);
  if (!day.isValid()) return;
  context_.navigation.show(Navigation::Timeline);
  timeline_.showDay(day);
}

void SidebarScreen::changeLooks(const std::function<void(TagConfig&)>& change) {
  TagConfigStore& looks = context_.application.tagConfig();
  work_.run(
      [store = ConfigStore(context_.application.storage()), change, before = looks.config().get()](
          const std::stop_token&) { return store.change(TagConfig::fileName, before, change); },
      [&looks](TagConfig&& saved) { looks.adopt(std::move(saved)); },
      [this](const std::string& failure) { context_.navigation.fail(qt(failure)); });
}

void SidebarScreen::setColor(const QString& tag, const QString& color) {
  const std::optional<std::string> value = TagColors::valueOf(utf8(color));
  changeLooks([tag = utf8(tag), value](TagConfig& config) {
    config.colors.erase(tag);
    if (value) config.colors.emplace(tag, *value);
  });
}

void SidebarScreen::setEmoji(const QString& tag, const QString& emoji) {
  changeLooks([tag = utf8(tag), text = utf8(emoji.trimmed())](TagConfig& config) {
    config.emojis.erase(tag);
    if (TagColors::isEmoji(text)) config.emojis.emplace(tag, text);
  });
}

bool SidebarScreen::isEmoji(const QString& text) {
  return TagColors::isEmoji(utf8(text.trimmed()));
}

void SidebarScreen::togglePinned(const QString& tag) {
  tags_.alter([text = utf8(tag)](TagView& view) {
    if (std::erase(view.pinned, text) > 0) return;
    view.pinned.push_back(text);
    view.isPinnedOpen = true;
  });
  saveView();
}

std::function<void()> SidebarScreen::follow(const QString& from, const QString& to) {
  const auto goesBack = [this, from = utf8(from),
                         looks = context_.application.tagConfig().config().get(),
                         pinned = tags_.view().pinned] {
    const auto isGone = [from](const std::string& tag) { return !TagNames::moved(tag, from, ""); };
    changeLooks([looks, isGone](TagConfig& config) {
      for (const auto& [tag, color] : looks.colors)
        if (isGone(tag)) config.colors.emplace(tag, color);
      for (const auto& [tag, emoji] : looks.emojis)
        if (isGone(tag)) config.emojis.emplace(tag, emoji);
    });
    tags_.alter([&](TagView& view) {
      std::ranges::copy_if(pinned, std::back_inserter(view.pinned), isGone);
      view.pinned = TagUtilities::uniqueTags(view.pinned);
    });
    saveView();
  };
  changeLooks([from = utf8(from), to = utf8(to)](TagConfig& config) { config.move(from, to); });
  tags_.alter([from = utf8(from), to = utf8(to)](TagView& view) {
    std::vector<std::string> pinned;
    for (const std::string& tag : view.pinned)
      if (const auto moved = TagNames::moved(tag, from, to)) pinned.push_back(*moved);
    view.pinned = TagUtilities::uniqueTags(pinned);
    if (view.open.contains(from) && !to.empty()) view.open.insert(to);
  });
  saveView();
  return goesBack;
}

void SidebarScreen::loadView() {
  work_.run(
      [&defaults = context_.application.userDefaults()](const std::stop_token&) {
        TagView view;
        view.pinned = defaults.strings(pinnedKey).value_or(view.pinned);
        view.isPinnedOpen = defaults.boolean(pinnedOpenKey).value_or(false);
        for (std::string& tag : defaults.strings(openKey).value_or(std::vector<std::string>{}))
          view.open.insert(std::move(tag));
        return view;
      },
      [this](TagView&& stored) {
        tags_.alter([&](TagView& view) {
          view.pinned = std::move(stored.pinned);
          view.isPinnedOpen = stored.isPinnedOpen;
          view.open.merge(stored.open);
        });
      });
}

// What can't be kept is folded again at the next start; nobody is to be troubled with that.
void SidebarScreen::saveView() {
  if (std::exchange(isSaving_, true)) {
    hasToSaveAgain_ = true;
    return;
  }
  const auto saved = [this] {
    isSaving_ = false;
    if (std::exchange(hasToSaveAgain_, false)) saveView();
  };
  work_.run(
      [&defaults = context_.application.userDefaults(),
       view = tags_.view()](const std::stop_token&) {
        defaults.setStrings(pinnedKey, view.pinned);
        defaults.setBoolean(pinnedOpenKey, view.isPinnedOpen);
        defaults.setStrings(openKey, {view.open.begin(), view.open.end()});
      },
      saved, [saved](const std::string&) { saved(); });
}

}  // namespace nomely
