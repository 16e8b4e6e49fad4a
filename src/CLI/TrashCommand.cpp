#include <fmt/format.h>

#include "App/TrashErasing.h"
#include "CLI/ActionCommand.h"
#include "CLI/Arguments.h"
#include "CLI/MemoOutput.h"
#include "CLI/PagedOutput.h"
#include "CLI/SafetyBackup.h"
#include "CLI/UsageError.h"

namespace nomely {
namespace {

Json jsonOf(const TrashEntry& entry) {
  return {{"trashSubdir", entry.trashSubdir},
          {"originalDate", entry.originalDate.string()},
          {"memo", MemoOutput::json({entry.originalDate, entry.memo})}};
}

class TrashCommand final : public ActionCommand {
 public:
  void declare(Syntax& syntax) override {
    addDefault(syntax, "list", "列出回收站里的笔记", [this](Session& session) { list(session); });
    add(syntax, "restore", "恢复笔记", [this](Session& session) {
      restore(session);
    }).add(nameArgument(true));
    Syntax& erasing =
        add(syntax, "delete", "永久删除笔记", [this](Session& session) { erase(session); });
    erasing.add(nameArgument(false));
    erasing.add({.name = "--from",
                 .help = "从哪一天",
                 .target = &from_,
                 .value = "DATE",
                 .kind = WordKind::date});
    erasing.add({.name = "--to",
                 .help = "到哪一天",
                 .target = &to_,
                 .value = "DATE",
                 .kind = WordKind::date});
    backup_.declare(erasing);
    backup_.declare(add(syntax, "empty", "永久删除回收站里的一切",
                        [this](Session& session) { empty(session); }));
    syntax.add({.name = "--oneline", .help = "每条一行：名称、时间、首行", .target = &oneLine_});
    syntax.examples = {"nomely trash", "nomely trash restore 2026-03-01_007"};
  }

 private:
  Argument nameArgument(bool isRequired) {
    return {.name = "NAME",
            .help = "回收站条目的名称",
            .target = &names_,
            .kind = WordKind::trashEntry,
            .isRequired = isRequired};
  }

  void list(Session& session) const {
    session.tellOfMissingRoot();
    const std::vector<TrashEntry> entries = session.memos().trashed();
    if (session.isJson()) {
      Json json = Json::array();
      for (const TrashEntry& entry : entries) json.push_back(jsonOf(entry));
      return session.printJson(json);
    }
    const PagedOutput pager(session);
    const Style style = session.style();
    for (const TrashEntry& entry : entries) {
      const std::string name = Terminal::printable(entry.trashSubdir);
      session.print(oneLine_
                        ? MemoOutput::oneLine(name, entry.memo.time, entry.memo.body)
                        : fmt::format("{}\n{}\n", style.bold(name),
                                      MemoOutput::text({entry.originalDate, entry.memo}, style)));
    }
    if (entries.empty()) session.say("回收站是空的。");
  }

  void restore(Session& session) const {
    for (const TrashEntry& entry : named(session)) {
      const auto [day, seqNumber] = session.memos().restore(entry);
      session.say(fmt::format("已恢复为 {}/{}。", day.string(), seqNumber));
    }
    if (session.isJson()) list(session);
  }

  void erase(Session& session) const {
    const bool byDate = !from_.empty() || !to_.empty();
    const std::vector<TrashEntry> entries = byDate ? dated(session) : named(session);
    if (entries.empty())
      session.say(TrashErasing::nothingBetween);
    else if (session.confirm(byDate ? fmt::format("{}。", TrashErasing::warningBetween)
                                    : TrashErasing::warning(entries.size()))) {
      backup_.make(session, TrashErasing::deleting);
      session.memos().destroy(entries);
    }
    if (session.isJson()) list(session);
  }

  void empty(Session& session) const {
    const TrashContents contents = session.memos().trashContents();
    if (TrashErasing::isEmpty(contents))
      session.say("回收站是空的。");
    else if (session.confirm(TrashErasing::emptyingQuestion +
                             Terminal::printable(TrashErasing::emptyingWarning(contents)))) {
      backup_.make(session, TrashErasing::emptying);
      session.memos().emptyTrash();
    }
    if (session.isJson()) list(session);
  }

  [[nodiscard]] std::vector<TrashEntry> named(Session& session) const {
    if (names_.empty()) throw UsageError("缺少回收站条目的名称，见 nomely trash list");
    (void)session.memos().trashed();  // what was cut off is finished first
    std::vector<TrashEntry> entries;
    for (const std::string& name : names_) {
      auto entry = session.memos().trashStore().entryNamed(name);
      if (!entry) throw NameNotFoundError(fmt::format("回收站里没有“{}”", name));
      entries.push_back(*std::move(entry));
    }
    return entries;
  }

  [[nodiscard]] std::vector<TrashEntry> dated(Session& session) const {
    if (from_.empty() || to_.empty() || !names_.empty())
      throw UsageError("按日期删除需要同时给出 --from 和 --to，且不写名称");
    const Day from = Arguments::day(from_, session.clock());
    const Day to = Arguments::day(to_, session.clock());
    return TrashErasing::between(session.memos().trashed(), from, to);
  }

  std::vector<std::string> names_;
  std::string from_;
  std::string to_;
  bool oneLine_ = false;
  SafetyBackup backup_;
};

}  // namespace

std::unique_ptr<Command> makeTrashCommand() {
  return std::make_unique<TrashCommand>();
}

}  // namespace nomely
