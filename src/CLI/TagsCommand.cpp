#include <fmt/format.h>

#include "CLI/ActionCommand.h"
#include "CLI/Arguments.h"
#include "CLI/Progress.h"
#include "CLI/UsageError.h"
#include "Core/Query/TagManagementStore.h"
#include "Platform/Cancellation.h"

namespace nomely {
namespace {

class TagsCommand final : public ActionCommand {
 public:
  void declare(CLI::App& app) override {
    addDefault(app, "list", "列出标签", with(&TagsCommand::list));
    CLI::App& renaming = add(app, "rename", "改名，下级标签一起", with(&TagsCommand::rename));
    renaming.add_option("OLD", tag_, "旧标签")->required();
    renaming.add_option("NEW", other_, "新标签")->required();
    CLI::App& merging = add(app, "merge", "并入另一个标签", with(&TagsCommand::merge));
    merging.add_option("TAG", tag_, "标签")->required();
    merging.add_option("INTO", other_, "并入的标签")->required();
    CLI::App& erasing = add(app, "delete", "从笔记去掉标签", with(&TagsCommand::erase));
    erasing.add_option("TAG", tag_, "标签")->required();
    erasing.add_flag("--with-memos", withMemos_, "连同笔记移入回收站");
    add(app, "count", "有多少条笔记用这个标签", with(&TagsCommand::count))
        .add_option("TAG", tag_, "标签")
        ->required();
  }

 private:
  using Change = std::function<TagChange(const TagRun&)>;

  Action with(void (TagsCommand::*action)(Session&, const TagManagementStore&) const) {
    return [this, action](Session& session) {
      bool failed = false;
      const TagManagementStore store(session.memos(), session.application().searchIndex(),
                                     [&](const std::string& message) {
                                       failed = true;
                                       session.say(message);
                                     });
      (this->*action)(session, store);
      if (failed) throw Error("tags.incomplete", "有笔记未能更新，其余已完成");
    };
  }

  void list(Session& session, const TagManagementStore& store) const {
    const std::vector<TagUse> rows = store.loadAllTags();
    if (session.isJson()) {
      Json json = Json::array();
      for (const TagUse& row : rows)
        json.push_back({{"tag", row.tag}, {"count", row.count}, {"latestDate", row.latestDate}});
      return session.printJson(json);
    }
    const PagedOutput pager(session.environment(), session.isJson());
    for (const TagUse& row : rows)
      session.print(fmt::format("{:6}  {}\n", row.count,
                                session.style().tag("#" + Terminal::printable(row.tag))));
    if (rows.empty()) session.say("还没有标签。");
  }

  void count(Session& session, const TagManagementStore& store) const {
    const std::string tag = Arguments::tag(tag_);
    const std::int64_t found = store.countNotesWithTag(tag);
    if (session.isJson())
      session.printJson({{"tag", tag}, {"count", found}});
    else
      session.print(fmt::format("{}\n", found));
  }

  void erase(Session& session, const TagManagementStore& store) const {
    const std::string tag = Arguments::tag(tag_);
    const Change change = [&](const auto& run) {
      return withMemos_ ? store.deleteTagWithMemos(tag, run) : store.deleteTag(tag, run);
    };
    apply(session, store, change, [&](const TagChange& planned) {
      return withMemos_
                 ? fmt::format("将把带有标签“{}”的 {} 条笔记移入回收站。", tag, planned.memos)
                 : fmt::format("将从 {} 条笔记去掉标签“{}”{}。", planned.memos, tag,
                               bodiesText(planned));
    });
  }

  void rename(Session& session, const TagManagementStore& store) const {
    replace(session, store, &TagManagementStore::renameTag);
  }
  void merge(Session& session, const TagManagementStore& store) const {
    replace(session, store, &TagManagementStore::mergeTag);
  }

  void replace(Session& session, const TagManagementStore& store,
               TagChange (TagManagementStore::*change)(std::string_view, std::string_view,
                                                       const TagRun&) const) const {
    const std::string from = Arguments::tag(tag_);
    const std::string to = Arguments::tag(other_);
    if (from == to) throw UsageError("两个标签相同，没有要改的");
    apply(
        session, store, [&](const auto& run) { return (store.*change)(from, to, run); },
        [&](const TagChange& planned) {
          return fmt::format("将在 {} 条笔记中把标签“{}”换成“{}”{}。", planned.memos, from, to,
                             bodiesText(planned));
        });
  }

  // Asks with what a dry run finds, then makes the change.
  void apply(Session& session, const TagManagementStore& store, const Change& change,
             const std::function<std::string(const TagChange&)>& question) const {
    if (session.confirm(question(hosted(session, "查找", change, true)))) {
      const TagChange done = hosted(session, "修改", change, false);
      session.say(fmt::format("已处理 {} 条笔记{}。", done.memos,
                              withMemos_ ? "" : "，原文在各条的历史版本里"));
      if (done.failed > 0)
        throw Error("tags.incomplete", fmt::format("有 {} 处未能更新，其余已完成", done.failed));
    }
    if (session.isJson()) list(session, store);
  }

  static TagChange hosted(Session& session, const char* label, const Change& change, bool isDry) {
    TagChange done;
    try {
      session.host([&](const std::stop_token& stop) {
        Progress progress(session, label);
        done = change({isDry, stop, [&](double share) { progress.show(share); }});
      });
    } catch (const CancellationError&) {
      if (!isDry) session.say("已改的笔记保持改后的样子；再执行一次就能改完其余的。");
      throw;
    }
    return done;
  }

  static std::string bodiesText(const TagChange& planned) {
    return planned.bodies == 0
               ? ""
               : fmt::format("，其中 {} 条正文里的标签文字也会去掉", planned.bodies);
  }

  std::string tag_;
  std::string other_;
  bool withMemos_ = false;
};

}  // namespace

std::unique_ptr<Command> makeTagsCommand() {
  return std::make_unique<TagsCommand>();
}

}  // namespace nomely
