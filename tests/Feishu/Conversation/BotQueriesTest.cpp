#include <fmt/format.h>

#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Feishu/Conversation/BotFixture.h"
#include "Feishu/Conversation/BotQueries.h"
#include "Feishu/Conversation/MessageParts.h"
#include "Platform/Text/Unicode.h"

namespace nomely::test {
namespace {

TEST(MemoQueryTest, Questions) {
  const auto windowOf = [](const char* text) -> std::string {
    const auto query = parseMemoQuery(text, day("2026-03-01"));
    if (!query) return "none";
    return fmt::format("{} {} {} {}", query->startDate.string(), query->endDate.string(),
                       query->label, query->tag.value_or("-"));
  };
  for (const auto& [text, window] : std::vector<std::pair<const char*, const char*>>{
           {"把今天的日记发给我", "2026-03-01 2026-03-02 今天 -"},
           {"发我昨天的日记", "2026-02-28 2026-03-01 昨天 -"},
           {"发我 3月8日的读书日记", "2025-03-08 2025-03-09 3月8日 读书"},
           {"发我03月01日的日记", "2026-03-01 2026-03-02 3月1日 -"},
           {"发我2月29日的 工作/计划 日记", "2024-02-29 2024-03-01 2月29日 工作/计划"},
           {"把最近7天的的日记发给我", "none"},
           {"发我最近007天的日记", "2026-02-23 2026-03-02 最近7天 -"},
           {"发我最近9223372036854775807天的日记",
            "0001-01-01 2026-03-02 最近9223372036854775807天 -"},
           {"发我最近9223372036854775808天的日记", "none"},
           {"发我最近0天的日记", "none"},
           {"发我最近-3天的日记", "none"},
           {"发我2月30日的日记", "none"},
           {"发我0月1日的日记", "none"},
           {"发我003月1日的日记", "none"},
           {"发我3月日的日记", "none"},
           {"发我今天日记", "none"},
           {"发我今天的日记吧", "none"},
           {"今天的日记", "none"}})
    EXPECT_EQ(windowOf(text), window) << text;
}

TEST(MemoQueryTest, SentencesOfTheDay) {
  for (const auto& [text, sentence] :
       std::vector<std::pair<const char*, std::optional<std::string>>>{
           {"今日一句：天气真好", "天气真好"},
           {"今天的一句：　一\n二 ", "一\n二"},
           {"今天的一句话：话", "话"},
           {"今天的一句：", std::nullopt},
           {"今日一句:天气", std::nullopt},
           {"记：今日一句：天气", std::nullopt}})
    EXPECT_EQ(extractTodaySentence(text), sentence) << text;
}

// Parts by their lengths, and the lengths of the messages that they make.
TEST(MessagePartsTest, OnlyWhatIsTooLongIsCut) {
  using Lengths = std::vector<std::size_t>;
  for (const auto& [parts, messages] :
       std::vector<std::pair<Lengths, Lengths>>{{{2800}, {2800}},
                                                {{2801}, {2800, 1}},
                                                {{3000}, {2800, 200}},
                                                {{5600}, {2800, 2800}},
                                                {{1397, 1398}, {2800}},
                                                {{1398, 1398}, {1398, 1398}},
                                                {{10, 3000, 20}, {10, 2800, 225}},
                                                {{2000, 900, 900}, {2000, 1805}}}) {
    MessageParts made;
    for (const std::size_t length : parts) {
      std::string part;
      for (std::size_t i = 0; i < length; ++i) part += "👨‍👩‍👧";
      made.add(part, "\n\n——\n");
    }
    Lengths lengths;
    for (const std::string& message : std::move(made).messages())
      lengths.push_back(graphemeCount(message));
    EXPECT_EQ(lengths, messages);
  }
}

class BotQueriesTest : public BotTest {
 protected:
  void write(const char* date, DayStore::NewMemo memo) {
    (void)store.createMemo(day(date), std::move(memo));
  }
  // The replies once there are `count`.
  std::vector<std::string> answers(const std::string& text, std::size_t count = 1) {
    const std::string id = fmt::format("om_{}", ++asked);
    EXPECT_TRUE(queries.answer(text, id)) << text;
    platform.awaitReply(id, count);
    return platform.replies(id);
  }

  int asked = 0;
  FeishuReplies replies{bot, account, *log};
  BotQueries queries{bot, replies};
};

TEST_F(BotQueriesTest, AQuestionIsAnsweredWithWhatAReaderSees) {
  EXPECT_THAT(answers("发我今天的日记"), ElementsAre("还没有今天 📭"));
  write("2026-03-01", {.body = "晚", .tags = {"Read", "_x", "飞书", "a/b"}, .time = "21:00"});
  write("2026-03-01", {.body = MemoTextUtilities::appendOriginal("原文", "早"),
                       .attachments = {"A.jpg", "B.pdf"},
                       .time = "07:30"});
  write("2026-02-28", {.body = "昨", .tags = {"rEAD"}, .attachments = {"B.pdf"}, .time = "08:00"});
  write("2027-01-01", {.body = "将来", .time = "08:00"});
  EXPECT_THAT(answers("把今天的日记发给我"),
              ElementsAre("今天的日记（2 条）\n\n07:30\n早\n📎 附有图片或语音\n\n——\n"
                          "21:00\n#Read #a/b\n晚"));
  EXPECT_THAT(answers("发我最近100000天的read日记"),
              ElementsAre("最近100000天的read日记（2 条）\n\n2026-02-28 08:00\n#rEAD\n昨\n\n——\n"
                          "2026-03-01 21:00\n#Read #a/b\n晚"));
  EXPECT_THAT(answers("发我昨天的工作日记"), ElementsAre("还没有昨天 📭"));
  write("2026-02-27", {.body = std::string(3000, 'x'), .time = "08:00"});
  const std::string head = "2月27日的日记（1 条）\n\n08:00\n";
  const std::size_t first = 2800 - graphemeCount(head);
  EXPECT_THAT(answers("发我2月27日的日记", 2),
              ElementsAre(head + std::string(first, 'x'), std::string(3000 - first, 'x')));
  EXPECT_FALSE(queries.answer("发我2月30日的日记", "om_1"));
}

TEST_F(BotQueriesTest, AMemoryComesOutOfThePast) {
  EXPECT_THAT(answers("翻旧账"), ElementsAre("历史还不够久，先记一阵子再来翻 🍃"));
  write("2026-03-01", {.body = "今天"});
  write("2026-03-02", {.body = "明天"});
  std::filesystem::create_directory(folder.path() / "2026-2-1");
  writeFile(folder.path() / "2026-02-01", "no folder");
  EXPECT_THAT(answers("旧账"), ElementsAre("历史还不够久，先记一阵子再来翻 🍃"));
  std::filesystem::create_directory(folder.path() / "2025-12-24");
  EXPECT_THAT(answers("抽卡"), ElementsAre("那天是空白页，再抽一次？"));
  write("2025-12-24", {.body = MemoTextUtilities::appendOriginal("原文", "雪")});
  EXPECT_THAT(answers("时光抽卡"), ElementsAre("📮 这是你 2025-12-24 的记录：\n\n雪"));
  EXPECT_FALSE(queries.answer("抽卡！", "om_1"));
  (void)log->load();
  std::filesystem::remove_all(folder.path());
  EXPECT_THAT(answers("翻旧账"), ElementsAre("翻不到旧账，数据目录好像不见了 🍃"));
  EXPECT_THAT(logged(), testing::IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(folder.path()));
}

}  // namespace
}  // namespace nomely::test
