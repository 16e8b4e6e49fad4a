#include <fmt/format.h>

#include "CLI/ActionCommand.h"
#include "CLI/Arguments.h"
#include "CLI/PagedOutput.h"
#include "CLI/Progress.h"
#include "CLI/SafetyBackup.h"
#include "CLI/TagLooks.h"
#include "CLI/UsageError.h"
#include "Core/Extensions/TagNames.h"
#include "Core/Query/TagOperation.h"
#include "Platform/Cancellation.h"

namespace nomely {
namespace {

class TagsCommand final : public ActionCommand {
 public:
  void declare(Syntax& syntax) override {
    addDefault(syntax, "list", "列出标签", list);
    Syntax& renaming = add(syntax, "rename", "改名，下级标签一起", with(&TagsCommand::rename));
    renaming.add(tagArgument("OLD", "旧标签", tag_));
    renaming.add(tagArgument("NEW", "新标签", other_));
    Syntax& merging = add(syntax, "merge", "并入另一个标签", with(&TagsCommand::merge));
    merging.add(tagArgument("TAG", "标签", tag_));
    merging.add(tagArgument("INTO", "并入的标签", other_));
    Syntax& erasing = add(syntax, "delete", "从笔记去掉标签", with(&TagsCommand::erase));
    erasing.add(tagArgument("TAG", "标签", tag_));
    erasing.add({.name = "--with-memos", .help = "连同笔记移入回收站", .target = &withMemos_});
    backup_.declare(erasing);
    add(syntax, "count", "有多少条笔记用这个标签", with(&TagsCommand::count))
        .add(tagArgument("TAG", "标签", tag_));
    Syntax& coloring = add(syntax, "color", "给标签一种颜色，不写颜色则取消",
                           [this](Session& session) { dress(session, &TagsCommand::color); });
    coloring.add(tagArgument("TAG", "标签", tag_));
    coloring.add(
        {.name = "COLOR", .help = "#RRGGBB，或 红 橙 黄 绿 青 蓝 紫 粉 棕 灰", .target = &other_});
    Syntax& marking = add(syntax, "emoji", "给标签一个表情，不写表情则取消",
                          [this](Session& session) { dress(session, &TagsCommand::emoji); });
    marking.add(tagArgument("TAG", "标签", tag_));
    marking.add({.name = "EMOJI", .help = "一个表情", .target = &other_});
    syntax.examples = {"nomely tags", "nomely tags rename 跑步 运动/跑步"};
  }

 private:
  using Kind = TagOperation::Kind;

  static Argument tagArgument(const char* name, const char* help, std::string& target) {
    return {
        .name = name, .help = help, .target = &target, .kind = WordKind::tag, .isRequired = true};
  }

  Action with(void (TagsCommand::*action)(Session&, const TagManagementStore&) const) {
    return [this, action](Session& session) {
      const TagManagementStore store(session.memos(), session.application().searchIndex(),
                                     [&](const std::string& message) { session.say(message); });
      (this->*action)(session, store);
    };
  }

  static void list(Session& session) {
    std::vector<TagUse> rows;
    session.host([&](const std::stop_token& stop) {
      Progress progress(session, "读取");
      const auto scan = session.scan(stop);
      scan->progress = [&](double share) { progress.show(share); };
      rows = scan->allTags();
    });
    std::erase_if(rows, [](const TagUse& use) { return TagNames::isHidden(use.tag); });
    const TagLooks looks(session.application().tagConfig().config().get());
    if (session.isJson()) {
      Json json = Json::array();
      for (const TagUse& row : rows) {
        Json& added = json.emplace_back(
            Json{{"tag", row.tag}, {"count", row.count}, {"latestDate", row.latestDate}});
        looks.addTo(added, row.tag);
      }
      return session.printJson(json);
    }
    const PagedOutput pager(session);
    for (const TagUse& row : rows)
      session.print(fmt::format("{:6}  {}\n", row.count, looks.text(row.tag, session.style())));
    if (rows.empty() && session.hasRoot()) session.say("还没有标签。");
  }

  void color(TagConfigStore& store, const std::string& tag) const {
    if (other_.empty())
      store.removeColor(tag);
    else
      store.setColor(TagLooks::colorNamed(other_), tag);
  }

  void emoji(TagConfigStore& store, const std::string& tag) const {
    if (other_.empty())
      store.removeEmoji(tag);
    else
      store.setEmoji(TagLooks::checkedEmoji(other_), tag);
  }

  void dress(Session& session,
             void (TagsCommand::*change)(TagConfigStore&, const std::string&) const) const {
    const std::string tag = Arguments::tag(tag_);
    const bool isNewRoot = !session.hasRoot();
    TagConfigStore& store = session.application().tagConfig();
    (this->*change)(store, tag);
    if (!store.isSaved())
      throw Error("tags.unsaved", "没能存下标签的设置，请检查数据目录能否写入，加 -v 可以看到原因");
    if (isNewRoot) session.tellOfNewRoot();
    const TagLooks looks(store.config().get());
    Json json{{"tag", tag}};
    looks.addTo(json, tag);
    if (session.isJson())
      session.printJson(json);
    else
      session.print(looks.text(tag, session.style()) + "\n");
  }

  void count(Session& session, const TagManagementStore& store) const {
    const std::string tag = Arguments::tag(tag_);
    session.tellOfMissingRoot();
    const std::int64_t found = store.countNotesWithTag(tag);
    if (session.isJson())
      session.printJson({{"tag", tag}, {"count", found}});
    else
      session.print(fmt::format("{}\n", found));
  }

  void erase(Session& session, const TagManagementStore& store) const {
    apply(session, store,
          {withMemos_ ? Kind::removeWithMemos : Kind::remove, Arguments::tag(tag_)});
  }

  void rename(Session& session, const TagManagementStore& store) const {
    replace(session, store, Kind::rename);
  }
  void merge(Session& session, const TagManagementStore& store) const {
    replace(session, store, Kind::merge);
  }

  void replace(Session& session, const TagManagementStore& store, Kind kind) const {
    const TagOperation operation{kind, Arguments::tag(tag_), Arguments::tag(other_)};
    if (operation.tag == operation.other) throw UsageError("两个标签相同，没有要改的");
    apply(session, store, operation);
  }

  // Asks with what a dry run finds, then makes the change.
  void apply(Session& session, const TagManagementStore& store,
             const TagOperation& operation) const {
    const auto hosted = [&](const char* label, bool isDry) {
      return TagsCommand::hosted(session, store, operation, label, isDry);
    };
    if (session.confirm(operation.question(hosted("查找", true)))) {
      if (operation.isRisky()) backup_.make(session, deletingByTag);
      const TagChange done = hosted("修改", false);
      session.say(operation.outcome(done));
      if (done.failed > 0) throw Error("tags.incomplete", TagOperation::shortfall(done));
      session.application().tagConfig().move(operation.tag, operation.other);
    }
    if (session.isJson()) list(session);
  }

  static TagChange hosted(Session& session, const TagManagementStore& store,
                          const TagOperation& operation, const char* label, bool isDry) {
    TagChange done;
    try {
      session.host([&](const std::stop_token& stop) {
        Progress progress(session, label);
        done = operation.run(store, {isDry, stop, [&](double share) { progress.show(share); }});
      });
    } catch (const CancellationError&) {
      if (!isDry) session.say(TagOperation::stopped);
      throw;
    }
    return done;
  }

  std::string tag_;
  std::string other_;
  bool withMemos_ = false;
  SafetyBackup backup_;
};

}  // namespace

std::unique_ptr<Command> makeTagsCommand() {
  return std::make_unique<TagsCommand>();
}

}  // namespace nomely
