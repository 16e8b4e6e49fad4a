#include <filesystem>

#include <fmt/format.h>

#include "CLI/ActionCommand.h"
#include "CLI/MemoSelection.h"
#include "CLI/OutputFile.h"
#include "CLI/Progress.h"
#include "CLI/UsageError.h"
#include "Editor/Diagrams/DiagramHelper.h"
#include "Editor/Diagrams/MermaidSnapshotStore.h"
#include "Export/HTMLExporter.h"
#include "Export/MarkdownExporter.h"

namespace nomely {
namespace {

class ExportCommand final : public ActionCommand {
 public:
  void declare(Syntax& syntax) override {
    addFormat(syntax, {"html", "一个自带图片的网页", "html"}, &ExportCommand::html)
        .add({.name = "--diagrams",
              .help = "把 mermaid 代码块画成图（需要软件包 nomely-diagrams），画不出的仍是代码",
              .target = &hasDiagrams_});
    addFormat(syntax, {"markdown", "一个 Markdown 文档，附件放在旁边的文件夹里", "md"},
              &ExportCommand::markdown);
  }

 private:
  struct Format {
    const char* name;
    const char* summary;
    const char* extension;
  };
  // Where the document goes: a file, or standard output where there is none.
  struct Job {
    Session& session;
    std::optional<OutputFile> file;
    ExportSelection selection;
    std::stop_token stop;
  };
  // Writes the document and returns its length in bytes.
  using Write = std::size_t (ExportCommand::*)(const Job&) const;

  Syntax& addFormat(Syntax& syntax, const Format& format, Write write) {
    Syntax& part =
        add(syntax, format.name, format.summary,
            [this, format, write](Session& session) { exportAs(format, session, write); });
    selection_.declare(part);
    part.add(
        {.name = "-o,--output",
         .help = fmt::format("写到哪个文件，- 为标准输出，默认为当前文件夹里的 Nomely-导出-日期.{}",
                             format.extension),
         .target = &output_,
         .value = "FILE",
         .kind = WordKind::file});
    part.examples = {
        fmt::format("nomely export {} --all -o 日记.{}", format.name, format.extension)};
    return part;
  }

  [[nodiscard]] std::optional<OutputFile> target(const Session& session,
                                                 const Format& format) const {
    if (output_ == "-") return std::nullopt;
    return OutputFile(output_.value_or(fmt::format(
                          "Nomely-导出-{}.{}", session.clock().today().string(), format.extension)),
                      session);
  }

  void exportAs(const Format& format, Session& session, Write write) const {
    auto file = target(session, format);
    if (!file && session.isJson()) throw UsageError("-o - 不能和 --json 一起用");
    if (file && !file->confirm(session)) return;
    Job job{.session = session, .file = file, .selection = {}, .stop = {}};
    std::size_t count = 0;
    std::size_t bytes = 0;
    session.host([&](const std::stop_token& stop) {
      // Memos are read twice, so that no list of them has to be held.
      const bool isCut = selection_.forEach(session, stop, [&](const MemoEntry&) { ++count; });
      if (isCut) MemoSelection::tellOfMore(session, count);
      bytes = writeCounted(job, count, stop, write);
    });
    if (!file) return;
    if (session.isJson())
      return session.printJson(
          {{"file", file->path().string()}, {"memos", count}, {"bytes", bytes}});
    session.say(fmt::format("已导出 {} 条笔记，{} 字节：{}", count, bytes, file->path().string()));
  }

  std::size_t writeCounted(Job& job, std::size_t count, const std::stop_token& stop,
                           Write write) const {
    Progress progress(job.session, "导出");
    job.stop = stop;
    std::size_t done = 0;
    job.selection = {count, [&](const auto& visit) {
                       done = 0;
                       (void)selection_.forEach(job.session, stop, [&](const MemoEntry& entry) {
                         visit(entry);
                         ++done;
                         progress.show(static_cast<double>(done) / static_cast<double>(count));
                       });
                       // The document says how many there are.
                       if (done != count)
                         throw Error("export.changed", "导出期间笔记有增减，没有完成。请再试一次");
                     }};
    return (this->*write)(job);
  }

  [[nodiscard]] std::size_t html(const Job& job) const {
    DiagramHelper helper(job.session.timers());
    if (hasDiagrams_ && !helper.isInstalled())
      throw Error("diagram.missing", "要画出图表，请安装软件包 nomely-diagrams");
    MermaidSnapshotStore snapshots(helper);
    const auto element = [&](const std::string& code) -> std::string {
      snapshots.prepare({code}, job.stop);
      const auto picture = snapshots.snapshot(code);
      return picture ? HTMLExporter::pictureElement(picture->png, picture->width, code) : "";
    };
    std::size_t bytes = 0;
    const auto page = [&](const ExportSink& sink) {
      HTMLExporter::writePage(
          job.selection, AttachmentManager(job.session.application().storage()),
          job.session.clock(),
          [&](std::string_view piece) {
            bytes += piece.size();
            sink(piece);
          },
          hasDiagrams_ ? DiagramElement(element) : nullptr);
    };
    if (job.file)
      job.file->write(job.session.files(), page);
    else
      page([&](std::string_view piece) { job.session.print(piece); });
    return bytes;
  }

  [[nodiscard]] std::size_t markdown(const Job& job) const {
    const StoreContext& storage = job.session.application().storage();
    const auto result = job.file ? MarkdownExporter::exportTo(job.file->path(), job.selection,
                                                              storage, job.file->replacement())
                                 : MarkdownExporter::write(
                                       job.selection, storage,
                                       [&](std::string_view piece) { job.session.print(piece); });
    if (result.missing > 0)
      job.session.say(fmt::format("有 {} 个附件读不出，文档里标明了。", result.missing));
    return result.bytes;
  }

  MemoSelection selection_{MemoSelection::Default::today};
  std::optional<std::string> output_;
  bool hasDiagrams_ = false;
};

}  // namespace

std::unique_ptr<Command> makeExportCommand() {
  return std::make_unique<ExportCommand>();
}

}  // namespace nomely
