#include <filesystem>

#include <fmt/format.h>

#include "Feishu/Messages/FeishuInbox.h"
#include "Feishu/Messages/FeishuMemoWriter.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using Kind = FeishuMemoWriter::WriteResult::Kind;

class FeishuMemoWriterTest : public StoreTest {
 protected:
  [[nodiscard]] Moment at(std::string_view local) const {
    return DateFormatters::isoDateTime.parse(local).value();
  }
  Kind write(const std::string& body, const std::string& messageId, std::string_view local) {
    return writer.writeMemo({.body = body, .messageId = messageId, .date = at(local)}).kind;
  }

  MemoService memos{context};
  FeishuMemoWriter writer{memos};
};

TEST_F(FeishuMemoWriterTest, Tags) {
  EXPECT_THAT(FeishuMemoWriter::resolveTags("#跑步 #飞书 #_hidden 文", "om_1", {"跑步", "附加"}),
              ElementsAre("飞书", "_feishu_import", "_feishu_msg_om_1", "跑步", "附加"));
  EXPECT_THAT(FeishuMemoWriter::resolveTags("#_feishu_msg_om_2", ""),
              ElementsAre("飞书", "_feishu_import"));
}

TEST_F(FeishuMemoWriterTest, EachMessageOnce) {
  using enum Kind;
  EXPECT_EQ(write("晚安", "om_1", "2026-02-28 23:59:50"), success);
  EXPECT_EQ(write("别的", "om_1", "2026-03-01 00:00:10"), duplicate) << "the day before";
  EXPECT_EQ(write(" 晚安\n", "", "2026-02-28 08:00:00"), duplicate);
  EXPECT_EQ(write("晚安", "om_3", "2026-03-01 08:00:00"), success) << "on another day";
  EXPECT_EQ(write("om", "om", "2026-03-01 08:00:00"), success) << "a part of an id is none";
  // Media are told apart by their ids alone.
  const FeishuMemoWriter::Content picture{.body = "晚安", .messageId = "om_9", .date = clock.now()};
  EXPECT_EQ(writer.writeMemoWithAttachments(picture).kind, success);
  EXPECT_EQ(writer.writeMemoWithAttachments(picture).kind, duplicate);
  EXPECT_FALSE(writer.isDuplicateMessageId("om_1", day("2026-03-02")));
}

TEST_F(FeishuMemoWriterTest, WhatOthersDidToTheDayIsSeen) {
  const Day today = clock.today();
  EXPECT_EQ(write("一", "om_1", "2026-03-01 08:00:00"), Kind::success);
  // Another process, whose gate is another.
  const auto from = [&](const char* tag, const char* body) {
    return fmt::format("---\ntime: '08:00'\nsource: feishu\ntags: [{}]\n---\n\n{}", tag, body);
  };
  const auto file = [&](int number) { return context.paths.memoFile(today, number); };
  // The time of a folder moves in steps; a change within the step of the one before is not shown.
  auto later = [&, seconds = 0]() mutable {
    fs::last_write_time(context.paths.dayFolder(today),
                        fs::file_time_type::clock::now() + std::chrono::seconds(++seconds));
  };
  writeFile(file(2), from("_feishu_msg_om_2", "二"));
  EXPECT_EQ(write("x", "om_2", "2026-03-01 08:00:00"), Kind::duplicate);
  EXPECT_EQ(write("二", "om_x", "2026-03-01 08:00:00"), Kind::duplicate);
  // A text that was changed may be sent again; a deleted memo's message too.
  context.files.writeAtomically(file(1), from("_feishu_msg_om_1", "改了"));
  later();
  EXPECT_EQ(write("一", "om_3", "2026-03-01 08:00:00"), Kind::success);
  fs::remove(file(2));
  later();
  EXPECT_EQ(write("二", "om_2", "2026-03-01 08:00:00"), Kind::success);
  // The highest number counts, whoever gave it and whether it can be read or not.
  writeFile(file(950), "damaged");
  later();
  EXPECT_EQ(write("三", "om_4", "2026-03-01 08:00:00"), Kind::success);
  EXPECT_THAT(store.listNumbers(today), ElementsAre(1, 3, 4, 950, 951));
  // In the same process.
  EXPECT_EQ(memos.create(today, {.body = "窗口"}).seqNumber, 952);
  EXPECT_EQ(write("四", "om_5", "2026-03-01 08:00:00"), Kind::success);
  EXPECT_THAT(store.listNumbers(today), ElementsAre(1, 3, 4, 950, 951, 952, 953));
}

TEST_F(FeishuMemoWriterTest, TheInboxGivesBackWhatItTook) {
  using enum FeishuMessage::Kind;
  const FeishuInbox inbox(context);
  const fs::path inboxFolder = context.paths.metaFolder() / "feishu-inbox";
  const FeishuMessage messages[] = {
      {.kind = text, .text = "没有编号\n\"引号\""},
      {.kind = post,
       .messageId = "om_2",
       .text = "题",
       .resources = {{"k1", FeishuAPI::Resource::image}, {"k2", FeishuAPI::Resource::file}}}};
  const Moment sent = clock.now() - std::chrono::hours(30);
  for (const FeishuMessage& message : messages) {
    clock.advance(std::chrono::seconds(1));
    (void)inbox.put(message, sent);
  }
  (void)inbox.put(messages[1], clock.now());  // again
  EXPECT_TRUE(inbox.holds("om_2"));
  EXPECT_FALSE(inbox.holds(""));
  EXPECT_EQ(fs::status(inboxFolder).permissions(), fs::perms(0700));
  EXPECT_EQ(fs::status(inboxFolder / "om_2.json").permissions(), fs::perms(0600));
  writeFile(inboxFolder / "om_6.json", R"({"kind":"x","messageId":"","text":"","resources":[],)"
                                       R"("date":"2026","received":[]})");
  const FeishuInbox::Contents contents = inbox.contents();
  ASSERT_EQ(contents.entries.size(), 2U);
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(contents.entries[i].message, messages[i]);
    EXPECT_EQ(contents.entries[i].date, sent);
  }
  EXPECT_THAT(contents.damaged, ElementsAre("om_6.json"));
  for (int i = 0; i < 2; ++i) {
    writeFile(inboxFolder / "om_6.json", std::to_string(i));
    inbox.putAside("om_6.json");
  }
  EXPECT_EQ(readFile(inboxFolder / "aside" / "om_6.json"), "0");
  EXPECT_EQ(FeishuInbox::counts(context).aside, 2U);
}

}  // namespace
}  // namespace nomely::test
