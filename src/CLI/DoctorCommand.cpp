#include <fmt/format.h>

#include "CLI/Command.h"
#include "CLI/Progress.h"
#include "Core/Lifecycle/RootInspector.h"

namespace nomely {
namespace {

Json jsonOf(const std::vector<RootInspector::Unreadable>& all, const char* pathKey) {
  Json json = Json::array();
  for (const auto& [path, reason] : all)
    json.push_back({{pathKey, path.string()}, {"reason", reason}});
  return json;
}

Json jsonOf(const RootInspector::Report& report, const std::filesystem::path& root) {
  Json json{{"root", root.string()},
            {"days", report.days},
            {"memos", report.memos},
            {"unreadableMemos", jsonOf(report.unreadableMemos, "file")},
            {"unreadableVersions", jsonOf(report.unreadableVersions, "file")},
            {"unreadableTrash", jsonOf(report.unreadableTrash, "folder")},
            {"missingAttachments", Json::array()},
            {"staleTemporaryFiles", Json::array()},
            {"unreadableFolders", Json::array()}};
  for (const auto& missing : report.missingAttachments) {
    Json item{{"date", missing.date.string()}, {"seqNumber", missing.seqNumber}};
    if (missing.memoId) item["memoId"] = *missing.memoId;
    item["attachment"] = missing.filename;
    json["missingAttachments"].push_back(std::move(item));
  }
  for (const auto& file : report.staleTemporaryFiles)
    json["staleTemporaryFiles"].push_back(file.string());
  for (const auto& folder : report.unreadableFolders)
    json["unreadableFolders"].push_back(folder.string());
  return json;
}

class DoctorCommand final : public Command {
 public:
  void declare(CLI::App&) override {}

  void run(Session& session) override {
    const std::filesystem::path& root = session.application().paths().rootURL;
    RootInspector::Report report;
    session.host([&](const std::stop_token& stop) {
      Progress progress(session, "检查");
      report = RootInspector(session.dayStore())
                   .inspect([&](double share) { progress.show(share); }, stop);
    });
    if (session.isJson()) return session.printJson(jsonOf(report, root));
    if (!session.dayStore().context().files.exists(root)) session.say("数据目录还不存在。");
    session.print(textOf(report, root, session.style()));
  }

 private:
  static std::string textOf(const RootInspector::Report& report, const std::filesystem::path& root,
                            const Style& style) {
    std::string text = fmt::format("{}：{} 天，{} 条笔记可读\n", Terminal::printable(root.string()),
                                   report.days, report.memos);
    text += lines(style, "读不出的笔记", report.unreadableMemos) +
            lines(style, "读不出的历史版本", report.unreadableVersions) +
            lines(style, "读不出的回收站文件夹", report.unreadableTrash);
    for (const auto& missing : report.missingAttachments)
      text += line(
          style, "缺失的附件",
          fmt::format("{}/{}：{}", missing.date.string(), missing.seqNumber, missing.filename));
    for (const auto& folder : report.unreadableFolders)
      text += line(style, "读不出的文件夹", folder.string());
    for (const auto& file : report.staleTemporaryFiles)
      text += line(style, "残留的临时文件", file.string());
    if (!report.staleTemporaryFiles.empty()) text += "临时文件会在下次写入同一文件夹时自动清理。\n";
    if (report.isClean()) text += "一切正常。\n";
    return text;
  }

  static std::string lines(const Style& style, std::string_view kind,
                           const std::vector<RootInspector::Unreadable>& all) {
    std::string text;
    for (const auto& [path, reason] : all) text += line(style, kind, path.string() + "：" + reason);
    return text;
  }

  static std::string line(const Style& style, std::string_view kind, std::string_view what) {
    return fmt::format("{}  {}\n", style.warning(kind), Terminal::printable(what));
  }
};

}  // namespace

std::unique_ptr<Command> makeDoctorCommand() {
  return std::make_unique<DoctorCommand>();
}

}  // namespace nomely
