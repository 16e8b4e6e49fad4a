#include "CLI/Arguments.h"

#include <algorithm>
#include <ranges>

#include <fmt/format.h>

#include "CLI/UsageError.h"
#include "Core/Extensions/TagUtilities.h"
#include "Core/Extensions/TextNumbers.h"
#include "Core/Storage/MemoFile.h"

namespace nomely {
namespace {

constexpr std::string_view identifierPrefix = "memo_";
constexpr std::size_t shortestPrefix = 8;
constexpr auto referenceForms =
    "请写作 日期/编号（如 2026-03-01/7、today/7），或 memo_ 开头的标识"
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

TimelineEntry memoByIdentifier(const std::string& identifier, const DayStore& store) {
  std::vector<TimelineEntry> found;
  forEachMemo(store, [&](TimelineEntry entry) {
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

// The identity that stands in the text of an unreadable file; empty when there is none.
std::string identifierInFile(const std::string& reference, Session& session) {
  const std::size_t slash = reference.find('/');
  const Day date = Arguments::day(reference.substr(0, slash), session.clock());
  const auto number = parseDecimal(std::string_view(reference).substr(slash + 1)).value_or(0);
  const StoreContext& storage = session.dayStore().context();
  const auto bytes = storage.files.read(storage.paths.memoFile(date, number), MemoFile::maxSize);
  constexpr std::size_t digits = 32;
  const std::size_t at = bytes ? bytes->find(identifierPrefix) : std::string::npos;
  return at == std::string::npos ? "" : bytes->substr(at, identifierPrefix.size() + digits);
}

}  // namespace

Day Arguments::day(const std::string& text, const Clock& clock) {
  const Day today = clock.today();
  if (text == "today" || text == "今天") return today;
  if (text == "yesterday" || text == "昨天") return today.plusDays(-1);
  if (const auto day = Day::parse(text)) return *day;
  constexpr std::int64_t mostDaysAgo = 366 * 1000;
  if (text.size() > 1 && text.front() == '-')
    if (const auto ago = parseDecimal(std::string_view(text).substr(1));
        ago && text[1] != '+' && *ago >= 0 && *ago <= mostDaysAgo)
      return today.plusDays(-static_cast<int>(*ago));
  throw UsageError(fmt::format(
      "“{}”不是有效日期。请写作 2026-03-01、today/今天、yesterday/昨天，或 -N（N 天前）", text));
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
  throw UsageError(fmt::format(
      "“{}”不能作标签：标签不能为空，也不能以“/”开头、结尾或含有“//”。例如 生活/读书", text));
}

std::vector<std::string> Arguments::tags(const std::vector<std::string>& texts) {
  std::vector<std::string> cleaned;
  cleaned.reserve(texts.size());
  for (const std::string& text : texts) cleaned.push_back(tag(text));
  return TagUtilities::uniqueTags(cleaned);
}

TimelineEntry Arguments::memo(const std::string& reference, Session& session) {
  const DayStore& store = session.dayStore();
  if (reference.starts_with(identifierPrefix)) {
    if (reference.size() < identifierPrefix.size() + shortestPrefix)
      throw UsageError(fmt::format("“{}”太短。{}", reference, referenceForms));
    return memoByIdentifier(reference, store);
  }
  const std::size_t slash = reference.find('/');
  if (slash == std::string::npos)
    throw UsageError(fmt::format("“{}”不是笔记的引用。{}", reference, referenceForms));
  const Day date = day(reference.substr(0, slash), session.clock());
  const auto number = parseDecimal(std::string_view(reference).substr(slash + 1));
  if (!number || *number < 1)
    throw UsageError(fmt::format("“{}”中的编号应是从 1 开始的整数。{}", reference, referenceForms));
  std::optional<Memo> memo = store.memoStore().read(date, *number);
  if (!memo)
    throw NameNotFoundError(fmt::format("{} 没有编号为 {} 的笔记", date.string(), *number));
  return {date, std::move(*memo)};
}

Arguments::Past Arguments::past(const std::string& reference, Session& session) {
  try {
    TimelineEntry entry = memo(reference, session);
    return {entry.memo.memoId.value_or(""), std::move(entry)};
  } catch (const UsageError&) {
    throw;
  } catch (const Error&) {
    // Nothing by that name, or nothing that can be read.
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
