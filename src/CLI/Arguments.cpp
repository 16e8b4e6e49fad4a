#include "CLI/Arguments.h"

#include <algorithm>
#include <ranges>

#include <fmt/format.h>

#include "CLI/DateWords.h"
#include "CLI/UsageError.h"
#include "Core/Extensions/TagUtilities.h"
#include "Core/Extensions/TextNumbers.h"
#include "Core/Storage/MemoFile.h"

namespace nomely {
namespace {

constexpr std::string_view identifierPrefix = "memo_";
constexpr std::size_t shortestPrefix = 8;
constexpr auto referenceForms =
    "请写作 日期/编号（如 2026-03-01/7、today/7）、@（最新的一条）、@3（第 3 新的），或 memo_ "
    "开头的标识"
    "（至少给出 memo_ 之后的 8 个字符）";

// Reads every memo of the root, newest day first, until `visit` returns false. Unreadable files
// are passed over: they have no identifier.
template <typename Visit>
void forEachMemo(const DayStore& store, Visit visit) {
  for (const Day day : std::views::reverse(store.listAllDates()))
    for (const std::int64_t number : store.listNumbers(day)) {
      try {
        auto memo = store.memoStore().read(day, number);
        if (memo && !visit(TimelineEntry{day, std::move(*memo)})) return;
      } catch (const Error&) {
      }
    }
}

// "@" is 1, "@3" is 3.
std::optional<std::int64_t> rankIn(std::string_view reference) {
  if (!reference.starts_with('@')) return std::nullopt;
  if (reference.size() == 1) return 1;
  const auto rank = parseDecimal(reference.substr(1));
  if (!rank || *rank < 1)
    throw UsageError(fmt::format("“{}”不是笔记的引用。{}", reference, referenceForms));
  return rank;
}

// Days are read newest first until so many memos were seen.
TimelineEntry memoByRank(std::int64_t rank, Session& session) {
  std::int64_t seen = 0;
  std::vector<MemoEntry> day;
  std::optional<MemoEntry> found;
  const auto settleDay = [&] {
    std::ranges::stable_sort(day, orderedBefore);
    if (!found && seen + std::ssize(day) >= rank)
      found = day[static_cast<std::size_t>(rank - seen - 1)];
    seen += std::ssize(day);
    day.clear();
  };
  session.scan()->forEach({}, RootScan::Order::newestFirst, [&](const MemoEntry& entry) {
    if (!day.empty() && day.front().date != entry.date) settleDay();
    day.push_back(entry);
    return !found;
  });
  if (!found) settleDay();
  if (!found) throw NameNotFoundError(fmt::format("没有第 {} 新的笔记，共 {} 条", rank, seen));
  return {found->date, *found->memo};
}

// Of "2026-03-01/7".
MemoPlace writtenPlace(const std::string& reference, const Clock& clock) {
  const std::size_t slash = reference.find('/');
  if (slash == std::string::npos)
    throw UsageError(fmt::format("“{}”不是笔记的引用。{}", reference, referenceForms));
  const Day date = Arguments::day(reference.substr(0, slash), clock);
  const auto number = parseDecimal(std::string_view(reference).substr(slash + 1));
  if (!number || *number < 1)
    throw UsageError(fmt::format("“{}”中的编号应是从 1 开始的整数。{}", reference, referenceForms));
  return {date, *number};
}

bool isIdentifier(const std::string& reference) {
  if (!reference.starts_with(identifierPrefix)) return false;
  if (reference.size() < identifierPrefix.size() + shortestPrefix)
    throw UsageError(fmt::format("“{}”太短。{}", reference, referenceForms));
  return true;
}

// `forEach` goes through all memos until what it is given returns false.
template <typename ForEach>
TimelineEntry memoByIdentifier(const std::string& identifier, ForEach forEach) {
  std::vector<TimelineEntry> found;
  forEach([&](TimelineEntry entry) {
    if (!entry.memo.memoId || !entry.memo.memoId->starts_with(identifier)) return true;
    const bool whole = *entry.memo.memoId == identifier;
    if (whole) found.clear();
    found.push_back(std::move(entry));
    return !whole && found.size() < 2;
  });
  if (found.empty()) throw NameNotFoundError(fmt::format("没有标识为 {} 的笔记", identifier));
  if (found.size() > 1)
    throw UsageError(fmt::format("{} 对应多条笔记（{}、{}…），请写得更长一些", identifier,
                                 found[0].memo.memoId.value_or(""),
                                 found[1].memo.memoId.value_or("")));
  return std::move(found.front());
}

NameNotFoundError notFound(const MemoPlace& place) {
  return NameNotFoundError(
      fmt::format("{} 没有编号为 {} 的笔记", place.day.string(), place.seqNumber));
}

// The identity that stands in the text of an unreadable file; empty when there is none.
std::string identifierInFile(const std::string& reference, Session& session) {
  const MemoPlace place = writtenPlace(reference, session.clock());
  const StoreContext& storage = session.dayStore().context();
  const auto bytes =
      storage.files.read(storage.paths.memoFile(place.day, place.seqNumber), MemoFile::maxSize);
  constexpr std::size_t digits = 32;
  const std::size_t at = bytes ? bytes->find(identifierPrefix) : std::string::npos;
  return at == std::string::npos ? "" : bytes->substr(at, identifierPrefix.size() + digits);
}

}  // namespace

Day Arguments::day(const std::string& text, const Clock& clock) {
  if (const auto day = DateWords::day(text, clock.today())) return *day;
  throw UsageError(
      fmt::format("“{}”不是有效日期。请写作 2026-03-01、3-1、today/今天、昨天、周五、-N 或 N天前",
                  Terminal::printable(text)));
}

std::chrono::year_month Arguments::month(const std::string& text, const Clock& clock) {
  const auto first = text.empty() ? clock.today() : Day::parse(text + "-01");
  if (!first) throw UsageError(fmt::format("“{}”不是有效月份。请写作 2026-03", text));
  return {first->civil().year(), first->civil().month()};
}

std::string Arguments::time(const std::string& text) {
  const std::size_t colon = text.find(':');
  if (colon == 1 || colon == 2) {
    const auto isDigits = [](std::string_view digits) {
      return std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; });
    };
    const std::string hour = text.substr(0, colon);
    const std::string minute = text.substr(colon + 1);
    if (isDigits(hour) && isDigits(minute) && minute.size() == 2 && std::stoi(hour) < 24 &&
        std::stoi(minute) < 60)
      return fmt::format("{:02}:{}", std::stoi(hour), minute);
  }
  throw UsageError(fmt::format("“{}”不是有效时间。请写作 HH:MM，如 09:30", text));
}

std::int64_t Arguments::integer(const std::string& text, std::string_view what) {
  if (const auto number = parseDecimal(text)) return *number;
  throw UsageError(fmt::format("“{}”不是整数：{} 需要一个整数，如 3", text, what));
}

std::string Arguments::tag(const std::string& text) {
  if (auto tag = TagUtilities::cleanTag(text)) return *tag;
  throw UsageError(TagUtilities::whyNoTag(text));
}

std::vector<std::string> Arguments::tags(const std::vector<std::string>& texts) {
  std::vector<std::string> cleaned;
  cleaned.reserve(texts.size());
  for (const std::string& text : texts) cleaned.push_back(tag(text));
  return TagUtilities::uniqueTags(cleaned);
}

void Arguments::atMostOne(const std::vector<std::pair<const char*, bool>>& options) {
  std::vector<std::string> used;
  for (const auto& [name, isUsed] : options)
    if (isUsed) used.emplace_back(name);
  if (used.size() > 1)
    throw UsageError(fmt::format("这些选项一次只能用一个：{}", fmt::join(used, "、")));
}

std::optional<std::string> Arguments::joined(const std::vector<std::string>& words) {
  if (words.empty()) return std::nullopt;
  return fmt::format("{}", fmt::join(words, " "));
}

std::vector<std::filesystem::path> Arguments::files(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    std::error_code ignored;
    const auto status = std::filesystem::status(name, ignored);
    if (!std::filesystem::exists(status))
      throw NameNotFoundError(fmt::format("找不到文件：{}", name));
    if (std::filesystem::is_directory(status))
      throw UsageError(fmt::format("只能附加普通文件：{}", name));
  }
  return {names.begin(), names.end()};
}

TimelineEntry Arguments::memoIn(const MemoSource& source, const std::string& reference,
                                const Clock& clock) {
  if (isIdentifier(reference)) return memoByIdentifier(reference, source.forEach);
  const MemoPlace place = writtenPlace(reference, clock);
  std::optional<Memo> memo = source.read(place);
  if (!memo) throw notFound(place);
  return {place.day, std::move(*memo)};
}

TimelineEntry Arguments::memo(const std::string& reference, Session& session) {
  const DayStore& store = session.dayStore();
  if (isIdentifier(reference))
    return memoByIdentifier(reference, [&](const auto& visit) { forEachMemo(store, visit); });
  if (const auto rank = rankIn(reference)) return memoByRank(*rank, session);
  const MemoPlace place = writtenPlace(reference, session.clock());
  std::optional<Memo> memo = store.memoStore().read(place.day, place.seqNumber);
  if (!memo) throw notFound(place);
  return {place.day, std::move(*memo)};
}

std::vector<TimelineEntry> Arguments::memos(const std::vector<std::string>& references,
                                            Session& session) {
  std::vector<TimelineEntry> entries;
  entries.reserve(references.size());
  for (const std::string& reference : references) {
    TimelineEntry entry = memo(reference, session);
    const bool isKnown = std::ranges::any_of(entries, [&](const TimelineEntry& known) {
      return known.date == entry.date && known.memo.seqNumber == entry.memo.seqNumber;
    });
    if (!isKnown) entries.push_back(std::move(entry));
  }
  return entries;
}

MemoPlace Arguments::place(const std::string& reference, Session& session) {
  if (!reference.starts_with(identifierPrefix) && !reference.starts_with('@')) {
    const MemoPlace place = writtenPlace(reference, session.clock());
    const DayStore& store = session.dayStore();
    if (!store.context().files.exists(store.paths().memoFile(place.day, place.seqNumber)))
      throw notFound(place);
    return place;
  }
  const TimelineEntry entry = memo(reference, session);
  return {entry.date, entry.memo.seqNumber};
}

Arguments::Past Arguments::past(const std::string& reference, Session& session) {
  try {
    TimelineEntry entry = memo(reference, session);
    return {entry.memo.memoId.value_or(""), std::move(entry)};
  } catch (const UsageError&) {
    throw;
  } catch (const Error&) {
    // Nothing by that name, or nothing that can be read.
    if (reference.starts_with('@')) throw;
    const std::string memoId =
        reference.starts_with(identifierPrefix) ? reference : identifierInFile(reference, session);
    const auto identities = session.memos().versions().identities(memoId);
    if (memoId.empty() || identities.empty()) throw;
    if (identities.size() > 1 && identities.front() != memoId)
      throw UsageError(fmt::format("{} 对应多条笔记的历史，请写得更长一些", reference));
    return {identities.front(), std::nullopt};
  }
}

std::string Arguments::attachment(const Memo& memo, const std::string& name) {
  if (std::ranges::find(memo.attachments, name) != memo.attachments.end()) return name;
  std::vector<std::string> found;
  for (const std::string& stored : memo.attachments)
    if (const auto original = memo.originalNames.find(stored);
        original != memo.originalNames.end() && original->second == name)
      found.push_back(stored);
  if (found.empty()) throw NameNotFoundError(fmt::format("这条笔记没有名为“{}”的附件", name));
  if (found.size() > 1)
    throw UsageError(fmt::format("有 {} 个附件原名为“{}”，请用存储名：{}", found.size(), name,
                                 fmt::join(found, "、")));
  return found.front();
}

}  // namespace nomely
