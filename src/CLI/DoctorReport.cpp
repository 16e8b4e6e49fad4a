#include "CLI/DoctorReport.h"

#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "App/BotAdvice.h"
#include "CLI/ReportLines.h"

namespace nomely {
namespace {

using Paths = std::vector<std::filesystem::path>;

template <typename Items>
Json jsonOf(const Items& all, const char* pathKey) {
  Json json = Json::array();
  for (const RootInspector::Unreadable& item : all)
    json.push_back({{pathKey, item.path.string()}, {"reason", item.reason}});
  return json;
}

Json jsonOf(const Paths& paths) {
  Json json = Json::array();
  for (const auto& path : paths) json.push_back(path.string());
  return json;
}

using Lines = ReportLines;

void add(Lines& lines, std::string_view kind, const RootInspector::Unreadable& item) {
  lines.add(kind, fmt::format("{}：{}", item.path.string(), item.reason));
}

void addNotes(Lines& lines, const RootInspector::Report& report) {
  bool canMend = false;
  for (const auto& memo : report.unreadableMemos) {
    add(lines, "读不出的笔记", memo);
    canMend = canMend || !memo.mends.empty();
  }
  if (canMend) lines.say("其中有的可以修复，原文件会留着：nomely doctor --fix");
  for (const auto& [memoId, places] : report.sharedIdentities) {
    std::vector<std::string> names;
    names.reserve(places.size());
    for (const auto& place : places) names.push_back(place.string());
    lines.add("重复的标识", fmt::format("{}：{}。永久删除其中一条会带走另一条的历史", memoId,
                                        fmt::join(names, "、")));
  }
  for (const auto& missing : report.missingAttachments)
    lines.add("缺失的附件",
              fmt::format("{}/{}：{}", missing.date.string(), missing.seqNumber, missing.filename));
  lines.add("无主的附件", report.orphanedAttachments);
  if (!report.orphanedAttachments.empty())
    lines.say("没有笔记用到它们。挂到一条笔记上：nomely attach REF 文件；不要了就删除。");
  lines.add("没有导入的旧日记", report.leftOutTexts);
  if (!report.leftOutTexts.empty())
    lines.say(
        "那些天的文件夹原来就有，旧文件原样留着。要用的文字：nomely add --date 日期 - < 文件。");
}

void addHistory(Lines& lines, const RootInspector::Report& report) {
  for (const auto& version : report.unreadableVersions) add(lines, "读不出的历史版本", version);
  for (const auto& [memoId, snapshots] : report.strandedHistories)
    lines.add("没有笔记的历史", fmt::format("{}：{} 个版本。查看与恢复：nomely history {}", memoId,
                                            snapshots, memoId));
  for (const auto& folder : report.unreadableTrash) add(lines, "读不出的回收站文件夹", folder);
}

void addBot(Lines& lines, const DoctorReport::Bot& bot) {
  if (bot.isOpenToAll) lines.say(BotAdvice::openToAll);
  if (bot.inbox.waiting > 0)
    lines.say(
        fmt::format("{} 条发给机器人的消息还没写成笔记，nomely run 会再试。", bot.inbox.waiting));
  if (bot.inbox.aside > 0)
    lines.say(fmt::format("{} 条发给机器人的消息没能写成笔记，留在 .meta/feishu-inbox/aside。",
                          bot.inbox.aside));
}

}  // namespace

Json DoctorReport::json() const {
  const RootInspector::Report& report = found;
  Json json{{"root", root.string()},
            {"days", report.days},
            {"memos", report.memos},
            {"foreignMemos", report.foreignMemos},
            {"unreadableMemos", Json::array()},
            {"unreadableVersions", jsonOf(report.unreadableVersions, "file")},
            {"unreadableTrash", jsonOf(report.unreadableTrash, "folder")},
            {"missingAttachments", Json::array()},
            {"orphanedAttachments", jsonOf(report.orphanedAttachments)},
            {"leftOutTexts", jsonOf(report.leftOutTexts)},
            {"sharedIdentities", Json::array()},
            {"strandedHistories", Json::array()},
            {"damagedDrafts", jsonOf(report.damagedDrafts)},
            {"danglingLinks", jsonOf(report.danglingLinks)},
            {"staleTemporaryFiles", jsonOf(report.staleTemporaryFiles)},
            {"unreadableFolders", jsonOf(report.unreadableFolders)},
            {"drafts", jsonOf(drafts)},
            {"bot",
             {{"openToAll", bot.isOpenToAll},
              {"waiting", bot.inbox.waiting},
              {"keptAside", bot.inbox.aside}}},
            {"keeping", keeping.json()},
            {"sync", sync.json()}};
  for (const auto& memo : report.unreadableMemos)
    json["unreadableMemos"].push_back(
        {{"file", memo.path.string()}, {"reason", memo.reason}, {"mends", memo.mends}});
  for (const auto& missing : report.missingAttachments) {
    Json item{{"date", missing.date.string()}, {"seqNumber", missing.seqNumber}};
    if (missing.memoId) item["memoId"] = *missing.memoId;
    item["attachment"] = missing.filename;
    json["missingAttachments"].push_back(std::move(item));
  }
  for (const auto& [memoId, places] : report.sharedIdentities)
    json["sharedIdentities"].push_back({{"memoId", memoId}, {"places", jsonOf(places)}});
  for (const auto& [memoId, snapshots] : report.strandedHistories)
    json["strandedHistories"].push_back({{"memoId", memoId}, {"snapshots", snapshots}});
  return json;
}

std::string DoctorReport::text(const Style& style) const {
  const RootInspector::Report& report = found;
  Lines lines(style);
  addNotes(lines, report);
  addHistory(lines, report);
  sync.addStrays(lines);
  if (sync.settled() > 0) lines.say("其中有的可以合并，两边的内容都会留着：nomely doctor --fix");
  sync.addGaps(lines);
  lines.add("读不出的草稿", report.damagedDrafts);
  lines.add("失效的链接", report.danglingLinks);
  lines.add("读不出的文件夹", report.unreadableFolders);
  lines.add("残留的临时文件", report.staleTemporaryFiles);
  if (!report.staleTemporaryFiles.empty()) lines.say("临时文件会在下次写入同一文件夹时自动清理。");
  if (report.foreignMemos > 0)
    lines.say(fmt::format("{} 条笔记的文件头里有 Nomely 不用的内容，首次改写前会留下原文件。",
                          report.foreignMemos));
  lines.add("没有存成笔记的文字", drafts);
  if (!drafts.empty())
    lines.say("这些是编辑器意外结束时留下的。存成笔记：nomely add - < 文件；不要了就删除它。");
  addBot(lines, bot);
  keeping.addTo(lines);
  if (report.isClean() && drafts.empty() && bot.isFine() && keeping.isFine() && sync.isFine())
    lines.say("一切正常。");
  keeping.addAge(lines);
  return fmt::format("{}：{} 天，{} 条笔记可读\n", Terminal::printable(root.string()), report.days,
                     report.memos) +
         lines.text();
}

}  // namespace nomely
