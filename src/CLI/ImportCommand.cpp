#include <fmt/format.h>

#include "CLI/ActionCommand.h"
#include "CLI/Progress.h"
#include "CLI/SafetyBackup.h"
#include "CLI/UsageError.h"
#include "Import/FlomoImporter.h"
#include "Import/ImportUndoManager.h"
#include "Platform/Cancellation.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

Json record(const ImportPreviewSummary& summary) {
  return {{"sourceName", summary.sourceName},
          {"totalItems", summary.totalItems},
          {"newItems", summary.newItems},
          {"skippedItems", summary.skippedItems},
          {"repairedItems", summary.repairedItems},
          {"undatedItems", summary.undatedItems},
          {"daysAffected", summary.daysAffected},
          {"dateRange", summary.dateRange},
          {"imageCount", summary.imageCount},
          {"audioCount", summary.audioCount},
          {"missingAttachments", summary.missingAttachments},
          {"tags", summary.tags},
          {"emptyBodyCount", summary.emptyBodyCount}};
}

Json record(const FlomoImportResult& result) {
  return {{"memosImported", result.memosImported},
          {"memosRepaired", result.memosRepaired},
          {"daysAffected", result.daysAffected},
          {"attachmentsImported", result.attachmentsImported},
          {"attachmentsMissing", result.attachmentsMissing}};
}

class ImportCommand final : public ActionCommand {
 public:
  void declare(Syntax& syntax) override {
    Syntax& flomo = add(syntax, "flomo", "导入 flomo 导出的 HTML 或 ZIP 文件，已有的笔记不会重复",
                        [this](Session& session) { importFlomo(session); });
    flomo.add({.name = "FILE",
               .help = "flomo 导出的 HTML 或 ZIP 文件",
               .target = &file_,
               .kind = WordKind::file,
               .isRequired = true});
    flomo.add({.name = "--preview", .help = "只看会导入什么，不作改动", .target = &isPreview_});
    backup_.declare(flomo);
    flomo.examples = {"nomely import flomo flomo.zip --preview", "nomely import flomo flomo.zip"};
    Syntax& undoing = add(syntax, "undo", "撤销导入：把导入的笔记移入回收站",
                          [this](Session& session) { undo(session); });
    undoing.add({.name = "SOURCE",
                 .help = "flomo 的全部导入，或最近一次备忘录导入（notes）",
                 .target = &source_,
                 .choices = {"flomo", "notes"},
                 .isRequired = true});
    undoing.examples = {"nomely import undo flomo"};
  }

 private:
  void importFlomo(Session& session) const {
    if (!session.files().exists(file_))
      throw NameNotFoundError(fmt::format("找不到文件：{}", file_));
    const FlomoImporter importer(session.memos());
    const ImportPreviewSummary summary = hosted<ImportPreviewSummary>(
        session, "读取", [&](const ImportRun& run) { return importer.previewFromURL(file_, run); });
    if (isPreview_) return show(session, summary);
    if (!summary.isWorthwhile()) {
      session.say(summary.nothingNewText());
      if (session.isJson()) session.printJson(record(FlomoImportResult()));
      return;
    }
    session.say(summary.confirmationText());
    if (!session.confirm("开始导入吗？")) return;
    backup_.make(session, {"flomo 导入"});
    const bool isNewRoot = !session.hasRoot();
    const FlomoImportResult result = importAll(session, importer);
    if (isNewRoot) session.tellOfNewRoot();
    if (session.isJson()) return session.printJson(record(result));
    session.say(result.text());
  }

  [[nodiscard]] FlomoImportResult importAll(Session& session, const FlomoImporter& importer) const {
    try {
      return hosted<FlomoImportResult>(session, "导入", [&](const ImportRun& run) {
        return importer.importFromURL(file_, run);
      });
    } catch (const CancellationError&) {
      session.say("已导入的笔记会保留；再执行一次就能导入其余的。");
      throw;
    }
  }

  static void show(Session& session, const ImportPreviewSummary& summary) {
    if (session.isJson()) return session.printJson(record(summary));
    session.print(summary.confirmationText() + "\n");
  }

  // Runs long work, and words what stops it.
  template <typename Result>
  static Result hosted(Session& session, const char* label,
                       const std::function<Result(const ImportRun&)>& work) {
    Result result;
    try {
      session.host([&](const std::stop_token& stop) {
        Progress progress(session, label);
        result = work({stop, [&](double share) { progress.show(share); }});
      });
    } catch (const CancellationError&) {
      throw;
    } catch (const Error& error) {
      throw Error(error.code(), fmt::format("❌ 导入失败：{}", error.what()));
    } catch (const std::exception& error) {
      Log::error(LogChannel::importer, "ImportCommand: {}", error.what());
      throw Error("internal", "❌ 导入失败：未知错误");
    }
    return result;
  }

  // What one kind of import is called, and how it is undone.
  struct Undoing {
    const char* question;  // "{}": how many
    const char* done;
    const char* nothing;
    ImportUndoManager::Count (ImportUndoManager::*count)(const ImportRun&) const;
    ImportUndoManager::Places (ImportUndoManager::*undo)(const ImportRun&) const;
  };

  void undo(Session& session) const {
    static constexpr Undoing flomo{"将移入回收站：{} 条从 flomo 导入的笔记，可在回收站中恢复。",
                                   "已将 {} 条 flomo 导入笔记移入回收站", "没有从 flomo 导入的笔记",
                                   &ImportUndoManager::countFlomoImports,
                                   &ImportUndoManager::undoFlomoImportDetailed};
    static constexpr Undoing notes{"将把最近一次备忘录导入的 {} 条笔记移入回收站，可从回收站恢复。",
                                   "已将最近一次备忘录导入的 {} 条笔记移入回收站",
                                   "没有找到可撤销的备忘录导入批次",
                                   &ImportUndoManager::countLatestNotesImport,
                                   &ImportUndoManager::undoLatestNotesImportDetailed};
    session.tellOfMissingRoot();
    undo(session, source_ == "flomo" ? flomo : notes);
  }

  static void undo(Session& session, const Undoing& undoing) {
    const ImportUndoManager manager(session.memos());
    ImportUndoManager::Count count;
    session.host([&](const std::stop_token& stop) {
      Progress progress(session, "查找");
      count = (manager.*undoing.count)({stop, [&](double share) { progress.show(share); }});
    });
    ImportUndoManager::Places moved;
    if (count.memos == 0) {
      session.say(undoing.nothing);
    } else {
      std::string question = fmt::format(fmt::runtime(undoing.question), count.memos);
      if (count.edited > 0) question += fmt::format("其中 {} 条导入后改过。", count.edited);
      if (!session.confirm(question)) return;
      moved = trash(session, manager, undoing);
    }
    if (!session.isJson()) return;
    Json places = Json::array();
    for (const auto& [day, number] : moved)
      places.push_back({{"date", day.string()}, {"seqNumber", number}});
    session.printJson({{"found", count.memos}, {"edited", count.edited}, {"moved", places}});
  }

  static ImportUndoManager::Places trash(Session& session, const ImportUndoManager& manager,
                                         const Undoing& undoing) {
    ImportUndoManager::Places moved;
    try {
      session.host([&](const std::stop_token& stop) {
        Progress progress(session, "移动");
        moved = (manager.*undoing.undo)({stop, [&](double share) { progress.show(share); }});
      });
    } catch (const CancellationError&) {
      session.say("已移入回收站的笔记留在那里；再执行一次就能移走其余的。");
      throw;
    }
    session.say(fmt::format(fmt::runtime(undoing.done), moved.size()));
    session.say("用 nomely trash 列出名称，nomely trash restore 名称 恢复。");
    return moved;
  }

  std::string file_;
  std::string source_;
  bool isPreview_ = false;
  SafetyBackup backup_;
};

}  // namespace

std::unique_ptr<Command> makeImportCommand() {
  return std::make_unique<ImportCommand>();
}

}  // namespace nomely
