#include "Feishu/Conversation/BotQueries.h"

#include <algorithm>
#include <array>
#include <exception>
#include <random>
#include <string_view>
#include <utility>

#include "Core/Query/RootScan.h"
#include "Core/Storage/DayStore.h"
#include "Platform/Cancellation.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

constexpr std::array<std::string_view, 4> memoryWords{"翻旧账", "旧账", "抽卡", "时光抽卡"};

template <typename Value>
const Value& anyOf(const std::vector<Value>& values) {
  std::random_device system;
  return values[std::uniform_int_distribution<std::size_t>(0, values.size() - 1)(system)];
}

}  // namespace

bool BotQueries::isQuestion(const std::string& text) const {
  return std::ranges::find(memoryWords, text) != memoryWords.end() ||
         parseMemoQuery(text, storage_.clock.today()).has_value();
}

bool BotQueries::answer(const std::string& text, const std::string& messageId) {
  if (std::ranges::find(memoryWords, text) != memoryWords.end()) {
    inBackground(messageId, [this](const auto&) { return randomMemory(); });
    return true;
  }
  const auto query = parseMemoQuery(text, storage_.clock.today());
  if (!query) return false;
  inBackground(messageId,
               [this, query = *query](const auto& stop) { return memosFor(query, stop); });
  return true;
}

void BotQueries::inBackground(const std::string& messageId,
                              std::function<Messages(const std::stop_token&)> find) {
  jobs_.submit([this, messageId, find = std::move(find)](const std::stop_token& stop) {
    try {
      replies_.replyMessage(messageId, find(stop));
    } catch (const CancellationError&) {
      // The bot ends, and with it all that it had to say.
    } catch (const std::exception& error) {
      Log::error(LogChannel::feishu, "查询失败：{}", error.what());
    }
  });
}

BotQueries::Messages BotQueries::memosFor(const MemoQuery& query,
                                          const std::stop_token& stop) const {
  std::vector<MemoEntry> found;
  // It goes by the days that there are, however many are asked for.
  RootScan(storage_, stop)
      .forEach({.from = query.startDate, .to = query.endDate.plusDays(-1)},
               RootScan::Order::oldestFirst, [&](const MemoEntry& entry) {
                 if (query.asksFor(*entry.memo)) found.push_back(entry);
                 return true;
               });
  return answerTo(query, std::move(found));
}

BotQueries::Messages BotQueries::randomMemory() const {
  const auto days = pastDays();
  if (!days) return {"翻不到旧账，数据目录好像不见了 🍃"};
  if (days->empty()) return {"历史还不够久，先记一阵子再来翻 🍃"};
  const Day day = anyOf(*days);
  std::vector<Memo> memos = DayStore(storage_).listMemos(day);
  std::erase_if(memos, [](const Memo& memo) { return !isVisible(memo); });
  if (memos.empty()) return {"那天是空白页，再抽一次？"};
  return memoryOf(day, anyOf(memos));
}

std::optional<std::vector<Day>> BotQueries::pastDays() const {
  const auto& root = storage_.paths.rootURL;
  if (!storage_.files.isDirectory(root)) return std::nullopt;
  const Day today = storage_.clock.today();
  std::vector<Day> days;
  for (const DirectoryEntry& entry : storage_.files.listVisible(root))
    if (const auto day = Day::parse(entry.name);
        day && *day < today &&
        (entry.type == FileType::directory || storage_.files.isDirectory(root / entry.name)))
      days.push_back(*day);
  return days;
}

}  // namespace nomely
