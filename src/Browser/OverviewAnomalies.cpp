#include <algorithm>
#include <map>

#include <fmt/format.h>

#include "Browser/MonthOverviewStore.h"
#include "Core/Extensions/TextNumbers.h"
#include "Core/Extensions/TextStats.h"
#include "Platform/Text/RegularExpression.h"
#include "Platform/Text/Unicode.h"

namespace nomely::MonthOverviewStore {
namespace {

using Kind = OverviewAnomaly::Kind;

// Shorter notes repeat each other naturally.
constexpr std::size_t leastWords = 50;
constexpr double largestDifference = 0.1;
constexpr double leastOverlap = 0.7;
constexpr std::size_t comparedCharacters = 120;
constexpr std::size_t datedCharacters = 80;

OverviewAnomaly anomaly(Kind kind, const MemoEntry& entry, std::string label) {
  return {.kind = kind,
          .day = static_cast<unsigned>(entry.date.civil().day()),
          .date = entry.date,
          .time = entry.memo->time,
          .seqNumber = entry.memo->seqNumber,
          .label = std::move(label),
          .preview = previewLine(entry.memo->body)};
}

// The first letters and numbers of a text, one character each, as far as they are compared.
std::vector<std::string_view> opening(std::string_view text) {
  std::vector<std::string_view> characters;
  while (!text.empty() && characters.size() < comparedCharacters) {
    const std::string_view character = graphemePrefix(text, 1);
    if (isLetterOrNumber(decodeFirst(character).value)) characters.push_back(character);
    text.remove_prefix(character.size());
  }
  return characters;
}

double contentOverlap(const std::vector<std::string_view>& left,
                      const std::vector<std::string_view>& right) {
  const std::size_t compared = std::min(left.size(), right.size());
  if (compared == 0) return 0;
  std::size_t same = 0;
  for (std::size_t i = 0; i < compared; ++i) same += left[i] == right[i] ? 1 : 0;
  return static_cast<double>(same) / static_cast<double>(compared);
}

// A memo beside the others of its day.
struct Candidate {
  const MemoEntry* entry;
  std::size_t words;
  std::optional<std::vector<std::string_view>> characters = {};  // found when first needed

  const std::vector<std::string_view>& start() {
    if (!characters) characters = opening(entry->memo->body);
    return *characters;
  }
};

// The cheap test comes first: few pairs get to the comparison of their texts.
bool areAlike(Candidate& left, Candidate& right) {
  const auto [fewer, more] = std::minmax(left.words, right.words);
  if (more < leastWords) return false;
  if (static_cast<double>(more - fewer) / static_cast<double>(more) >= largestDifference)
    return false;
  return contentOverlap(left.start(), right.start()) >= leastOverlap;
}

void addDuplicates(std::span<const MemoEntry> entries, std::vector<OverviewAnomaly>& anomalies) {
  std::map<Day, std::vector<Candidate>> days;
  for (const MemoEntry& entry : entries)
    days[entry.date].push_back({&entry, TextStats::meaningfulCount(entry.memo->body)});
  for (auto& [day, memos] : days)
    for (auto memo = memos.begin(); memo != memos.end(); ++memo)
      if (std::any_of(memo + 1, memos.end(),
                      [&](Candidate& other) { return areAlike(*memo, other); }))
        anomalies.push_back(anomaly(Kind::duplicate, *memo->entry, "与同日另一条内容高度重复"));
}

struct WrittenDate {
  std::int64_t year, month, day;

  [[nodiscard]] std::string string() const { return fmt::format("{}.{}.{}", year, month, day); }
  friend bool operator==(const WrittenDate&, const WrittenDate&) = default;
};

std::optional<WrittenDate> writtenDate(std::string_view body) {
  static const RegularExpression expression(
      R"((?:^|[^\d])(\d{4})[.\-/年](\d{1,2})[.\-/月](\d{1,2}))");
  const std::u16string text = toUtf16(graphemePrefix(body, datedCharacters));
  const auto match = expression.firstMatch(text);
  if (!match) return std::nullopt;
  const auto number = [&](std::size_t group) {
    const TextRange range = *match->groups[group];
    return parseDecimal(toUtf8(std::u16string_view(text).substr(range.begin, range.length())));
  };
  const auto year = number(1), month = number(2), day = number(3);
  if (!year || !month || !day) return std::nullopt;  // digits of another script
  return WrittenDate{*year, *month, *day};
}

void addMismatches(std::span<const MemoEntry> entries, std::vector<OverviewAnomaly>& anomalies) {
  for (const MemoEntry& entry : entries) {
    const auto written = writtenDate(entry.memo->body);
    const auto civil = entry.date.civil();
    const WrittenDate filed{static_cast<int>(civil.year()), static_cast<unsigned>(civil.month()),
                            static_cast<unsigned>(civil.day())};
    if (!written || *written == filed) continue;
    // Compared as texts: 2026.10.1 counts as earlier than 2026.9.30.
    const auto* const relation = filed.string() < written->string() ? "晚于" : "早于";
    anomalies.push_back(anomaly(Kind::dateMismatch, entry,
                                fmt::format("正文写 {}，归档在 {}（正文{}归档）", written->string(),
                                            filed.string(), relation)));
  }
}

}  // namespace

std::vector<OverviewAnomaly> detectAnomalies(std::span<const MemoEntry> entries) {
  std::vector<OverviewAnomaly> anomalies;
  addDuplicates(entries, anomalies);
  addMismatches(entries, anomalies);
  std::ranges::stable_sort(anomalies, {}, &OverviewAnomaly::day);
  return anomalies;
}

}  // namespace nomely::MonthOverviewStore
