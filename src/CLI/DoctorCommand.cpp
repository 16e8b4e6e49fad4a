#include <algorithm>
#include <condition_variable>
#include <mutex>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "CLI/Command.h"
#include "CLI/DoctorReport.h"
#include "CLI/EditorDraft.h"
#include "CLI/Progress.h"
#include "Core/Lifecycle/RootInspector.h"
#include "Core/Lifecycle/Settling/RootSettling.h"
#include "Platform/Cancellation.h"

namespace nomely {
namespace {

class DoctorCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add({.name = "--fix",
                .help = "合并同步留下的文件，修复换行、BOM 和缺少的文件头；先逐条列出并询问，"
                        "两边的内容和原文件都会留着",
                .target = &fix_});
    syntax.examples = {"nomely doctor", "nomely doctor --fix"};
  }

  void run(Session& session) override {
    session.doWithoutRoot();
    SyncReport sync = SyncReport::of(session);
    const bool hasSettled = fix_ && settle(sync, session);
    if (hasSettled) sync = SyncReport::of(session);
    RootInspector::Report report = inspect(session);
    if (fix_ && mend(report, hasSettled, session)) report = inspect(session);
    leaveOut(sync.strays, report);
    const DoctorReport told{std::move(report),
                            session.application().paths().rootURL,
                            EditorDraft::leftBehind(session),
                            bot(session),
                            KeepingReport::of(session),
                            std::move(sync)};
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

  // What is told as a stray need not be told again for what it looks like.
  static void leaveOut(const std::vector<Stray>& strays, RootInspector::Report& report) {
    const auto isStray = [&](const std::filesystem::path& path) {
      return std::ranges::find(strays, path, &Stray::path) != strays.end();
    };
    std::erase_if(report.orphanedAttachments, isStray);
    std::erase_if(report.unreadableMemos, [&](const auto& memo) { return isStray(memo.path); });
  }

  // Whether anything was settled.
  static bool settle(const SyncReport& sync, Session& session) {
    if (sync.settled() == 0) return false;
    for (const Stray& stray : sync.strays)
      if (stray.canBeSettled)
        session.say(Terminal::printable(stray.path.string() + "：" + stray.reason));
    if (!session.confirm(fmt::format("合并以上 {} 个文件？两边的内容都会留着。", sync.settled())))
      return false;
    session.host([&](const std::stop_token& stop) { settleAll(session, stop); });
    return true;
  }

  // The engine may have written some a moment ago; it is given time to go on.
  static void settleAll(Session& session, const std::stop_token& stop) {
    constexpr int mostPasses = 5;
    std::size_t notes = 0;
    for (int pass = 1;; ++pass) {
      const RootSettling settling(session.memos());
      const SettlingResult result = settling.run(stop, settling.histories());
      for (const auto& [path, outcome] : result.told)
        session.say(Terminal::printable(path.string() + "：" + outcome));
      notes += result.notes;
      if (!result.isWaiting || pass == mostPasses) break;
      std::mutex mutex;
      std::unique_lock lock(mutex);
      std::condition_variable_any never;
      never.wait_for(lock, stop, RootSettling::quietInterval, [] { return false; });
      throwIfStopped(stop);
    }
    session.say(fmt::format("已合并另一台电脑上的 {} 条笔记。", notes));
  }

  // Whether anything was mended.
  static bool mend(const RootInspector::Report& report, bool hasSettled, Session& session) {
    std::vector<RootInspector::UnreadableMemo> found = report.unreadableMemos;
    std::erase_if(found, [](const auto& memo) { return memo.mends.empty(); });
    if (found.empty()) {
      if (!hasSettled) session.say("没有可以修复的笔记。");
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
