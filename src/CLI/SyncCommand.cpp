#include <fmt/format.h>

#include "CLI/ActionCommand.h"
#include "CLI/Programs.h"
#include "CLI/SyncReport.h"
#include "CLI/SyncSteps.h"

namespace nomely {
namespace {

using Engine = SyncedFolder::Engine;

class SyncCommand final : public ActionCommand {
 public:
  void declare(Syntax& syntax) override {
    addDefault(syntax, "status", "数据目录由什么同步，还缺什么设置", status);
    add(syntax, "init", "写好同步程序的忽略文件，并说出接下来的步骤",
        [this](Session& session) { init(session); })
        .add({.name = "ENGINE",
              .help = "同步程序",
              .target = &engine_,
              .choices = {"syncthing", "git"},
              .isRequired = true});
    syntax.examples = {"nomely sync", "nomely sync init syncthing", "nomely sync init git"};
  }

 private:
  static void status(Session& session);
  void init(Session& session) const;

  std::string engine_;
};

void SyncCommand::status(Session& session) {
  session.tellOfMissingRoot();
  const SyncReport report = SyncReport::of(session);
  const std::string root = session.application().paths().rootURL.string();
  if (session.isJson()) {
    Json json{{"root", root}};
    json.update(report.json());
    return session.printJson(json);
  }
  const Style style = session.style();
  ReportLines lines(style);
  for (const auto& [engine, folder] : report.places)
    lines.say(fmt::format("{} 由 {} 同步，文件夹是 {}", root, SyncReport::nameOf(engine),
                          folder.string()));
  if (report.places.empty())
    lines.say("没有看到同步程序。要在两台电脑上用同一本日记：nomely sync init syncthing，或 git。");
  else if (report.gaps.empty())
    lines.say("同步设置完整。");
  report.addGaps(lines);
  if (!report.strays.empty())
    lines.say(
        fmt::format("同步留下 {} 个文件，其中 {} 个可以合并。查看：nomely doctor；"
                    "合并：nomely doctor --fix",
                    report.strays.size(), report.settled()));
  session.print(lines.text());
}

// Where there is none yet the settings of a clone have no place.
void makeWorkingTree(const SyncedFolder& synced, const std::filesystem::path& root,
                     Session& session) {
  if (synced.isBy(Engine::git)) return;
  const auto git = Programs::find("git", session.environment());
  if (!git) throw Error("sync.noGit", "没有装 git。先安装：sudo apt install git");
  DiskPaths{root}.createRoot(session.files());
  if (Programs::run({git->string(), "init", "--quiet", root.string()}) != 0)
    throw Error("sync.noGit", fmt::format("git init 没有成功：{}", root.string()));
}

void SyncCommand::init(Session& session) const {
  const bool isGit = engine_ == SyncReport::codeOf(Engine::git);
  const Engine engine = isGit ? Engine::git : Engine::syncthing;
  const StoreContext& storage = session.application().storage();
  const bool isNewRoot = !session.hasRoot();
  if (isGit) makeWorkingTree(SyncedFolder(storage), storage.gate.root(), session);
  const std::vector<SyncedFolder::Gap> filled = SyncedFolder(storage).fill(engine);
  const std::vector<std::string> steps = SyncSteps::of(engine, storage.paths.rootURL);
  if (session.isJson()) {
    Json files = Json::array();
    for (const auto& [file, added] : filled)
      files.push_back({{"file", file.string()}, {"added", added}});
    return session.printJson({{"engine", engine_}, {"files", std::move(files)}, {"steps", steps}});
  }
  if (isNewRoot) session.tellOfNewRoot();
  for (const auto& [file, added] : filled)
    session.say(
        fmt::format("已写好 {}（加了 {} 行）", Terminal::printable(file.string()), added.size()));
  if (filled.empty()) session.say("忽略文件已经完整。");
  session.print("接下来：\n");
  std::size_t number = 0;
  for (const std::string& step : steps)
    session.print(fmt::format("{}. {}\n", ++number, Terminal::printable(step)));
}

}  // namespace

std::unique_ptr<Command> makeSyncCommand() {
  return std::make_unique<SyncCommand>();
}

}  // namespace nomely
