#include "CLI/CompletionCandidates.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <ranges>

#include <fmt/format.h>

#include "CLI/Arguments.h"
#include "CLI/ByteCount.h"
#include "CLI/DateWords.h"
#include "CLI/MemoOutput.h"
#include "Core/Extensions/TagNames.h"
#include "Core/Storage/TrashStore.h"
#include "Platform/Settings/MemorySecrets.h"
#include "Platform/Text/Ascii.h"

namespace nomely {
namespace {

using Words = std::vector<CompletionWord>;

constexpr std::size_t mostShown = 50;  // that a person looks through
constexpr std::size_t recentMemos = 20;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// The days that hold memos and begin as typed, newest first; months or years of them where they are
// many: "2026-11-21", "2026-11-", "2026-".
std::vector<std::string> daysFrom(const std::string& typed, const DayStore& store) {
  const std::vector<Day> days = store.listAllDates();
  std::vector<std::string> found;
  for (const std::size_t length : {std::size_t{10}, std::size_t{8}, std::size_t{5}}) {
    if (length < typed.size()) break;
    found.clear();
    for (const Day day : days | std::views::reverse)
      if (std::string text = day.string().substr(0, length);
          text.starts_with(typed) && (found.empty() || found.back() != text))
        found.push_back(std::move(text));
    if (found.size() <= mostShown) break;
  }
  return found;
}

bool isWholeDay(std::string_view text) {
  return Day::parse(text).has_value();
}

std::vector<std::string> dateWordsFrom(const std::string& typed) {
  std::vector<std::string> found;
  for (const std::string& word : DateWords::all())
    if (word.starts_with(loweredAscii(typed))) found.push_back(word);
  return found;
}

CompletionCandidates dates(const std::string& typed, const DayStore& store) {
  CompletionCandidates result;
  if (typed.empty() || !isDigit(typed.front())) {
    for (const std::string& word : dateWordsFrom(typed)) result.words.push_back({word});
    return result;
  }
  for (const std::string& day : daysFrom(typed, store)) {
    result.arePartial = !isWholeDay(day);
    result.words.push_back({day});
  }
  return result;
}

CompletionCandidates months(const std::string& typed, const DayStore& store) {
  CompletionCandidates result;
  for (const Day day : store.listAllDates() | std::views::reverse) {
    const std::string month = day.string().substr(0, 7);
    if (month.starts_with(typed) && (result.words.empty() || result.words.back().text != month))
      result.words.push_back({month});
  }
  return result;
}

// Every tag may be meant, but nobody waits for one that was last used in a far corner of a large
// diary.
CompletionCandidates tags(const std::string& typed, Session& session) {
  constexpr std::chrono::milliseconds longest{700};
  const auto end = std::chrono::steady_clock::now() + longest;
  TagCounts counts;
  session.scan()->forEach({}, RootScan::Order::newestFirst, [&](const MemoEntry& entry) {
    counts.add(entry.date, entry.memo->frontmatter(), entry.memo->seqNumber);
    return std::chrono::steady_clock::now() < end;
  });
  CompletionCandidates result;
  for (const TagUse& use : std::move(counts).rows())
    if (use.tag.starts_with(typed) && !TagNames::isHidden(use.tag))
      result.words.push_back({use.tag, fmt::format("{} 条", use.count)});
  return result;
}

// The memos of a day in the order of timelines.
std::vector<Memo> memosOf(Day day, const DayStore& store) {
  std::vector<Memo> memos = store.listMemos(day);
  std::ranges::stable_sort(memos, orderedBeforeInDay);
  return memos;
}

void addMemosOf(Day day, const std::string& dateText, const std::string& typed,
                const DayStore& store, Words& words) {
  for (const Memo& memo : memosOf(day, store)) {
    std::string text = fmt::format("{}/{}", dateText, memo.seqNumber);
    if (text.starts_with(typed))
      words.push_back({std::move(text), MemoOutput::firstLine(memo.body)});
  }
}

// "@", "@2", and with nothing typed the same memos by their places too.
CompletionCandidates recentReferences(const std::string& typed, const DayStore& store) {
  CompletionCandidates result;
  Words places;
  std::size_t rank = 0;
  for (const Day day : store.listAllDates() | std::views::reverse) {
    for (const Memo& memo : memosOf(day, store)) {
      if (++rank > recentMemos) break;
      const std::string text = rank == 1 ? "@" : fmt::format("@{}", rank);
      const std::string line = MemoOutput::firstLine(memo.body);
      if (text.starts_with(typed) && (rank == 1 || !typed.empty()))
        result.words.push_back({text, line});
      if (typed.empty())
        places.push_back({fmt::format("{}/{}", day.string(), memo.seqNumber), line});
    }
    if (rank > recentMemos) break;
  }
  std::ranges::move(places, std::back_inserter(result.words));
  return result;
}

// "2026-11" → the days in it, "to" → "today/"; the memos of the day where only one is left.
CompletionCandidates daysOfReferences(const std::string& typed, const DayStore& store, Day today) {
  CompletionCandidates result{.arePartial = true};
  std::vector<std::string> days;
  if (isDigit(typed.front()))
    days = daysFrom(typed, store);
  else
    for (const std::string& word : dateWordsFrom(typed))
      if (const auto day = DateWords::day(word, today); day && !store.listNumbers(*day).empty())
        days.push_back(word);
  for (const std::string& text : days) {
    const auto day = DateWords::day(text, today);
    if (day && days.size() == 1)
      addMemosOf(*day, text, {}, store, result.words);
    else
      result.words.push_back({day ? text + "/" : text});
  }
  if (days.size() == 1 && !result.words.empty() && isDigit(result.words.front().text.back()))
    result.arePartial = false;
  return result;
}

CompletionCandidates references(const Completion& completion, Session& session) {
  const DayStore& store = session.dayStore();
  const std::string& typed = completion.typed;
  CompletionCandidates result;
  if (const std::size_t slash = typed.find('/'); slash != std::string::npos) {
    const std::string dateText = typed.substr(0, slash);
    if (const auto day = DateWords::day(dateText, session.clock().today()))
      addMemosOf(*day, dateText, typed, store, result.words);
    return result;
  }
  if (typed.empty() || typed.starts_with('@')) return recentReferences(typed, store);
  if (completion.kind == WordKind::pastReference && typed.starts_with("memo_")) {
    for (const std::string& identity : session.memos().versions().identities(typed))
      result.words.push_back({identity});
    return result;
  }
  return daysOfReferences(typed, store, session.clock().today());
}

// By the names that the files had, where those tell them apart.
CompletionCandidates attachments(const Completion& completion, Session& session) {
  const Memo memo = Arguments::memo(completion.reference, session).memo;
  CompletionCandidates result;
  for (const std::string& stored : memo.attachments) {
    const auto original = memo.originalNames.find(stored);
    const bool isPlain =
        original != memo.originalNames.end() &&
        std::ranges::count(memo.originalNames | std::views::values, original->second) == 1;
    const std::string& name = isPlain ? original->second : stored;
    const auto description = memo.attachmentDescriptions.find(stored);
    if (name.starts_with(completion.typed))
      result.words.push_back({name, description == memo.attachmentDescriptions.end()
                                        ? (isPlain ? stored : "")
                                        : description->second});
  }
  return result;
}

CompletionCandidates trashEntries(const std::string& typed, Session& session) {
  CompletionCandidates result;
  for (const TrashEntry& entry : TrashStore(session.dayStore().context()).listTrash())
    if (entry.trashSubdir.starts_with(typed))
      result.words.push_back({entry.trashSubdir, MemoOutput::firstLine(entry.memo.body)});
  return result;
}

CompletionCandidates backups(const std::string& typed, Session& session) {
  CompletionCandidates result;
  for (const BackupFile& file : session.application().backups().listBackups())
    if (file.name.starts_with(typed)) result.words.push_back({file.name, byteCount(file.size)});
  return result;
}

// The settings that there are, without a look into their files.
std::vector<AppSettings::Setting> knownSettings(Session& session) {
  MemorySecrets none;
  return AppSettings(session.application().storage(), none, AppSettings::Source::defaults)
      .settings();
}

CompletionCandidates settings(const std::string& typed, Session& session) {
  CompletionCandidates result;
  for (const AppSettings::Setting& setting : knownSettings(session))
    if (setting.key.starts_with(typed) && !setting.isSecret) result.words.push_back({setting.key});
  return result;
}

CompletionCandidates settingValues(const Completion& completion, Session& session) {
  CompletionCandidates result;
  for (const AppSettings::Setting& setting : knownSettings(session)) {
    if (setting.key != completion.reference) continue;
    for (const std::string& choice : setting.choices)
      if (choice.starts_with(completion.typed)) result.words.push_back({choice});
  }
  return result;
}

}  // namespace

CompletionCandidates candidatesFor(const Completion& completion, Session& session) {
  const std::string& typed = completion.typed;
  switch (completion.kind) {
    case WordKind::date:
      return dates(typed, session.dayStore());
    case WordKind::month:
      return months(typed, session.dayStore());
    case WordKind::tag:
      return tags(typed, session);
    case WordKind::reference:
    case WordKind::pastReference:
      return references(completion, session);
    case WordKind::attachment:
      return attachments(completion, session);
    case WordKind::trashEntry:
      return trashEntries(typed, session);
    case WordKind::backup:
      return backups(typed, session);
    case WordKind::setting:
      return settings(typed, session);
    case WordKind::settingValue:
      return settingValues(completion, session);
    case WordKind::text:
    case WordKind::command:
    case WordKind::file:
    case WordKind::folder:
      break;
  }
  return {};
}

}  // namespace nomely
