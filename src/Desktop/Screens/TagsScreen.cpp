#include "Desktop/Screens/TagsScreen.h"

#include <QPointer>
#include <algorithm>
#include <chrono>
#include <functional>

#include "App/Application.h"
#include "Core/Extensions/TagUtilities.h"
#include "Desktop/Base/Navigation.h"
#include "Desktop/Base/Qt.h"
#include "Desktop/Screens/SidebarScreen.h"
#include "Desktop/Screens/TimelineScreen.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/Text/FoldedText.h"

namespace nomely {
namespace {

constexpr qsizetype suggestionsShown = 6;
constexpr std::chrono::milliseconds typingPause{250};

using Nodes = std::vector<const TagNode*>;

void collect(const std::vector<TagNode>& nodes, const TextNeedle& typed, Nodes& found) {
  for (const TagNode& node : nodes) {
    if (typed.isEmpty() || typed.isIn(node.tag)) found.push_back(&node);
    collect(node.children, typed, found);
  }
}

}  // namespace

TagsScreen::TagsScreen(const ScreenContext& context, SidebarScreen& sidebar,
                       TimelineScreen& timeline)
    : context_(context),
      sidebar_(sidebar),
      timeline_(timeline),
      work_(context.executor, context.jobs) {
  typing_.setSingleShot(true);
  typing_.setInterval(typingPause);
  connect(&typing_, &QTimer::timeout, this, &TagsScreen::count);
  deletions_ =
      context_.application.dayViewModel().pendingUndoDelete.observe([this](const auto& offer) {
        if (offer) setUndo(std::nullopt);
      });
}

TagsScreen::~TagsScreen() {
  stop_.request_stop();
}

QString TagsScreen::title() const {
  const QString tag = qt(operation_.tag);
  if (isUndoing_) return tr("恢复标签「%1」的笔记").arg(tag);
  switch (operation_.kind) {
    case TagOperation::Kind::rename:
      return tr("给标签「%1」改名").arg(tag);
    case TagOperation::Kind::merge:
      return tr("把标签「%1」并入").arg(tag);
    case TagOperation::Kind::remove:
      return tr("删除标签「%1」，保留笔记").arg(tag);
    case TagOperation::Kind::removeWithMemos:
      break;
  }
  return tr("删除标签「%1」和它的笔记").arg(tag);
}

QString TagsScreen::confirmText() const {
  switch (operation_.kind) {
    case TagOperation::Kind::rename:
      return tr("改名");
    case TagOperation::Kind::merge:
      return tr("并入");
    case TagOperation::Kind::remove:
      return tr("删除标签");
    case TagOperation::Kind::removeWithMemos:
      break;
  }
  return tr("删除笔记");
}

void TagsScreen::open(Operation operation, const QString& tag) {
  // What is under way, and was sent away, is shown again.
  if (stage_ == Working) return emit changed();
  if (tag.isEmpty()) return;
  operation_ = {.kind = static_cast<TagOperation::Kind>(operation), .tag = utf8(tag)};
  other_ = operation == Rename ? tag : QString();
  suggest();
  plan();
}

void TagsScreen::setOther(const QString& other) {
  if (stage_ == Working || std::exchange(other_, other) == other) return;
  suggest();
  plan();
}

// Tags that hold what is typed, the last used first.
void TagsScreen::suggest() {
  Nodes found;
  if (operation_.kind == TagOperation::Kind::merge)
    collect(sidebar_.tags()->source().roots, TextNeedle(utf8(other_.trimmed())), found);
  std::ranges::stable_sort(found, std::ranges::greater(), &TagNode::latest);
  QStringList offered;
  for (const TagNode* node : found)
    if (node->tag != operation_.tag && node->tag != utf8(other_)) offered << qt(node->tag);
  suggestions_.setStringList(offered.mid(0, suggestionsShown));
}

// Says at once what is wrong with what is typed, and counts after a pause what is right.
void TagsScreen::plan() {
  stop_.request_stop();
  typing_.stop();
  isRefused_ = false;
  if (!operation_.hasOther()) return count();
  const std::string typed = utf8(other_);
  const std::optional<std::string> name = TagUtilities::cleanTag(typed);
  operation_.other = name.value_or("");
  if (other_.trimmed().isEmpty()) return show(Waiting, tr("输入另一个标签的名字，用 / 分层。"));
  isRefused_ = !name;
  if (!name) return show(Waiting, qt(TagUtilities::whyNoTag(typed)));
  if (*name == operation_.tag) return show(Waiting, tr("还是原来的名字。"));
  show(Counting, tr("正在查找…"));
  typing_.start();
}

void TagsScreen::count() {
  show(Counting, tr("正在查找…"));
  start(Run::dry);
}

void TagsScreen::confirm() {
  if (stage_ != Ready) return;
  show(Working, operation_.isRisky() ? tr("正在备份，然后移入回收站…") : tr("正在修改…"));
  start(Run::real);
}

void TagsScreen::close() {
  typing_.stop();
  stop_.request_stop();
  // Of work that is stopped, the note comes when it has ended.
  if (stage_ != Working && stage_ != Closed) show(Closed, {});
}

void TagsScreen::start(Run run) {
  setProgress(0);
  stop_ = std::stop_source();
  const auto isPresent = [this, stop = stop_] { return stop == stop_; };
  const auto shown = progressLifetime_.guard([this, isPresent](double share) {
    if (isPresent()) setProgress(share);
  });
  const TagRun how{.isDry = run == Run::dry,
                   .stop = stop_.get_token(),
                   .progress = [&executor = context_.executor, shown](double share) {
                     executor.post([shown, share] { shown(share); });
                   }};
  const auto trashed = run == Run::undo ? undo_->trashed : std::vector<std::string>();
  work_.run(
      [&application = context_.application, operation = operation_, how, run, trashed,
       stop = stop_](const std::stop_token& ending) {
        const std::stop_callback ends(ending, [stop]() mutable { stop.request_stop(); });
        return run == Run::undo ? bringBack(application, trashed, how)
                                : perform(application, operation, how);
      },
      [this, run, isPresent](Outcome&& outcome) {
        if (!isPresent()) return;
        if (run == Run::undo) return finishUndo(outcome);
        if (run == Run::real) return finish(outcome);
        if (!stop_.stop_requested()) show(Ready, qt(operation_.question(outcome.change)));
      });
}

TagsScreen::Outcome TagsScreen::perform(Application& application, const TagOperation& operation,
                                        const TagRun& run) {
  Outcome outcome;
  try {
    if (!run.isDry && operation.isRisky())
      application.backupBeforeRiskyOperation(deletingByTag,
                                             {.stop = run.stop, .progress = run.progress});
    const TagManagementStore store(
        application.memos(), application.searchIndex(),
        [&](const std::string& error) { outcome.errors.push_back(error); });
    TagRun noting = run;
    noting.trashed = [&](const std::string& name) { outcome.trashed.push_back(name); };
    outcome.change = operation.run(store, noting);
  } catch (const CancellationError&) {
    outcome.isStopped = true;
  } catch (const Error& error) {
    outcome.failure = error.what();
  }
  return outcome;
}

TagsScreen::Outcome TagsScreen::bringBack(Application& application,
                                          const std::vector<std::string>& trashed,
                                          const TagRun& run) {
  Outcome outcome;
  try {
    outcome.change = TagManagementStore(application.memos(), application.searchIndex())
                         .restoreMemos(trashed, run);
  } catch (const CancellationError&) {
    outcome.isStopped = true;
  }
  return outcome;
}

void TagsScreen::finish(const Outcome& outcome) {
  const QString tag = qt(operation_.tag);
  const bool showsTag = timeline_.list() == TimelineScreen::Tag && timeline_.tag() == tag;
  NotificationCenter::shared().post(Notifications::refreshSidebarTags);
  QStringList troubles;
  if (!outcome.failure.empty()) troubles << qt(outcome.failure);
  if (!outcome.errors.empty()) troubles << qt(outcome.errors.front());
  if (outcome.change.failed > 0) troubles << qt(TagOperation::shortfall(outcome.change));
  std::function<void()> bringsLooksBack;
  if (troubles.isEmpty() && !outcome.isStopped)
    bringsLooksBack = sidebar_.follow(tag, qt(operation_.other));
  if (!troubles.isEmpty()) context_.navigation.fail(troubles.join(tr("；")));
  const QString done = outcome.isStopped    ? qt(TagOperation::stopped)
                       : troubles.isEmpty() ? qt(operation_.outcome(outcome.change))
                                            : QString();
  if (!outcome.trashed.empty()) {
    setUndo(Undo{outcome.trashed, bringsLooksBack});
    context_.navigation.offer(
        done.isEmpty() ? tr("已删除 %1 条").arg(outcome.trashed.size()) : done,
        {tr("撤销"), [self = QPointer(this)] {
           if (self) self->undo();
         }});
  } else {
    context_.navigation.toast(done);
  }
  show(Closed, {});
  if (showsTag && troubles.isEmpty() && !outcome.isStopped)
    operation_.other.empty() ? timeline_.showAll() : timeline_.showTag(qt(operation_.other));
  else
    context_.application.dayViewModel().refreshCurrentTimeline(DayViewModel::Cause::externalWrite);
}

void TagsScreen::undo() {
  if (!undo_ || stage_ == Working) return;
  stop_.request_stop();
  typing_.stop();
  isUndoing_ = true;
  show(Working, tr("正在恢复…"));
  start(Run::undo);
}

void TagsScreen::finishUndo(const Outcome& outcome) {
  if (undo_ && undo_->bringsLooksBack && !outcome.isStopped) undo_->bringsLooksBack();
  setUndo(std::nullopt);
  NotificationCenter::shared().post(Notifications::refreshSidebarTags);
  if (outcome.change.failed > 0)
    context_.navigation.fail(qt(TagOperation::restored(outcome.change)));
  else
    context_.navigation.toast(outcome.isStopped ? qt(TagOperation::restoreStopped)
                                                : qt(TagOperation::restored(outcome.change)));
  show(Closed, {});
  isUndoing_ = false;
  context_.application.dayViewModel().refreshCurrentTimeline(DayViewModel::Cause::externalWrite);
}

void TagsScreen::setUndo(std::optional<Undo> undo) {
  undo_ = std::move(undo);
  emit canUndoChanged();
}

void TagsScreen::show(Stage stage, const QString& text) {
  stage_ = stage;
  text_ = text;
  emit changed();
}

void TagsScreen::setProgress(double share) {
  progress_ = share;
  emit progressChanged();
}

}  // namespace nomely
