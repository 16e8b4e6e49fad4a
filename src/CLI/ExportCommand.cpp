#include <filesystem>

#include <fmt/format.h>

#include "CLI/ActionCommand.h"
#include "CLI/MemoSelection.h"
#include "CLI/Progress.h"
#include "CLI/UsageError.h"
#include "Export/HTMLExporter.h"

namespace nomely {
namespace {

class ExportCommand final : public ActionCommand {
 public:
  void declare(Syntax& syntax) override {
    Syntax& page =
        add(syntax, "html", "一个自带图片的网页", [this](Session& session) { html(session); });
    selection_.declare(page);
    page.add({.name = "-o,--output",
              .help = "写到哪个文件，- 为标准输出，默认为当前文件夹里的 Nomely-导出-日期.html",
              .target = &output_,
              .value = "FILE",
              .kind = WordKind::file});
    page.examples = {"nomely export html --all -o 日记.html"};
  }

 private:
  void html(Session& session) const {
    const bool toOutput = output_ == "-";
    if (toOutput && session.isJson()) throw UsageError("-o - 不能和 --json 一起用");
    // Memos are read twice, so that no list of them has to be held.
    std::size_t count = 0;
    session.host([&](const std::stop_token& stop) {
      selection_.forEach(session, stop, [&](const MemoEntry&) { ++count; });
    });
    if (!toOutput) return writeFile(session, count);
    session.host([&](const std::stop_token& stop) {
      write(session, count, stop, [&](std::string_view piece) { session.print(piece); });
    });
  }

  void write(Session& session, std::size_t count, const std::stop_token& stop,
             const HTMLExporter::Sink& sink) const {
    Progress progress(session, "导出");
    std::size_t done = 0;
    const HTMLExporter::Selection chosen{
        count, [&](const auto& visit) {
          selection_.forEach(session, stop, [&](const MemoEntry& entry) {
            visit(entry);
            ++done;
            progress.show(static_cast<double>(done) / static_cast<double>(count));
          });
        }};
    HTMLExporter::writePage(chosen, AttachmentManager(session.application().storage()),
                            session.clock(), sink);
    // The page says how many there are.
    if (done != count) throw Error("export.changed", "导出期间笔记有增减，没有完成。请再试一次");
  }

  void writeFile(Session& session, std::size_t count) const {
    const std::filesystem::path file = std::filesystem::absolute(
        output_.value_or(fmt::format("Nomely-导出-{}.html", session.clock().today().string())));
    const FileManager& files = session.application().storage().files;
    const bool isReplacing = files.exists(file);
    if (isReplacing && !session.confirm(fmt::format("文件已存在：{}。要替换它吗？", file.string())))
      throw Error("export.cancelled", "没有导出");
    std::size_t bytes = 0;
    session.host([&](const std::stop_token& stop) {
      const FileManager::Producer page = [&](const FileManager::Sink& sink) {
        write(session, count, stop, [&](std::string_view piece) {
          bytes += piece.size();
          sink(piece);
        });
      };
      if (isReplacing)
        files.writeAtomically(file, page);
      else if (!files.createAtomically(file, page))
        throw Error("export.exists", fmt::format("文件已存在：{}", file.string()));
    });
    if (session.isJson())
      return session.printJson({{"file", file.string()}, {"memos", count}, {"bytes", bytes}});
    session.say(fmt::format("已导出 {} 条笔记，{} 字节：{}", count, bytes, file.string()));
  }

  MemoSelection selection_{MemoSelection::Default::today};
  std::optional<std::string> output_;
};

}  // namespace

std::unique_ptr<Command> makeExportCommand() {
  return std::make_unique<ExportCommand>();
}

}  // namespace nomely
