#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "Browser/MonthMemos.h"
#include "Browser/MonthOverviewStore.h"
#include "CLI/Arguments.h"
#include "CLI/Command.h"
#include "CLI/PagedOutput.h"

namespace nomely {
namespace {

constexpr int daysOfAWeek = 7;

Json jsonOf(const TagThread& thread) {
  Json entries = Json::array();
  for (const ThreadEntry& entry : thread.entries)
    entries.push_back({{"id", entry.id},
                       {"date", entry.date.string()},
                       {"day", entry.day},
                       {"time", entry.time},
                       {"seqNumber", entry.seqNumber},
                       {"preview", entry.preview}});
  return {{"tag", thread.tag},
          {"displayName", thread.displayName},
          {"days", thread.days},
          {"firstDay", thread.firstDay},
          {"lastDay", thread.lastDay},
          {"count", thread.count},
          {"entries", std::move(entries)}};
}

Json jsonOf(const OverviewAnomaly& anomaly) {
  const bool isDuplicate = anomaly.kind == OverviewAnomaly::Kind::duplicate;
  Json json{{"id", anomaly.id.string()},
            {"kind", isDuplicate ? "duplicate" : "dateMismatch"},
            {"day", anomaly.day}};
  if (anomaly.date) json["date"] = anomaly.date->string();
  json["time"] = anomaly.time;
  json["seqNumber"] = anomaly.seqNumber;
  json["label"] = anomaly.label;
  json["preview"] = anomaly.preview;
  return json;
}

Json jsonOf(const MonthOverview& overview) {
  Json counts = Json::object(), threads = Json::array(), anomalies = Json::array();
  for (const auto& [day, count] : overview.dailyCounts) counts[std::to_string(day)] = count;
  for (const TagThread& thread : overview.threads) threads.push_back(jsonOf(thread));
  for (const OverviewAnomaly& anomaly : overview.anomalies) anomalies.push_back(jsonOf(anomaly));
  return {{"year", overview.year},
          {"month", overview.month},
          {"dailyCounts", std::move(counts)},
          {"totalMemos", overview.totalMemos},
          {"totalDays", overview.totalDays},
          {"totalWords", overview.totalWords},
          {"totalAttachments", overview.totalAttachments},
          {"audioAttachments", overview.audioAttachments},
          {"threads", std::move(threads)},
          {"anomalies", std::move(anomalies)}};
}

// A month as a calendar, each day with a mark that is the darker the more was written.
std::string densityChart(const MonthOverview& overview, std::chrono::year_month month,
                         const Style& style) {
  constexpr std::array<std::string_view, 5> shades{"··", "░░", "▒▒", "▓▓", "██"};
  std::size_t most = 1;
  for (const auto& [day, count] : overview.dailyCounts) most = std::max(most, count);

  std::string chart = "   一     二     三     四     五     六     日\n";
  const std::chrono::sys_days first = month / 1;
  const auto blanks = std::chrono::weekday(first).iso_encoding() - 1;
  chart += std::string(blanks * 7, ' ');
  const auto last = static_cast<unsigned>((month / std::chrono::last).day());
  for (unsigned day = 1; day <= last; ++day) {
    const auto found = overview.dailyCounts.find(day);
    const std::size_t count = found == overview.dailyCounts.end() ? 0 : found->second;
    // Only days with nothing have the lightest mark.
    const std::size_t shade = (count * (shades.size() - 1) + most - 1) / most;
    const std::string mark(shades[shade]);
    chart += fmt::format("{:4} {}", day, count == 0 ? style.dim(mark) : style.tag(mark));
    chart += (blanks + day) % daysOfAWeek == 0 && day < last ? "\n" : "";
  }
  return chart + "\n";
}

std::string textOf(const TagThread& thread, const Style& style) {
  std::string text = fmt::format("{} {} 条，{} 天（{} 日至 {} 日）\n",
                                 style.tag("#" + Terminal::printable(thread.tag)), thread.count,
                                 thread.days.size(), thread.firstDay, thread.lastDay);
  for (const ThreadEntry& entry : thread.entries)
    text += fmt::format(
        "  {} {}\n",
        style.dim(fmt::format("{:2} 日 {}", entry.day, Terminal::printable(entry.time))),
        Terminal::printable(entry.preview));
  return text;
}

std::string textOf(const OverviewAnomaly& anomaly, const Style& style) {
  return fmt::format("  {}/{} {}\n    {}\n", anomaly.date ? anomaly.date->string() : "",
                     anomaly.seqNumber, style.warning(anomaly.label),
                     style.dim(Terminal::printable(anomaly.preview)));
}

std::string textOf(const MonthOverview& overview, std::chrono::year_month month,
                   const Style& style) {
  std::string text = style.bold(fmt::format("{}年{}月", overview.year, overview.month)) + "\n";
  text += fmt::format("{} 条笔记，{} 天，{} 字，{} 个附件（其中录音 {} 段）\n\n",
                      overview.totalMemos, overview.totalDays, overview.totalWords,
                      overview.totalAttachments, overview.audioAttachments);
  text += densityChart(overview, month, style);
  if (!overview.threads.empty()) text += "\n" + style.bold("线索") + "\n";
  for (const TagThread& thread : overview.threads) text += textOf(thread, style);
  if (!overview.anomalies.empty()) text += "\n" + style.bold("可能有误") + "\n";
  for (const OverviewAnomaly& anomaly : overview.anomalies) text += textOf(anomaly, style);
  return text;
}

class MonthCommand final : public Command {
 public:
  void declare(Syntax& syntax) override {
    syntax.add({.name = "MONTH",
                .help = "月份，如 2026-03；默认本月",
                .target = &month_,
                .kind = WordKind::month});
    syntax.examples = {"nomely month 2026-03"};
  }

  void run(Session& session) override {
    const std::chrono::year_month month = Arguments::month(month_, session.clock());
    session.tellOfMissingRoot();
    std::vector<MemoEntry> memos;
    session.host([&](const std::stop_token& stop) {
      memos = memosOfMonth(month, session.dayStore(), stop);
    });
    const MonthOverview overview = MonthOverviewStore::compute(
        static_cast<int>(month.year()), static_cast<unsigned>(month.month()), memos);
    if (session.isJson()) return session.printJson(jsonOf(overview));
    const PagedOutput pager(session);
    session.print(textOf(overview, month, session.style()));
  }

 private:
  std::string month_;
};

}  // namespace

std::unique_ptr<Command> makeMonthCommand() {
  return std::make_unique<MonthCommand>();
}

}  // namespace nomely
