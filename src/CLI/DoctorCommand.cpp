#include <algorithm>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "CLI/Command.h"
#include "CLI/DoctorReport.h"
#include "CLI/EditorDraft.h"
#include "CLI/Progress.h"
#include "Core/Lifecycle/RootInspector.h"

namespace nomely {
namespace {

class DoctorCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add({.name = "--fix",
                .help = "修复换行、BOM 和缺少的文件头，先逐条列出并询问，原文件会留着",
                .target = &fix_});
    syntax.examples = {"nomely doctor", "nomely doctor --fix"};
  }

  void run(Session& session) override {
    session.doWithoutRoot();
    RootInspector::Report report = inspect(session);
    if (fix_ && mend(report, session)) report = inspect(session);
    const DoctorReport told{std::move(report), session.application().paths().rootURL,
                            EditorDraft::leftBehind(session), bot(session)};
    if (session.isJson()) return session.printJson(told.json());
    session.tellOfMissingRoot();
    session.print(told.text(session.style()));
  }

 private:
  static DoctorReport::Bot bot(Session& session) {
    const auto config = session.settings().withoutSecrets<FeishuConfig>();
    return {.isOpenToAll = config.enabled && config.allowedOpenID.empty(),
            .inbox = FeishuInbox::counts(session.application().storage())};
  }

  static RootInspector::Report inspect(Session& session) {
    RootInspector::Report report;
    session.host([&](const std::stop_token& stop) {
      Progress progress(session, "检查");
      report =
          RootInspector(session.memos()).inspect([&](double share) { progress.show(share); }, stop);
    });
    return report;
  }

  // Whether anything was mended.
  static bool mend(const RootInspector::Report& report, Session& session) {
    std::vector<RootInspector::UnreadableMemo> found = report.unreadableMemos;
    std::erase_if(found, [](const auto& memo) { return memo.mends.empty(); });
    if (found.empty()) {
      session.say("没有可以修复的笔记。");
      return false;
    }
    for (const auto& memo : found)
      session.say(fmt::format("{}：{}", Terminal::printable(memo.path.string()),
                              fmt::join(memo.mends, "，")));
    if (!session.confirm(
            fmt::format("修复以上 {} 条笔记？原文件会留在各条的历史里。", found.size())))
      return false;
    std::size_t mended = 0;
    for (const auto& memo : found)
      if (session.memos().mend(memo.date, memo.seqNumber)) ++mended;
    session.say(fmt::format("已修复 {} 条笔记。", mended));
    return mended > 0;
  }

  bool fix_ = false;
};

}  // namespace

std::unique_ptr<Command> makeDoctorCommand() {
  return std::make_unique<DoctorCommand>();
}

}  // namespace nomely
