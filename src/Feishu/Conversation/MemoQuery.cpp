#include "Feishu/Conversation/MemoQuery.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <tuple>
#include <utility>

#include <fmt/format.h>

#include "Core/Extensions/AttachmentKinds.h"
#include "Core/Extensions/LatestDay.h"
#include "Core/Extensions/TagNames.h"
#include "Core/Extensions/TextNumbers.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Feishu/Conversation/MessageParts.h"
#include "Platform/Text/FoldedText.h"
#include "Platform/Text/Replacing.h"
#include "Platform/Text/Unicode.h"

namespace nomely {
namespace {

constexpr std::string_view diary = "日记";
constexpr std::string_view of = "的";
// On every memo that came over the bot.
constexpr std::string_view botTag = "飞书";
constexpr std::string_view mediaMark = "📎 附有图片或语音";

// Digits alone.
std::optional<std::int64_t> number(std::string_view text) {
  if (text.starts_with('+') || text.starts_with('-')) return std::nullopt;
  return parseDecimal(text);
}
std::optional<unsigned> shortNumber(std::string_view text) {
  const auto value = text.size() <= 2 ? number(text) : std::nullopt;
  return value ? std::optional(static_cast<unsigned>(*value)) : std::nullopt;
}

MemoQuery oneDay(Day day, std::string label) {
  return {.startDate = day, .endDate = day.plusDays(1), .label = std::move(label)};
}

MemoQuery lastDays(std::int64_t count, Day today) {
  const Day first = Day::from(1, 1, 1).value();
  const auto before =
      (std::chrono::sys_days(today.civil()) - std::chrono::sys_days(first.civil())).count();
  return {.startDate = count > before ? first : today.plusDays(-static_cast<int>(count - 1)),
          .endDate = today.plusDays(1),
          .label = fmt::format("最近{}天", count)};
}

// "今天", "昨天", "最近7天", "3月8日"
std::optional<MemoQuery> windowOf(std::string_view words, Day today) {
  if (words == "今天") return oneDay(today, "今天");
  if (words == "昨天") return oneDay(today.plusDays(-1), "昨天");
  constexpr std::string_view latest = "最近";
  constexpr std::string_view days = "天";
  if (words.starts_with(latest) && words.ends_with(days)) {
    words.remove_prefix(latest.size());
    words.remove_suffix(days.size());
    const auto count = number(words);
    if (!count || *count <= 0) return std::nullopt;
    return lastDays(*count, today);
  }
  constexpr std::string_view ofMonth = "月";
  constexpr std::string_view ofDay = "日";
  const std::size_t middle = words.find(ofMonth);
  if (middle == std::string_view::npos || !words.ends_with(ofDay)) return std::nullopt;
  const auto month = shortNumber(words.substr(0, middle));
  words.remove_suffix(ofDay.size());
  const auto day = shortNumber(words.substr(middle + ofMonth.size()));
  if (!month || !day) return std::nullopt;
  const auto found = latestDay(*month, *day, today);
  if (!found) return std::nullopt;
  return oneDay(*found, fmt::format("{}月{}日", *month, *day));
}

std::string tagLine(const Memo& memo) {
  std::string line;
  for (const std::string& tag : memo.tags)
    if (!TagNames::isHidden(tag) && tag != botTag)
      line += fmt::format("{}#{}", line.empty() ? "" : " ", tag);
  return line;
}

std::string entryText(const MemoQuery& query, const MemoEntry& entry) {
  const Memo& memo = *entry.memo;
  std::string place = memo.time;
  if (query.startDate.plusDays(1) < query.endDate)
    place = fmt::format("{} {}", entry.date.string(), memo.time);
  std::string text;
  for (const std::string& line :
       {place, tagLine(memo), MemoTextUtilities::stripOriginalComment(memo.body),
        std::string(hasMediaAttachments(memo) ? mediaMark : "")})
    if (!line.empty()) text += (text.empty() ? "" : "\n") + line;
  return text;
}

}  // namespace

std::optional<MemoQuery> parseMemoQuery(std::string_view text, Day today) {
  constexpr std::string_view sendMe = "发我";
  constexpr std::string_view sendToMe = "发给我";
  if (text.find(sendMe) == std::string_view::npos && text.find(sendToMe) == std::string_view::npos)
    return std::nullopt;
  std::string rest(text);
  for (const std::string_view verb : {std::string_view("把"), sendToMe, sendMe})
    rest = replacingAll(rest, verb, "");
  std::string_view asked = trimSpaceAndBreaks(rest);
  if (!asked.ends_with(diary)) return std::nullopt;
  asked.remove_suffix(diary.size());
  const std::size_t split = asked.rfind(of);
  if (split == std::string_view::npos) return std::nullopt;
  auto query = windowOf(trimHorizontal(asked.substr(0, split)), today);
  const std::string_view tag = trimHorizontal(asked.substr(split + of.size()));
  if (query && !tag.empty()) query->tag = tag;
  return query;
}

bool MemoQuery::asksFor(const Memo& memo) const {
  return !tag || std::ranges::any_of(memo.tags, [folded = foldedText(*tag)](const auto& one) {
    return foldedText(one) == folded;
  });
}

std::optional<std::string> extractTodaySentence(std::string_view text) {
  for (const std::string_view prefix : {"今天的一句：", "今日一句：", "今天的一句话："}) {
    if (!text.starts_with(prefix)) continue;
    const std::string_view sentence = trimSpaceAndBreaks(text.substr(prefix.size()));
    if (sentence.empty()) return std::nullopt;
    return std::string(sentence);
  }
  return std::nullopt;
}

std::vector<std::string> answerTo(const MemoQuery& query, std::vector<MemoEntry> found) {
  if (found.empty()) return {fmt::format("还没有{} 📭", query.label)};
  const auto place = [](const MemoEntry& entry) {
    return std::tuple(entry.date, std::string_view(entry.memo->time), entry.memo->seqNumber);
  };
  std::ranges::sort(found, {}, place);
  const std::string head = fmt::format("{}{}{}{}（{} 条）\n\n", query.label, of,
                                       query.tag.value_or(""), diary, found.size());
  MessageParts parts;
  for (std::size_t i = 0; i < found.size(); ++i)
    parts.add((i == 0 ? head : "") + entryText(query, found[i]), "\n\n——\n");
  return std::move(parts).messages();
}

std::vector<std::string> memoryOf(Day day, const Memo& memo) {
  std::string text = MemoTextUtilities::stripOriginalComment(memo.body);
  if (text.empty() && hasMediaAttachments(memo)) text = mediaMark;
  MessageParts parts;
  parts.add(fmt::format("📮 这是你 {} 的记录：\n\n{}", day.string(), text), "");
  return std::move(parts).messages();
}

bool hasMediaAttachments(const Memo& memo) {
  return std::ranges::any_of(memo.attachments, [](const std::string& name) {
    return AttachmentKinds::isImage(name) || AttachmentKinds::isAudio(name);
  });
}

}  // namespace nomely
