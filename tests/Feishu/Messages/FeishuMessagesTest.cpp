#include <algorithm>
#include <set>

#include <gmock/gmock.h>

#include "Feishu/Messages/MessagesFixture.h"
#include "Platform/Files/FileError.h"
#include "Support/MemoryFileSystem.h"
#include "Support/Sound.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;
using Call = FeishuPlatform::Call;

const std::string jpeg = "\xFF\xD8\xFF\xE0 picture of many bytes";
const std::string png = "\x89PNG\r\n\x1A\n picture";

class FeishuMessagesTest : public MessagesTest {
 protected:
  FeishuMessagesTest() {
    writeSilence(outside.path() / "voice.wav", 1);
    platform.setMedia("voice", readFile(outside.path() / "voice.wav"));
    platform.setMedia("jpeg", jpeg);
    platform.setMedia("png", png);
    platform.setMedia("doc", "%PDF");
    platform.setMedia("empty", "");
    platform.setMedia("playlist", "#EXTM3U\nfile:///etc/passwd\n");
  }

  void emptyRoot() const {
    fs::remove_all(folder.path());
    fs::create_directory(folder.path());
  }
};

TEST_F(FeishuMessagesTest, EventsInMemosAndAnswersOut) {
  using namespace phone;
  const auto at = [](const char* local) {
    return DateFormatters::isoDateTime.parse(local).value();
  };
  const std::string thanks = "> 👍 已记录\n";
  const std::string cry = "> 😢 记录失败\n";
  account.set([&] {
    FeishuConfig config = platform.config();
    config.allowedOpenID = "ou_me";
    return config;
  }());
  struct Case {
    std::vector<PhoneMessage> messages;
    std::string acks;   // of each, one digit
    std::string said;   // in the chat, by both
    std::string memos;  // that came of them
  };
  const Case cases[] = {
      {{{"a", "no JSON"}}, "1", "", ""},
      {{{"a", ""}}, "0", "", ""},
      {{text("a", "群里的").inGroup()}, "1", "", ""},
      {{text("a", "别人的").by("ou_you"), image("b", "jpeg").by("ou_you"),
        text("c", "谁的").by("")},
       "111",
       "",
       ""},
      {{text("a", " \n")}, "1", cry, ""},
      {{{"a", "sticker", "{}"}}, "1", cry, ""},
      {{image("a", "../x")}, "1", cry, ""},
      {{text("a", "/状态")}, "1", "> Nomely 已连接 ✓\n", ""},
      {{text("a", "/zt")}, "1", "> Nomely 已连接 ✓\n", ""},
      {{text("a", "翻旧账")}, "1", "< 翻旧账\n> 历史还不够久，先记一阵子再来翻 🍃\n", ""},
      {{text("a", "跑步 #运动 #_x"), text("a", "跑步 #运动 #_x")},
       "22",
       "< 跑步 #运动 #_x\n" + thanks,
       "01 09:30 “跑步 #运动 #_x” 运动\n"},
      {{text("a", "跑步"), text("b", "跑步")},
       "11",
       "< 跑步\n" + thanks + "< 跑步\n",
       "01 09:30 “跑步”\n"},
      {{text("a", "今日一句：天气真好"), text("b", "天气真好")},
       "11",
       "< 今日一句：天气真好\n" + thanks + "< 天气真好\n",
       "01 09:30 “天气真好”\n"},
      {{text("a", "今天的一句：")}, "1", "< 今天的一句：\n" + thanks, "01 09:30 “今天的一句：”\n"},
      {{text("a", "发我 2月30日的日记")},
       "1",
       "< 发我 2月30日的日记\n" + thanks,
       "01 09:30 “发我 2月30日的日记”\n"},
      {{text("a", "今日一句：昨夜").at(at("2026-02-28 23:59:50"))},
       "1",
       "< 今日一句：昨夜\n" + thanks,
       "28 23:59 “昨夜”\n"},
      {{text("a", "时间不对").at(at("1970-01-02 00:00:00"))},
       "1",
       "< 时间不对\n" + thanks,
       "01 09:30 “时间不对”\n"},
      {{post("a", "周末", {"去海边 #旅行"})},
       "1",
       "< 周末\n去海边 #旅行\n" + thanks,
       "01 09:30 “周末\n去海边 #旅行” 旅行\n"},
      {{post("a", "翻旧账", {""})}, "1", "< 翻旧账\n" + thanks, "01 09:30 “翻旧账”\n"},
      {{image("a", "jpeg")}, "1", "< [图片]\n" + thanks, "01 09:30 “📷 来自飞书” .jpg\n"},
      {{image("a", "png")}, "1", "< [图片]\n" + thanks, "01 09:30 “📷 来自飞书” .png\n"},
      {{image("a", "doc")}, "1", "< [图片]\n" + thanks, "01 09:30 “📷 来自飞书” .jpg\n"},
      {{voice("a", "voice")},
       "1",
       "< [语音]\n" + thanks,
       "01 09:30 “🎙️ 你好世界” .m4a“你好世界”\n"},
      {{post("a", "照片", {"img:jpeg", "img:png"})},
       "1",
       "< 照片\n" + thanks,
       "01 09:30 “照片” .jpg .png\n"},
      {{post("a", "", {"img:jpeg"})}, "1", "< [图文]\n" + thanks, "01 09:30 “📷 来自飞书” .jpg\n"},
      {{file("a", "doc", "报告.PDF")},
       "1",
       "< [文件]\n" + thanks,
       "01 09:30 “报告.PDF” .pdf(报告.PDF)\n"},
      {{file("a", "jpeg", "x")}, "1", "< [文件]\n" + thanks, "01 09:30 “x” .jpg(x)\n"},
  };
  std::size_t replies = 0;
  for (const Case& each : cases) {
    SCOPED_TRACE(each.said + each.messages[0].payload());
    std::size_t media = 0;
    for (const PhoneMessage& message : each.messages)
      if (!run->deliver(message) && each.acks != "0") run->awaitEvents(++media);
    for (std::size_t i = 0; i < each.messages.size(); ++i)
      EXPECT_EQ(std::to_string(run->acks(each.messages[i].id())), each.acks.substr(i, 1));
    if (each.said.ends_with("✓\n") || each.said.ends_with("🍃\n"))
      platform.awaitReply("a", ++replies);
    EXPECT_EQ(said(), each.said);
    EXPECT_EQ(memosInDiary(), each.memos);
    EXPECT_EQ(waiting(), 0U);
    run.reset();
    emptyRoot();
    run.emplace(bot, account);
  }
  EXPECT_EQ(platform.calls(Call::resource), 9U) << "none for a stranger";
  EXPECT_THAT(platform.complaints(), testing::IsEmpty());
}

// What can't be had: the bad news at once, more tries later, the good news with the first success.
TEST_F(FeishuMessagesTest, MediaThatFailAreTriedAgain) {
  platform.setMedia("jpeg", "");
  EXPECT_FALSE(run->deliver(phone::image("a", "jpeg")));
  EXPECT_EQ(run->awaitEvents(1)[0].kind, BotEvent::Kind::failed);
  EXPECT_EQ(said(), "< [图片]\n> 😢 记录失败\n");
  EXPECT_EQ(run->acks("a"), 0U);
  EXPECT_EQ(waiting(), 1U);
  EXPECT_TRUE(run->deliver(phone::image("a", "jpeg"))) << "it lies in the inbox";
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
  platform.setMedia("jpeg", jpeg);
  restart();
  const auto events = run->awaitEvents(1);
  EXPECT_EQ(events[0].kind, BotEvent::Kind::recorded);
  EXPECT_EQ(events[0].place, (MemoPlace{clock.today(), 1}));
  EXPECT_EQ(said(), "< [图片]\n> 😢 记录失败\n> 👍 已记录\n");
  EXPECT_EQ(memosInDiary(), "01 09:30 “📷 来自飞书” .jpg\n") << "its moment is that of its arrival";
  EXPECT_EQ(waiting(), 0U);
  platform.awaitReaction("a", "THUMBSUP");
  restart();
  EXPECT_TRUE(run->deliver(phone::image("a", "jpeg")));
  EXPECT_EQ(memosInDiary(), "01 09:30 “📷 来自飞书” .jpg\n");
}

TEST_F(FeishuMessagesTest, WhatNeverSucceedsIsKeptAside) {
  writeFile(context.paths.metaFolder() / "feishu-inbox" / "damaged.json", "{");
  restart();
  EXPECT_EQ(run->awaitEvents(1)[0].kind, BotEvent::Kind::keptAside);
  const PhoneMessage messages[] = {phone::voice("a", "playlist"), phone::voice("b", "doc"),
                                   phone::image("c", "empty"), phone::file("d", "none", "x")};
  for (const PhoneMessage& message : messages) EXPECT_FALSE(run->deliver(message));
  run->awaitEvents(5);
  eventually([&] { return timers.waiting() == 4; });
  EXPECT_EQ(waiting(), 4U);
  timers.advance(std::chrono::days(7) - std::chrono::minutes(1));
  restart();
  run->awaitEvents(4);
  eventually([&] { return timers.waiting() == 4; });
  timers.advance(std::chrono::minutes(1));
  for (const BotEvent& event : run->awaitEvents(8)) EXPECT_FALSE(event.detail.empty());
  EXPECT_EQ(waiting(), 0U);
  EXPECT_EQ(FeishuInbox::counts(context).aside, 5U);
  EXPECT_EQ(memosInDiary(), "");
}

TEST_F(FeishuMessagesTest, AVoiceWithoutWordsIsRecordedAllTheSame) {
  spoken = "";
  EXPECT_FALSE(run->deliver(phone::voice("a", "voice")));
  run->awaitEvents(1);
  EXPECT_EQ(memosInDiary(), "01 09:30 “🎙️ 来自飞书的语音” .m4a\n");
  EXPECT_EQ(said(), "< [语音]\n> 👍 已记录\n");
}

TEST_F(FeishuMessagesTest, WhoSendsTheCodeIsTheOnlyUser) {
  std::string saved;
  bool canSave = false;
  bot.saveAllowedOpenID = [&](const std::string& openID) {
    if (!canSave) throw FileError("写入", "feishu-config.yaml", EIO);
    saved = openID;
  };
  restart();
  const BotPairing pairing(bot.stateFolder, context.files, clock);
  const std::string code = pairing.begin();
  EXPECT_TRUE(run->deliver(phone::text("group", code).inGroup()));
  EXPECT_FALSE(run->deliver(phone::text("a", code))) << "it could not be saved";
  EXPECT_EQ(run->awaitEvents(1)[0].kind, BotEvent::Kind::failed);
  canSave = true;
  EXPECT_TRUE(run->deliver(phone::text("a", code)));
  EXPECT_EQ(run->awaitEvents(2)[1].kind, BotEvent::Kind::paired);
  EXPECT_EQ(saved, "ou_me");
  EXPECT_EQ(account.config().allowedOpenID, "ou_me");
  EXPECT_FALSE(pairing.isWaiting());
  EXPECT_TRUE(run->deliver(phone::text("a", code)));
  EXPECT_TRUE(run->deliver(phone::text("b", code).by("ou_you")));
  EXPECT_EQ(platform.awaitReply("a"), "已绑定，以后只有你能使用这个机器人。");
  EXPECT_EQ(said(), "> 😢 记录失败\n> 已绑定，以后只有你能使用这个机器人。\n");
  EXPECT_EQ(memosInDiary(), "");
}

TEST_F(FeishuMessagesTest, TheOldestIdsAreForgotten) {
  const auto many = [&](const char* prefix) {
    for (std::size_t i = 0; i < FeishuMessages::maxDedup; ++i)
      run->deliver(PhoneMessage(prefix + std::to_string(i), "sticker", "{}"));
  };
  many("a");
  const std::string before = said();
  many("a");
  EXPECT_EQ(said(), before) << "all are known";
  run->deliver(PhoneMessage("b", "sticker", "{}"));
  log->clear();
  run->deliver(PhoneMessage("a1", "sticker", "{}"));
  EXPECT_EQ(said(), "");
  run->deliver(PhoneMessage("a0", "sticker", "{}"));
  EXPECT_EQ(said(), "> 😢 记录失败\n");
}

// Runs over a disk that a test can fill up, or look at before each call.
class DiskTest : public FeishuMessagesTest {
 protected:
  DiskTest() { run.emplace(failing, account); }

  void restart() {
    run.reset();
    run.emplace(failing, account);
  }

  // Called before each call that may change the root, but for the log's: with the path below it.
  std::function<void(const std::string&)> beforeCall;
  std::mutex calling;
  FaultyFileSystem files{posixFileSystem(), {}, [this](const FaultyFileSystem::Call& call) {
                           const std::string path = call.path;
                           const std::string root = folder.path().string() + "/";
                           if (!path.starts_with(root) ||
                               path.find("feishu-log") != std::string::npos ||
                               call.name == "stat" || call.name == "read" || call.name == "list")
                             return;
                           const std::lock_guard lock(calling);
                           if (beforeCall) beforeCall(path.substr(root.size()));
                         }};
  MemoService onFailingDisk{{context.paths, FileManager(files), clock}};
  FeishuContext failing{.memos = onFailingDisk,
                        .searchIndex = index,
                        .http = *http,
                        .webSockets = *sockets,
                        .timers = timers,
                        .platformRoot = platform.root(),
                        .temporaryFolder = bot.temporaryFolder,
                        .stateFolder = bot.stateFolder,
                        .makeTranscriber = bot.makeTranscriber,
                        .saveAllowedOpenID = {},
                        .onEvent = {}};
  const FileError full{"写入", "disk", ENOSPC};
};

TEST_F(DiskTest, ATextThatCannotBeWrittenWaitsInTheInbox) {
  beforeCall = [&](const std::string& path) {
    if (path.starts_with("2026")) throw full;
  };
  EXPECT_FALSE(run->deliver(phone::text("a", "你好")));
  EXPECT_EQ(said(), "< 你好\n> 😢 记录失败\n");
  EXPECT_EQ(waiting(), 1U);
  EXPECT_TRUE(run->deliver(phone::text("a", "你好")));
  beforeCall = {};
  timers.advance(std::chrono::minutes(1));
  run->awaitEvents(2);
  EXPECT_EQ(said(), "< 你好\n> 😢 记录失败\n> 👍 已记录\n");
  EXPECT_EQ(memosInDiary(), "01 09:30 “你好”\n");
  EXPECT_EQ(waiting(), 0U);
}

TEST_F(DiskTest, AFullDiskKeepsEventsUnacknowledged) {
  const PhoneMessage messages[] = {phone::text("a", "你好"), phone::image("b", "jpeg")};
  beforeCall = [&](const std::string&) { throw full; };
  for (const PhoneMessage& message : messages) EXPECT_FALSE(run->deliver(message));
  for (const PhoneMessage& message : messages)
    EXPECT_FALSE(run->deliver(message)) << "worked on anew";
  run->awaitEvents(4);
  EXPECT_EQ(waiting(), 0U);
  beforeCall = {};
  EXPECT_TRUE(run->deliver(messages[0]));
  EXPECT_FALSE(run->deliver(messages[1]));
  run->awaitEvents(6);
  EXPECT_EQ(run->acks("b"), 1U);
  EXPECT_EQ(memosInDiary(), "01 09:30 “📷 来自飞书” .jpg\n01 09:30 “你好”\n");
}

// Whatever call fails, and before whatever call the process ends: what was acknowledged is in the
// diary or the inbox, and in the end everything is in the diary once.
TEST_F(DiskTest, NothingIsLostAndNothingTwice) {
  const PhoneMessage messages[] = {phone::text("a", "你好"), phone::image("b", "jpeg"),
                                   phone::post("c", "照片", {"img:png"})};
  const auto deliver = [&] {
    for (std::size_t i = 0; i < 3; ++i) {
      run->deliver(messages[i]);
      run->awaitEvents(i + 1);
    }
  };
  const auto expectAll = [&](const char* what, int call) {
    run.reset();
    run.emplace(failing, account);
    for (const PhoneMessage& message : messages) {
      run->deliver(message);
      eventually([&] { return run->acks(message.id()) == 1; });
    }
    eventually([&] { return waiting() == 0; });
    const std::string found = memosInDiary();
    EXPECT_EQ(std::ranges::count(found, '\n'), 3) << what << call << "\n" << found;
    for (const char* part : {"“照片” .png", "“📷 来自飞书” .jpg", "“你好”"})
      EXPECT_NE(found.find(part), std::string::npos) << what << call << found;
    return context.files.listVisible(context.paths.dayFolder(clock.today())).size();
  };
  const auto begin = [&] {
    run.reset();
    emptyRoot();
    run.emplace(failing, account);
  };
  int failingCall = 0;
  for (bool isStruck = true; isStruck && !HasFailure();) {
    begin();
    isStruck = false;
    beforeCall = [&, calls = 0, failing = ++failingCall](const std::string&) mutable {
      if (++calls != failing) return;
      isStruck = true;
      throw full;
    };
    deliver();
    beforeCall = {};
    EXPECT_EQ(expectAll("failing call ", failingCall), 5U) << "an attachment that no memo names";
  }
  EXPECT_GT(failingCall, 40);
  // The root as each call found it, with what had been acknowledged by then.
  struct Moment {
    Tree tree;
    std::set<std::string> acknowledged;
  };
  std::vector<Moment> moments;
  begin();
  beforeCall = [&](const std::string&) {
    Moment& moment = moments.emplace_back(Moment{treeOn(folder.path()), {}});
    for (const PhoneMessage& message : messages)
      if (run->acks(message.id()) > 0) moment.acknowledged.insert(message.id());
  };
  deliver();
  beforeCall = {};
  for (std::size_t i = 0; i < moments.size() && !HasFailure(); ++i) {
    run.reset();
    emptyRoot();
    writeTree(folder.path(), moments[i].tree);
    run.emplace(failing, account);
    for (const PhoneMessage& message : messages)
      if (!moments[i].acknowledged.contains(message.id())) run->deliver(message);
    eventually([&] { return waiting() == 0; });
    // The end of a process can leave a copy that no memo names yet.
    EXPECT_LE(expectAll("end before call ", static_cast<int>(i) + 1), 6U);
  }
}

}  // namespace
}  // namespace nomely::test
