#include "Desktop/Screens/HistoryScreen.h"

#include <QStringList>
#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "App/Application.h"
#include "Core/Service/MemoService.h"
#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Models/MemoDates.h"
#include "Desktop/Screens/BannerScreen.h"
#include "Editor/Timeline/DayViewModel.h"

namespace nomely {
namespace {

constexpr qsizetype mostOfOriginal = 200'000;

QString noteOn(const VersionComparison& comparison, const Memo& before, const Memo& after) {
  using Part = VersionComparison::Part;
  const auto has = [&](Part part) {
    return std::ranges::find(comparison.items(), part, &VersionComparison::Item::part) !=
           comparison.items().end();
  };
  QStringList parts;
  if (has(Part::tag)) parts.append(QObject::tr("标签"));
  if (has(Part::attachment)) parts.append(QObject::tr("附件"));
  if (before.mood != after.mood) parts.append(QObject::tr("心情"));
  if (before.time != after.time) parts.append(QObject::tr("时间"));
  if (before.pinned != after.pinned || before.lockedOnTop != after.lockedOnTop)
    parts.append(QObject::tr("置顶"));
  return parts.join(QStringLiteral("、"));
}

HistoryModel::Versions described(const std::vector<VersionEntry>& versions, const Memo& current,
                                 const std::stop_token& stop) {
  HistoryModel::Versions result;
  const Memo* later = &current;
  for (const VersionEntry& version : versions) {
    if (stop.stop_requested()) throw CancellationError();
    const auto comparison = VersionComparison::of(version.memo, *later);
    result.push_back({.entry = version,
                      .added = comparison->addedCount(),
                      .removed = comparison->removedCount(),
                      .note = noteOn(*comparison, version.memo, *later)});
    later = &version.memo;
  }
  return result;
}

QString itemText(const VersionComparison::Item& item) {
  const bool isTag = item.part == VersionComparison::Part::tag;
  const QString name = (isTag ? QStringLiteral("#") : QString()) + qt(item.name);
  if (item.kind == WordChange::Kind::added)
    return (isTag ? QObject::tr("新增标签 %1") : QObject::tr("新增附件 %1")).arg(name);
  return (isTag ? QObject::tr("去掉标签 %1") : QObject::tr("取下附件 %1")).arg(name);
}

}  // namespace

struct HistoryScreen::Loaded {
  std::optional<Memo> current;
  HistoryModel::Versions versions;
  HistoryModel::Originals originals;
};

// What a restore has left, and the version that holds what it replaced.
struct HistoryScreen::Restored {
  Memo memo;
  std::optional<VersionEntry> replaced;
};

HistoryScreen::HistoryScreen(const ScreenContext& context, BannerScreen& banner)
    : context_(context),
      banner_(banner),
      timeline_(context.application.dayViewModel()),
      work_(context.executor, context.jobs) {
  connect(&context_.navigation, &Navigation::panelChanged, this, [this] {
    if (context_.navigation.panel() != Navigation::History) subject_.memo = nullptr;
  });
  saved_ = timeline_.saveState.observe([this](const SaveState& state) {
    if (state.kind == SaveState::Kind::saved && subject_.memo) load();
  });
}

HistoryScreen::~HistoryScreen() = default;

QString HistoryScreen::title() const {
  if (!subject_.memo) return {};
  return MemoDates::dayName(subject_.date, context_.clock.today()) + QLatin1Char(' ') +
         qt(subject_.memo->time);
}

void HistoryScreen::open(const MemoHandle& memo) {
  if (!memo.isValid()) return;
  subject_ = memo.entry;
  current_.reset();
  chosen_ = -1;
  model_.show({}, {}, context_.clock.today());
  showChanges({}, {});
  emit memoChanged();
  emit chosenChanged();
  context_.navigation.showPanel(Navigation::History);
  load();
}

void HistoryScreen::openIdentity(const QString& memoId) {
  const auto& entries = timeline_.allMemos.get();
  const auto found = std::ranges::find_if(
      entries, [id = utf8(memoId)](const MemoEntry& entry) { return entry.memo->memoId == id; });
  if (found != entries.end()) open({.entry = *found});
}

// After the writes that were begun before: the memo on the disk is the one that the list shows.
void HistoryScreen::load() {
  if (context_.navigation.panel() != Navigation::History) return;
  const std::size_t number = ++loadNumber_;
  isLoading_ = true;
  emit loadingChanged();
  timeline_.afterWrites(lifetime_.guard([this, number] {
    if (number != loadNumber_ || !subject_.memo) return;
    const auto isLatest = [this, number] { return number == loadNumber_; };
    work_.run(
        [memos = context_.application.memos(), day = subject_.date,
         seqNumber = subject_.memo->seqNumber](const std::stop_token& stop) {
          Loaded loaded;
          loaded.current = memos.days().memoStore().read(day, seqNumber);
          if (!loaded.current || !loaded.current->memoId) return loaded;
          const std::string& memoId = *loaded.current->memoId;
          loaded.versions = described(memos.versions().listVersions(day, seqNumber, memoId),
                                      *loaded.current, stop);
          loaded.originals = memos.versions().originals(memoId);
          return loaded;
        },
        [this, isLatest](Loaded&& loaded) {
          if (isLatest()) show(std::move(loaded));
        },
        [this, isLatest](const std::string& failure) {
          if (!isLatest()) return;
          isLoading_ = false;
          emit loadingChanged();
          banner_.fail(qt(failure), tr("重试"), [this] { load(); });
        });
  }));
}

void HistoryScreen::show(Loaded&& loaded) {
  const VersionEntry* before = model_.versionAt(chosen_);
  const std::string fileBefore = before ? before->filename : std::string();
  current_ = std::move(loaded.current);
  const auto same = std::ranges::find(loaded.versions, fileBefore,
                                      [](const auto& version) { return version.entry.filename; });
  const bool isEmpty = loaded.versions.empty() && loaded.originals.empty();
  chosen_ = same != loaded.versions.end() ? static_cast<int>(same - loaded.versions.begin())
            : isEmpty                     ? -1
                                          : 0;
  model_.show(std::move(loaded.versions), std::move(loaded.originals), context_.clock.today());
  isLoading_ = false;
  emit loadingChanged();
  emit chosenChanged();
  compare();
}

void HistoryScreen::choose(int row) {
  if (row < 0 || row >= model_.rowCount() || row == chosen_) return;
  chosen_ = row;
  emit chosenChanged();
  compare();
}

void HistoryScreen::setComparesWithNext(bool isNext) {
  if (std::exchange(comparesWithNext_, isNext) == isNext) return;
  emit chosenChanged();
  compare();
}

void HistoryScreen::compare() {
  const std::size_t number = ++comparisonNumber_;
  const auto isLatest = [this, number] { return number == comparisonNumber_; };
  if (const VersionEntry* version = model_.versionAt(chosen_); version && current_) {
    const VersionEntry* next = comparesWithNext_ ? model_.versionAt(chosen_ - 1) : nullptr;
    work_.run([before = version->memo, after = next ? next->memo : *current_](
                  const std::stop_token&) { return VersionComparison::of(before, after); },
              [this, isLatest](std::shared_ptr<const VersionComparison>&& comparison) {
                if (isLatest()) showChanges({.comparison = std::move(comparison)}, {});
              });
  } else if (const OriginalFile* original = model_.originalAt(chosen_)) {
    work_.run([memos = context_.application.memos(), file = *original](
                  const std::stop_token&) { return memos.versions().contentOf(file); },
              [this, isLatest](const std::string& content) {
                if (isLatest()) showChanges({}, qt(content).left(mostOfOriginal));
              },
              [this](const std::string& failure) { banner_.fail(qt(failure)); });
  } else {
    showChanges({}, {});
  }
}

void HistoryScreen::showChanges(WordChanges changes, const QString& original) {
  changes_ = std::move(changes);
  originalText_ = original;
  emit changesChanged();
}

QString HistoryScreen::details() const {
  if (!changes_.comparison) return {};
  QStringList texts;
  for (const auto& item : changes_.comparison->items()) texts.append(itemText(item));
  return texts.join(QStringLiteral(" · "));
}

QString HistoryScreen::size() const {
  if (!changes_.comparison) return {};
  if (changes_.comparison->isEmpty()) return tr("文字、标签和附件都相同");
  return tr("+%1 −%2 字")
      .arg(changes_.comparison->addedCount())
      .arg(changes_.comparison->removedCount());
}

void HistoryScreen::restore() {
  if (const VersionEntry* version = model_.versionAt(chosen_); version && !isRestoring_)
    putBack(VersionEntry(*version), false);
}

void HistoryScreen::putBack(const VersionEntry& version, bool isUndo) {
  if (!current_) return;
  setRestoring(true);
  work_.run(
      [memos = context_.application.memos(), day = subject_.date, current = *current_,
       version](const std::stop_token&) {
        const auto versionsOf = [&](const Memo& memo) {
          return memos.versions().listVersions(day, memo.seqNumber, memo.memoId);
        };
        const std::vector<VersionEntry> before = versionsOf(current);
        Restored restored{.memo = memos.restoreVersion(day, current, version), .replaced = {}};
        const std::vector<VersionEntry> after = versionsOf(restored.memo);
        // Where nothing differed, nothing was replaced.
        if (!after.empty() && (before.empty() || before[0].filename != after[0].filename))
          restored.replaced = after.front();
        return restored;
      },
      [this, version, isUndo](const Restored& restored) {
        tellRestored(restored, version, isUndo);
      },
      [this, version, isUndo](const std::string& failure) {
        tellFailure(qt(failure), version, isUndo);
      });
}

void HistoryScreen::tellRestored(const Restored& restored, const VersionEntry& version,
                                 bool isUndo) {
  setRestoring(false);
  current_ = restored.memo;
  timeline_.refreshCurrentTimeline(DayViewModel::Cause::externalWrite);
  load();
  const QString time = MemoDates::momentName(version.timestamp, context_.clock.today());
  if (isUndo || !restored.replaced)
    return banner_.succeed(isUndo ? tr("已撤销恢复") : tr("没有不同"));
  banner_.offer(tr("已恢复 %1 的版本").arg(time), tr("撤销"),
                [this, entry = subject_, memo = restored.memo, replaced = *restored.replaced] {
                  subject_ = entry;
                  current_ = memo;
                  putBack(replaced, true);
                });
}

// The memo may have changed meanwhile: what is tried again is tried on it as it is.
void HistoryScreen::tellFailure(const QString& text, const VersionEntry& version, bool isUndo) {
  setRestoring(false);
  load();
  banner_.fail(tr("版本恢复失败：%1").arg(text), tr("重试"),
               [this, version, isUndo] { putBack(version, isUndo); });
}

void HistoryScreen::setRestoring(bool isRestoring) {
  isRestoring_ = isRestoring;
  emit loadingChanged();
}

void HistoryScreen::clear() {
  if (!current_ || model_.rowCount() == 0) return;
  question_ = {.title = tr("清空所有版本历史？"),
               .text = tr("将永久删除这条笔记的历史版本和原文件，此操作不可撤销。"),
               .confirmText = tr("清空")};
  emit questionChanged();
}

void HistoryScreen::accept() {
  if (!question_.isAsked() || !current_) return;
  dismiss();
  work_.run(
      [memos = context_.application.memos(), day = subject_.date,
       current = *current_](const std::stop_token&) {
        memos.versions().deleteAllVersions(day, current.seqNumber, current.memoId);
      },
      [this] { load(); },
      [this](const std::string& failure) {
        load();
        banner_.fail(qt(failure));
      });
}

void HistoryScreen::dismiss() {
  question_ = {};
  emit questionChanged();
}

}  // namespace nomely
