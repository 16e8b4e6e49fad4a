#include <algorithm>
#include <set>

#include <gmock/gmock.h>

#include "Feishu/Messages/MessagesFixture.h"
#include "Platform/Files/FileError.h"
#include "Support/Sound.h"

namespace nomely::test {
namespace {

using Call = FeishuPlatform::Call;
using Kind = BotEvent::Kind;

const std::string thanks = "> 👍 已记录\n";
const std::string cry = "> 😢 记录失败\n";
const std::string picture = "01 09:30 “📷 来自飞书” .jpg\n";

class FeishuMessagesTest : public MessagesTest {
 protected:
  FeishuMessagesTest() {
    writeSilence(outside.path() / "voice.wav", 1);
    platform.setMedia("voice", readFile(outside.path() / "voice.wav"));
    platform.setMedia("jpeg", "\xFF\xD8\xFF\xE0 of many bytes");
    platform.setMedia("png", "\x89PNG\r\n\x1A\n picture");
    platform.setMedia("doc", "%PDF");
    platform.setMedia("empty", "");
    platform.setMedia("playlist", "#EXTM3U\nfile:///etc/passwd\n");
  }
  const FileError full{"写入", "disk", ENOSPC};
};

TEST_F(FeishuMessagesTest, EventsInMemosAndAnswersOut) {
  using namespace phone;
  FeishuConfig config = account.config();
  config.allowedOpenID = "ou_me";
  account.set(config);
  const Moment lastNight = DateFormatters::isoDateTime.parse("2026-02-28 23:59:50").value();
  const std::string jog = "跑步 #运动 #_x";
  const auto thanked = [](const std::string& text) { return "< " + text + "\n" + thanks; };
  const struct {
    std::vector<PhoneMessage> messages;
    std::string said;        // in the chat, by both
    std::string memos;       // that came of them
    std::string acks = "1";  // of each, one digit
  } cases[] = {
      {{{"a", "no JSON"}}, "", ""},
      {{{"a", ""}}, "", "", "0"},
      {{text("a", "群").inGroup(), image("b", "jpeg").by("ou_you"), text("c", "x").by("")},
       "",
       "",
       "111"},
      {{text("a", " \n"), {"b", "sticker", "{}"}, image("c", "../x")}, cry + cry + cry, "", "111"},
      {{text("a", "/状态")}, "> Nomely 已连接 ✓\n", ""},
      {{text("a", "/zt")}, "> Nomely 已连接 ✓\n", ""},
      {{text("a", "翻旧账")}, "< 翻旧账\n> 历史还不够久，先记一阵子再来翻 🍃\n", ""},
      {{text("a", jog), text("a", jog)}, thanked(jog), "01 09:30 “" + jog + "” 运动\n", "22"},
      {{text("a", "今日一句：晴"), text("b", "晴")},
       thanked("今日一句：晴") + "< 晴\n",
       "01 09:30 “晴”\n",
       "11"},
      {{text("a", "今天的一句：")}, thanked("今天的一句："), "01 09:30 “今天的一句：”\n"},
      {{text("a", "发我 2月30日的日记")},
       thanked("发我 2月30日的日记"),
       "01 09:30 “发我 2月30日的日记”\n"},
      {{text("a", "今日一句：晚安").at(lastNight)}, thanked("今日一句：晚安"), "28 23:59 “晚安”\n"},
      {{text("a", "时间不对").at(Moment())}, thanked("时间不对"), "01 09:30 “时间不对”\n"},
      {{post("a", "翻旧账", {"#旅行"})},
       thanked("翻旧账\n#旅行"),
       "01 09:30 “翻旧账\n#旅行” 旅行\n"},
      {{image("a", "jpeg")}, thanked("[图片]"), picture},
      {{image("a", "doc")}, thanked("[图片]"), picture},
      {{voice("a", "voice")},
       thanked("[语音]"),
       "01 09:30 “🎙️ 你好世界” .m4a你好世界\n"},
      {{voice("silent", "voice")},
       thanked("[语音]"),
       "01 09:30 “🎙️ 来自飞书的语音” .m4a\n"},
      {{post("a", "照片", {"img:jpeg", "img:png"})},
       thanked("照片"),
       "01 09:30 “照片” .jpg .png\n"},
      {{post("a", "", {"img:jpeg"})}, thanked("[图文]"), picture},
      {{file("a", "jpeg", "报告.PDF")}, thanked("[文件]"), "01 09:30 “报告.PDF” .pdf(报告.PDF)\n"},
      {{file("a", "jpeg", "x")}, thanked("[文件]"), "01 09:30 “x” .jpg(x)\n"},
  };
  std::size_t replies = 0;
  for (const auto& each : cases) {
    SCOPED_TRACE(each.said + each.messages[0].payload());
    spoken = each.messages[0].id() == "silent" ? "" : "你好世界";
    for (const PhoneMessage& message : each.messages)
      if (!run->deliver(message) && each.acks != "0") run->awaitEvents(1);
    for (std::size_t i = 0; i < each.messages.size(); ++i)
      EXPECT_EQ(std::to_string(run->acks(each.messages[i].id())), each.acks.substr(i, 1));
    if (each.said.ends_with("✓\n") || each.said.ends_with("🍃\n"))
      platform.awaitReply("a", ++replies);
    EXPECT_EQ(said(), each.said);
    EXPECT_EQ(memosInDiary(), each.memos);
    EXPECT_EQ(waiting(), 0U);
    startAnew();
  }
  EXPECT_EQ(platform.calls(Call::resource), 9U) << "none for a stranger";
  EXPECT_THAT(platform.complaints(), testing::IsEmpty());
}

// What can't be had: the bad news at once, more tries later, the good news with the first success.
TEST_F(FeishuMessagesTest, MediaThatFailAreTriedAgain) {
  EXPECT_FALSE(run->deliver(phone::image("a", "later")));
  EXPECT_EQ(run->awaitEvents(1)[0].kind, Kind::failed);
  EXPECT_TRUE(run->deliver(phone::image("a", "later"))) << "it lies in the inbox";
  // After 1, 2, 4 ... minutes, an hour at most; then each start tries at once.
  std::size_t calls = 1;
  for (const int minutes : {1, 2, 4, 8, 16, 32, 60, 60}) {
    eventually([&] { return timers.waiting() == 1; });
    timers.advance(std::chrono::minutes(minutes) - std::chrono::milliseconds(1));
    EXPECT_EQ(timers.waiting(), 1U);
    timers.advance(std::chrono::milliseconds(1));
    platform.awaitCalls(Call::resource, ++calls);
  }
  eventually([&] { return timers.waiting() == 1; });
  platform.setMedia("later", "\xFF\xD8\xFF");
  restart();
  EXPECT_EQ(run->awaitEvents(1)[0].place, (MemoPlace{clock.today(), 1}));
  EXPECT_EQ(said(), "< [图片]\n" + cry + thanks);
  platform.awaitReaction("a", "THUMBSUP");
  restart();
  EXPECT_TRUE(run->deliver(phone::image("a", "later")));
  EXPECT_EQ(memosInDiary(), picture) << "its moment is that of its arrival";
  EXPECT_EQ(waiting(), 0U);
}

TEST_F(FeishuMessagesTest, WhatNeverSucceedsIsKeptAside) {
  startAnew({{".meta/feishu-inbox/damaged.json", "{"}});
  EXPECT_EQ(run->awaitEvents(1)[0].kind, Kind::keptAside);
  for (const PhoneMessage& message : {phone::voice("a", "playlist"), phone::voice("b", "doc"),
                                      phone::image("c", "empty"), phone::file("d", "none", "x")})
    EXPECT_FALSE(run->deliver(message));
  run->awaitEvents(5);
  timers.advance(std::chrono::days(7) - std::chrono::minutes(1));
  restart();
  run->awaitEvents(4);
  eventually([&] { return timers.waiting() == 4; });
  EXPECT_EQ(waiting(), 4U);
  timers.advance(std::chrono::minutes(1));
  EXPECT_FALSE(run->awaitEvents(8).back().detail.empty());
  EXPECT_EQ(waiting(), 0U);
  EXPECT_EQ(FeishuInbox::counts(context).aside, 5U);
  EXPECT_EQ(memosInDiary(), "");
}

TEST_F(FeishuMessagesTest, WhoSendsTheCodeIsTheOnlyUser) {
  const BotPairing pairing(onThatDisk.stateFolder, context.files, clock);
  const std::string code = pairing.begin();
  saveAllowed = [&](const std::string&) { throw full; };
  EXPECT_TRUE(run->deliver(phone::text("group", code).inGroup()));
  EXPECT_FALSE(run->deliver(phone::text("a", code))) << "it could not be saved";
  std::string saved;
  saveAllowed = [&](const std::string& openID) { saved = openID; };
  EXPECT_TRUE(run->deliver(phone::text("a", code)));
  EXPECT_EQ(run->awaitEvents(2)[1].kind, Kind::paired);
  EXPECT_EQ(saved, "ou_me");
  EXPECT_EQ(account.config().allowedOpenID, "ou_me");
  EXPECT_FALSE(pairing.isWaiting());
  EXPECT_TRUE(run->deliver(phone::text("a", code)));
  EXPECT_TRUE(run->deliver(phone::text("b", code).by("ou_you")));
  EXPECT_EQ(platform.awaitReply("a"), "已绑定，以后只有你能使用这个机器人。");
  EXPECT_EQ(said(), cry + "> 已绑定，以后只有你能使用这个机器人。\n");
  EXPECT_EQ(memosInDiary(), "");
}

TEST_F(FeishuMessagesTest, TheOldestIdsAreForgotten) {
  const auto lines = [&](std::size_t from, std::size_t to) {
    log->clear();
    for (; from < to; ++from) run->deliver({"a" + std::to_string(from), "sticker", "{}"});
    return std::ranges::count(said(), '\n');
  };
  EXPECT_EQ(lines(0, FeishuMessages::maxDedup), 200);
  EXPECT_EQ(lines(0, FeishuMessages::maxDedup + 1), 1);
  EXPECT_EQ(lines(1, 2), 0);
  EXPECT_EQ(lines(0, 1), 1);
}

TEST_F(FeishuMessagesTest, ATextThatCannotBeWrittenWaitsInTheInbox) {
  beforeCall = [&](const std::string& path) {
    if (path.starts_with("2026")) throw full;
  };
  EXPECT_FALSE(run->deliver(phone::text("a", "你好")));
  EXPECT_EQ(waiting(), 1U);
  EXPECT_TRUE(run->deliver(phone::text("a", "你好")));
  beforeCall = {};
  timers.advance(std::chrono::minutes(1));
  run->awaitEvents(2);
  EXPECT_EQ(said(), "< 你好\n" + cry + thanks);
  EXPECT_EQ(memosInDiary(), "01 09:30 “你好”\n");
  EXPECT_EQ(waiting(), 0U);
}

// Whatever call fails, or all of them, and before whatever call the process ends: what was
// acknowledged is in the diary or the inbox, and in the end everything is in the diary once.
TEST_F(FeishuMessagesTest, NothingIsLostAndNothingTwice) {
  const PhoneMessage messages[] = {phone::text("a", "你好"), phone::image("b", "jpeg"),
                                   phone::post("c", "照片", {"img:png"})};
  const auto deliver = [&] {
    for (std::size_t i = 0; i < 3; ++i) {
      run->deliver(messages[i]);
      run->awaitEvents(i + 1);
    }
  };
  // Sends everything again, and returns how many files the day has then.
  const auto filesInTheEnd = [&](int moment) {
    for (const PhoneMessage& message : messages) {
      run->deliver(message);
      eventually([&] { return run->acks(message.id()) > 0; });
    }
    eventually([&] { return waiting() == 0; });
    const std::string found = memosInDiary();
    EXPECT_EQ(std::ranges::count(found, '\n'), 3) << moment << "\n" << found;
    for (const char* memo : {"“照片” .png", "“📷 来自飞书” .jpg", "“你好”"})
      EXPECT_NE(found.find(memo), std::string::npos) << moment << "\n" << found;
    return context.files.listVisible(context.paths.dayFolder(clock.today())).size();
  };
  beforeCall = [&](const std::string&) { throw full; };
  deliver();
  for (const PhoneMessage& message : messages) EXPECT_EQ(run->acks(message.id()), 0U);
  beforeCall = {};
  EXPECT_EQ(filesInTheEnd(0), 5U) << "without a start";
  int failingCall = 0;
  for (bool isStruck = true; isStruck && !HasFailure();) {
    startAnew();
    isStruck = false;
    beforeCall = [&, calls = 0, failing = ++failingCall](const std::string&) mutable {
      if (++calls != failing) return;
      isStruck = true;
      throw full;
    };
    deliver();
    beforeCall = {};
    restart();
    EXPECT_EQ(filesInTheEnd(failingCall), 5U) << "an attachment that no memo names";
  }
  EXPECT_GT(failingCall, 40);
  // The root as each call found it, with what had been acknowledged by then.
  std::vector<std::pair<Tree, std::set<std::string>>> moments;
  startAnew();
  beforeCall = [&](const std::string&) {
    auto& [tree, acknowledged] =
        moments.emplace_back(treeOn(folder.path()), std::set<std::string>());
    for (const PhoneMessage& message : messages)
      if (run->acks(message.id()) > 0) acknowledged.insert(message.id());
  };
  deliver();
  beforeCall = {};
  for (std::size_t i = 0; i < moments.size() && !HasFailure(); ++i) {
    startAnew(moments[i].first);
    for (const PhoneMessage& message : messages)
      if (!moments[i].second.contains(message.id())) run->deliver(message);
    eventually([&] { return waiting() == 0; });
    restart();
    // The end of a process can leave a copy that no memo names yet.
    EXPECT_LE(filesInTheEnd(static_cast<int>(i)), 6U);
  }
}

}  // namespace
}  // namespace nomely::test
