#include <fmt/format.h>

#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/UsageError.h"
#include "Core/Query/TagManagementStore.h"

namespace nomely {
namespace {

class TagsCommand final : public Command {
 public:
  void declare(CLI::App& app) override {
    app.add_option("ACTION", action_, "list（默认）、rename、merge、delete 或 count");
    app.add_option("TAG", tags_, "标签");
    app.add_flag("--with-memos", withMemos_, "delete：连同笔记移入回收站");
  }

  void run(Session& session) override {
    bool failed = false;
    const TagManagementStore store(session.memos(), session.application().searchIndex(),
                                   [&](const std::string& message) {
                                     failed = true;
                                     session.say(message);
                                   });
    if (action_ == "list")
      list(session, store);
    else if (action_ == "count")
      count(session, store);
    else if (action_ == "delete")
      erase(session, store);
    else if (action_ == "rename" || action_ == "merge")
      replace(session, store);
    else
      throw UsageError(
          fmt::format("“{}”不是标签的操作：请用 list、rename、merge、delete 或 count", action_));
    if (failed) throw Error("tags.incomplete", "有笔记未能更新，其余已完成");
  }

 private:
  [[nodiscard]] std::vector<std::string> tags(std::size_t wanted, std::string_view form) const {
    if (tags_.size() != wanted) throw UsageError(fmt::format("用法：nomely tags {}", form));
    std::vector<std::string> cleaned;
    cleaned.reserve(wanted);
    for (const std::string& tag : tags_) cleaned.push_back(Arguments::tag(tag));
    return cleaned;
  }

  static void list(const Session& session, const TagManagementStore& store) {
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

  void count(const Session& session, const TagManagementStore& store) const {
    const std::string tag = tags(1, "count 标签").front();
    const std::int64_t found = store.countNotesWithTag(tag);
    if (session.isJson())
      session.printJson({{"tag", tag}, {"count", found}});
    else
      session.print(fmt::format("{}\n", found));
  }

  void erase(const Session& session, const TagManagementStore& store) const {
    const std::string tag = tags(1, "delete 标签 [--with-memos]").front();
    const auto apply = [&](const TagRun& run) {
      return withMemos_ ? store.deleteTagWithMemos(tag, run) : store.deleteTag(tag, run);
    };
    const TagChange planned = apply({.isDry = true});
    const std::string question =
        withMemos_ ? fmt::format("将把带有标签“{}”的 {} 条笔记移入回收站。", tag, planned.memos)
                   : fmt::format("将从 {} 条笔记去掉标签“{}”{}。", planned.memos, tag,
                                 bodiesText(planned));
    if (session.confirm(question)) finish(session, apply({}));
    if (session.isJson()) list(session, store);
  }

  void replace(const Session& session, const TagManagementStore& store) const {
    const bool renames = action_ == "rename";
    const auto names = tags(2, renames ? "rename 旧标签 新标签" : "merge 标签 并入的标签");
    const std::string& from = names[0];
    const std::string& to = names[1];
    if (from == to) throw UsageError("两个标签相同，没有要改的");
    const auto apply = [&](const TagRun& run) {
      return renames ? store.renameTag(from, to, run) : store.mergeTag(from, to, run);
    };
    const TagChange planned = apply({.isDry = true});
    if (session.confirm(fmt::format("将在 {} 条笔记中把标签“{}”换成“{}”{}。", planned.memos, from,
                                    to, bodiesText(planned))))
      finish(session, apply({}));
    if (session.isJson()) list(session, store);
  }

  static std::string bodiesText(const TagChange& planned) {
    return planned.bodies == 0
               ? ""
               : fmt::format("，其中 {} 条正文里的标签文字也会去掉", planned.bodies);
  }

  void finish(const Session& session, const TagChange& done) const {
    session.say(fmt::format("已处理 {} 条笔记{}。", done.memos,
                            withMemos_ ? "" : "，原文在各条的历史版本里"));
    if (done.failed > 0)
      throw Error("tags.incomplete", fmt::format("有 {} 条笔记未能更新，其余已完成", done.failed));
  }

  std::string action_ = "list";
  std::vector<std::string> tags_;
  bool withMemos_ = false;
};

}  // namespace

std::unique_ptr<Command> makeTagsCommand() {
  return std::make_unique<TagsCommand>();
}

}  // namespace nomely
