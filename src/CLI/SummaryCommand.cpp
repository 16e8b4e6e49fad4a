#include <algorithm>

#include <fmt/format.h>

#include "AI/Summaries/AIMonthlySummarizer.h"
#include "CLI/ActionCommand.h"
#include "CLI/Arguments.h"
#include "CLI/ConfiguredAI.h"
#include "CLI/MemoOutput.h"
#include "CLI/UsageError.h"
#include "CLI/Waiting.h"
#include "Platform/Network/HttpTarget.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

using Question = AIMonthlySummarizer::Question;

// The hosts to which a user has allowed notes to go.
constexpr std::string_view allowedHostsKey = "aiAllowedHosts";

class SummaryCommand final : public ActionCommand {
 public:
  void declare(Syntax& syntax) override {
    Syntax& month = add(syntax, "month", "一个月的总结", [this](Session& session) {
      const std::chrono::year_month chosen = Arguments::month(time_, session.clock());
      const AIMonthlySummarizer::Month which{
          static_cast<int>(chosen.year()), static_cast<int>(static_cast<unsigned>(chosen.month()))};
      summarize(session,
                {.question =
                     [=, this](const AIMonthlySummarizer& summarizer, const auto& stop) {
                       return summarizer.monthQuestion(which, style(), stop);
                     },
                 .save =
                     [=, this](const AIMonthlySummarizer& summarizer, const auto& content) {
                       return summarizer.saveSummary(content, which, style());
                     }});
    });
    addArguments(month, {.name = "MONTH",
                         .help = "YYYY-MM",
                         .target = &time_,
                         .kind = WordKind::month,
                         .isRequired = true});
    Syntax& year = add(syntax, "year", "一年的总结", [this](Session& session) {
      const int which = static_cast<int>(Arguments::integer(time_, "年份"));
      summarize(session,
                {.question =
                     [=, this](const AIMonthlySummarizer& summarizer, const auto& stop) {
                       return summarizer.yearQuestion(which, style(), stop);
                     },
                 .save =
                     [=, this](const AIMonthlySummarizer& summarizer, const auto& content) {
                       return summarizer.saveAnnualSummary(content, which, style());
                     }});
    });
    addArguments(year, {.name = "YEAR", .help = "YYYY", .target = &time_, .isRequired = true});
    syntax.examples = {"nomely summary month 2026-03 --style warm",
                       "nomely summary year 2026 --exclude 私密 --dry-run"};
  }

 private:
  // What differs between months and years.
  struct Kind {
    std::function<Question(const AIMonthlySummarizer&, const std::stop_token&)> question;
    std::function<Memo(const AIMonthlySummarizer&, const std::string& content)> save;
  };

  void addArguments(Syntax& syntax, Argument time) {
    std::vector<std::string> names;
    std::string help = "视角，默认 diary：";
    for (const SummaryStyleInfo& info : SummaryStyleInfo::all()) {
      help += fmt::format("{}{} {}", names.empty() ? "" : "、", info.name, info.titleSuffix);
      names.emplace_back(info.name);
    }
    syntax.add(std::move(time));
    syntax.add({.name = "--style",
                .help = help + "；一年的只有前三种",
                .target = &style_,
                .value = "S",
                .choices = names});
    syntax.add({.name = "--exclude",
                .help = "带这个标签的笔记不发送，可以写几次",
                .target = &excluded_,
                .value = "TAG",
                .kind = WordKind::tag});
    syntax.add({.name = "--dry-run",
                .help = "只显示会发送什么，不发送，不需要密钥",
                .target = &isDryRun_});
  }

  [[nodiscard]] SummaryStyle style() const {
    const auto all = SummaryStyleInfo::all();
    return std::ranges::find(all, style_, &SummaryStyleInfo::name)->style;
  }

  void summarize(Session& session, const Kind& kind) const {
    session.tellOfMissingRoot();
    const AIMonthlySummarizer summarizer(session.memos(), Arguments::tags(excluded_));
    Question question;
    session.host([&](const std::stop_token& stop) { question = kind.question(summarizer, stop); });
    if (isDryRun_) return print(question, session);
    const AIConfig config = configuredAI(session);
    if (!mayLeave(question, config, session)) return;

    std::optional<Memo> memo;
    bool isCutOff = false;
    session.host([&](const std::stop_token& stop) {
      AIService service(config, session.http());
      const Waiting waiting(
          session, fmt::format("正在等 {} 的回复", AIConfig::displayName(config.provider)));
      const AIService::Reply reply = AIMonthlySummarizer::ask(question, service, stop);
      isCutOff = reply.isCutOff;
      memo = kind.save(summarizer, reply.text);
    });
    if (isCutOff) session.say(fmt::format("{}。", AIService::cutOffNotice));
    MemoOutput::printStored({session.clock().today(), *memo}, session);
  }

  static void print(const Question& question, Session& session) {
    if (session.isJson())
      return session.printJson({{"system", question.prompt.system},
                                {"user", question.prompt.user},
                                {"notes", question.notes}});
    session.print(fmt::format("{}\n\n{}\n", Terminal::printable(question.prompt.system),
                              Terminal::printable(question.prompt.user)));
    session.flush();
    session.say(fmt::format("共 {} 条笔记，{} 个字，没有发送。", question.notes,
                            graphemeCount(question.prompt.user)));
  }

  // Tells where the notes are to go, and asks once for each vendor.
  static bool mayLeave(const Question& question, const AIConfig& config, Session& session) {
    const std::string host = HttpTarget::of(config.effectiveBaseURL()).host;
    const std::string what = fmt::format("{} 条笔记（{} 个字）会发给 {}（{}）。", question.notes,
                                         graphemeCount(question.prompt.user), host,
                                         AIConfig::displayName(config.provider));
    UserDefaults& defaults = session.application().userDefaults();
    std::vector<std::string> allowed =
        defaults.strings(allowedHostsKey).value_or(std::vector<std::string>());
    if (session.options.yes || std::ranges::find(allowed, host) != allowed.end()) {
      session.say(what);
      return true;
    }
    if (!session.confirm(what + "今后发给它不再询问，可以吗？")) return false;
    allowed.push_back(host);
    defaults.setStrings(allowedHostsKey, allowed);
    return true;
  }

  std::string time_;
  std::string style_ = "diary";
  std::vector<std::string> excluded_;
  bool isDryRun_ = false;
};

}  // namespace

std::unique_ptr<Command> makeSummaryCommand() {
  return std::make_unique<SummaryCommand>();
}

}  // namespace nomely
