#include "AI/Summaries/AIMonthlySummarizer.h"

#include <algorithm>

#include <fmt/format.h>

#include "AI/Summaries/SummarizerError.h"
#include "Core/Extensions/TagNames.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Core/Query/RootScan.h"
#include "Platform/Text/Unicode.h"
#include "Platform/Time/ChineseDates.h"

namespace nomely {
namespace {

using Kind = SummarizerError::Kind;

constexpr std::int64_t longestReply = 8192;  // tokens

Day firstDay(int year, int month) {
  const auto day = month < 1 ? std::nullopt : Day::from(year, static_cast<unsigned>(month), 1);
  if (!day) throw SummarizerError(Kind::invalidDate);
  return *day;
}

Day lastDay(Day first) {
  return Day(
      std::chrono::sys_days(first.civil().year() / first.civil().month() / std::chrono::last));
}

std::string monthTag(std::chrono::year_month month) {
  return fmt::format("{}/月度总结/{:04}-{:02}", TagNames::personalColumnRoot,
                     static_cast<int>(month.year()), static_cast<unsigned>(month.month()));
}

// "2026年3月"
std::string monthLabel(Day first) {
  return ChineseDates("yyyy年M月").format(first);
}

// The body as it stands but for the text from before an AI action.
std::string shownBody(const std::string& body) {
  return MemoTextUtilities::hasOriginalComment(body) ? MemoTextUtilities::stripOriginalComment(body)
                                                     : body;
}

std::string comparison(const std::optional<std::string>& previous) {
  if (!previous)
    return "\n\n（没有上个月的总结，凡是需要与上月对比的段落，请整段省略，不要编造。）";
  return "\n\n---\n\n以下是【上个月的总结】，仅供你做与上月的对比，请基于它做真实对比，"
         "不要当成本月内容复述：\n\n" +
         *previous;
}

}  // namespace

bool AIMonthlySummarizer::isExcluded(const Memo& memo) const {
  return std::ranges::any_of(memo.tags, [&](const std::string& tag) {
    return std::ranges::any_of(excludedTags_, [&](const std::string& excluded) {
      return TagNames::isOrIsBelow(tag, excluded);
    });
  });
}

std::vector<NoteEntry> AIMonthlySummarizer::notesBetween(Day first, Day last,
                                                         bool excludePersonalColumn,
                                                         const std::stop_token& stop) const {
  const auto isWanted = [&](const Memo& memo) {
    return !isExcluded(memo) &&
           !(excludePersonalColumn &&
             std::ranges::find(memo.tags, TagNames::personalColumnRoot) != memo.tags.end());
  };
  std::vector<MemoEntry> found;
  RootScan(memos_.context(), stop)
      .forEach({.from = first, .to = last}, RootScan::Order::oldestFirst,
               [&](const MemoEntry& entry) {
                 if (isWanted(*entry.memo)) found.push_back(entry);
                 return true;
               });
  std::ranges::sort(found, [](const MemoEntry& left, const MemoEntry& right) {
    return left.date != right.date ? left.date < right.date
                                   : left.memo->seqNumber > right.memo->seqNumber;
  });
  std::vector<NoteEntry> notes;
  notes.reserve(found.size());
  for (const MemoEntry& entry : found)
    if (std::string body = shownBody(entry.memo->body); !trimSpaceAndBreaks(body).empty())
      notes.push_back({entry.date, std::move(body), entry.memo->tags});
  return notes;
}

std::vector<NoteEntry> AIMonthlySummarizer::collectNotes(Month month, bool excludePersonalColumn,
                                                         const std::stop_token& stop) const {
  const Day first = firstDay(month.year, month.month);
  return notesBetween(first, lastDay(first), excludePersonalColumn, stop);
}

std::vector<NoteEntry> AIMonthlySummarizer::collectNotesForYear(int year,
                                                                const std::stop_token& stop) const {
  return notesBetween(firstDay(year, 1), lastDay(firstDay(year, 12)), true, stop);
}

std::optional<std::string> AIMonthlySummarizer::previousMonthSummary(
    Month month, const std::stop_token& stop) const {
  const std::chrono::year_month_day first = firstDay(month.year, month.month).civil();
  std::shared_ptr<const Memo> latest;
  RootScan(memos_.context(), stop)
      .forEachTagged(
          monthTag(first.year() / first.month() - std::chrono::months(1)),
          [&](const MemoEntry& entry) {
            if (!isExcluded(*entry.memo) &&
                (!latest || entry.memo->createdAt.value_or("") > latest->createdAt.value_or("")))
              latest = entry.memo;
            return true;
          });
  if (!latest) return std::nullopt;
  return shownBody(latest->body);
}

AIMonthlySummarizer::Question AIMonthlySummarizer::monthQuestion(
    Month month, Style style, const std::stop_token& stop) const {
  const std::vector<NoteEntry> notes = collectNotes(month, true, stop);
  if (notes.empty()) throw SummarizerError(Kind::noNotes);
  const SummaryStyleInfo& info = SummaryStyleInfo::of(style);
  const std::size_t days = NoteCorpus::dayCount(notes);
  const std::string tags = NoteCorpus::tagFrequency(notes);
  std::string user = fmt::format(
      "以下是我 {} 的日记全集，共 {} 天，{} 条笔记。\n高频标签：{}\n\n"
      "请按照要求生成一份高质量的月度总结。\n\n---\n\n{}",
      monthLabel(firstDay(month.year, month.month)), days, notes.size(), tags,
      NoteCorpus::text(notes));
  user += comparison(previousMonthSummary(month, stop));
  return {.prompt = {std::string(info.monthlyPrompt), std::move(user), longestReply},
          .overview = info.isPro ? fmt::format("## 数据总览\n- 本月共写了 {} 天、{} 条笔记\n"
                                               "- 高频标签：{}\n\n",
                                               days, notes.size(), tags)
                                 : "",
          .notes = notes.size()};
}

AIMonthlySummarizer::Question AIMonthlySummarizer::yearQuestion(int year, Style style,
                                                                const std::stop_token& stop) const {
  const std::vector<NoteEntry> notes = collectNotesForYear(year, stop);
  if (notes.empty()) throw SummarizerError(Kind::noNotes);
  const SummaryStyleInfo& info = SummaryStyleInfo::of(style);
  if (!info.annualPrompt) throw SummarizerError(Kind::unsupportedStyle);
  std::string user = fmt::format(
      "以下是我 {} 年全年的日记，共 {} 天，{} 条笔记。\n有笔记的月份：{}\n\n"
      "请生成一份年度总结。\n\n---\n\n{}",
      year, NoteCorpus::dayCount(notes), notes.size(), NoteCorpus::months(notes),
      NoteCorpus::text(notes));
  return {.prompt = {std::string(*info.annualPrompt), std::move(user), longestReply},
          .overview = {},
          .notes = notes.size()};
}

AIService::Reply AIMonthlySummarizer::ask(const Question& question, AIService& service,
                                          const std::stop_token& stop) {
  AIService::Reply reply = service.chat(question.prompt, stop);
  if (trimSpaceAndBreaks(reply.text).empty()) throw SummarizerError(Kind::emptyReply);
  reply.text.insert(0, question.overview);
  return reply;
}

Memo AIMonthlySummarizer::saveSummary(const std::string& content, Month month, Style style) const {
  const Day first = firstDay(month.year, month.month);
  return save(fmt::format("{}总结·{}", monthLabel(first), SummaryStyleInfo::of(style).titleSuffix),
              monthTag(first.civil().year() / first.civil().month()), content);
}

Memo AIMonthlySummarizer::saveAnnualSummary(const std::string& content, int year,
                                            Style style) const {
  return save(fmt::format("{}年度总结·{}", year, SummaryStyleInfo::of(style).titleSuffix),
              fmt::format("{}/年度总结/{}", TagNames::personalColumnRoot, year), content);
}

// Past MemoService::create, which would make tags of what the model wrote.
Memo AIMonthlySummarizer::save(const std::string& title, const std::string& tag,
                               const std::string& content) const {
  return memos_.days().createMemo(memos_.context().clock.today(),
                                  {.body = fmt::format("# {}\n\n{}", title, content),
                                   .tags = {std::string(TagNames::personalColumnRoot), tag},
                                   .source = MemoService::typedHere});
}

}  // namespace nomely
