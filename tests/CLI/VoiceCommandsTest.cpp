#include <signal.h>

#include "AI/Voice/LockedRecording.h"
#include "CLI/CommandTest.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Platform/Text/Base64.h"
#include "Platform/Text/JsonReading.h"
#include "Support/Deadline.h"
#include "Support/LoopbackServer.h"
#include "Support/Sound.h"

namespace nomely::test {
namespace {

constexpr auto path = "/v1/audio/transcriptions";

class VoiceCommandsTest : public CommandTest {
 protected:
  VoiceCommandsTest() {
    server.answer(path, {.body = R"({"text": "你好", "words":
        [{"word": "你好", "start": 0.5, "end": 1}]})"});
    (void)json({"config", "set", "transcription.baseURL", server.url()});
  }

  [[nodiscard]] std::unique_ptr<TerminalRun> record(std::vector<std::string> more = {}) const {
    more.insert(more.begin(), {"record", "--device", PlayedMicrophone::name});
    auto run = start({.arguments = std::move(more),
                      .environment = {{"ALSA_CONFIG_PATH", microphone.configuration().string()}}});
    run->waitFor("●");
    return run;
  }
  // Speaks for three seconds, and a little more: two recordings alike would be taken for one.
  void speak(TerminalRun& run, double seconds = 3.5) const {
    microphone.play(seconds);
    run.waitFor("00:03");
  }
  [[nodiscard]] Json memos() const { return json({"list", "--all"}); }
  [[nodiscard]] bool nothingIsLeft() const { return fs::is_empty(root / ".drafts/recordings"); }

  PlayedMicrophone microphone{home.path()};
  LoopbackServer server;
};

TEST_F(VoiceCommandsTest, InterruptEndsARecordingThatBecomesANote) {
  const auto run = record();
  speak(*run);
  run->type("\r");
  run->waitFor("‖");
  run->type("\r");
  run->waitFor("●");
  run->type("\x03");
  run->waitFor("你好");
  EXPECT_EQ(run->finish(), 0) << run->screen();
  const Json memo = memos().at(0);
  EXPECT_EQ(memo["body"], "你好");
  EXPECT_THAT(memo["tags"], IsEmpty());
  const std::string name = memo["attachments"][0];
  EXPECT_EQ(memo["audioTranscripts"][name]["segments"][0]["start"], 0.5);
  EXPECT_TRUE(nothingIsLeft());
  EXPECT_EQ(json({"transcribe", "@"})["text"], "你好");
}

TEST_F(VoiceCommandsTest, InterruptedTranscriptionKeepsTheNoteThatItIsAttachedTo) {
  (void)add("原有");
  server.answer(path, {.manner = LoopbackServer::Manner::hanging});
  const auto run = record({"--attach-to", "@"});
  speak(*run);
  run->type("\x03");
  run->waitFor("正在转文字...");
  (void)server.awaitRequest();
  run->type("\x03");
  run->waitFor("录音已保存，没有转文字。");
  EXPECT_EQ(run->finish(), 0);
  EXPECT_EQ(memos().at(0)["body"], "原有");
  EXPECT_THAT(memos().at(0)["attachments"], SizeIs(1));

  server.answer(path, {.status = 503, .body = "busy"});
  expectFailure({"transcribe", "@"}, 1, "语音识别失败: HTTP 503: busy");
  server.answer(path, {.body = R"({"text": "你好"})"});
  (void)json({"transcribe", "@", "--save"});
  EXPECT_EQ(memos().at(0)["body"], "原有\n\n你好");
}

TEST_F(VoiceCommandsTest, KilledRecordingIsTakenInByTheNext) {
  for (const bool mediaToo : {true, false}) {
    auto run = record();
    speak(*run, mediaToo ? 3.5 : 3.7);
    const pid_t program = childrenOf(::getpid()).at(0);
    const std::vector<pid_t> helpers = childrenOf(program);
    ASSERT_THAT(helpers, SizeIs(1));
    if (mediaToo) ::kill(helpers[0], SIGSTOP);
    ::kill(program, SIGKILL);
    if (mediaToo) ::kill(helpers[0], SIGKILL);
    run.reset();
    // The one that lives on saves what was said, and lets go.
    const auto left = [&] { return LockedRecording::leftBehind(root / ".drafts/recordings"); };
    eventually([&] { return left().size() == 1; });
  }
  EXPECT_FALSE(nothingIsLeft());
  const auto next = record();
  EXPECT_THAT(next->screen(), HasSubstr("1 段录音，已挂在「语音」标签下"));
  next->type("\x03");
  EXPECT_EQ(next->finish(), 1);
  EXPECT_THAT(next->screen(), HasSubstr("没有录到声音"));
  const Json all = memos();
  ASSERT_THAT(all, SizeIs(2));
  for (const Json& memo : all) {
    EXPECT_THAT(memo["tags"], ElementsAre("语音"));
    EXPECT_EQ(json({"transcribe", (root / memo["date"].get<std::string>() /
                                   memo["attachments"][0].get<std::string>())
                                      .string()})["text"],
              "你好");
  }
  EXPECT_TRUE(nothingIsLeft());
}

TEST_F(VoiceCommandsTest, WhatCantBeHeardIsSaid) {
  writeFile(home.path() / "a.m4a", "#EXTM3U\n/etc/passwd\n");
  (void)add("没有录音");
  (void)json({"config", "set", "transcription.baseURL", ""});
  const std::string list = (home.path() / "a.m4a").string();
  expectFailure({"transcribe", list}, 1, "nomely config set transcription");
  expectFailure({"transcribe", "@"}, 4, "这条笔记没有录音");
  expectFailure({"transcribe", list, "--save"}, 2, "--save 只用于笔记");
  expectFailure({"record", "--device", "none"}, 1, "录音初始化失败: 找不到麦克风“none”");
  EXPECT_TRUE(nothingIsLeft());
  EXPECT_THAT(server.requests(), IsEmpty());
}

class SpeakCommandTest : public CommandTest {
 protected:
  void SetUp() override {
    for (const char* secret : {"tts-key", "tts-appid"})
      EXPECT_EQ(run(ProgramCall{.arguments = {"secret", "set", secret}, .input = "k1\n"}).status,
                0);
    vendor.answer(path, [](const LoopbackServer::Request& request) {
      return LoopbackServer::Answer{
          .body = Json{{"code", 3000},
                       {"data",
                        encodeBase64(readJson(request.body)["request"]["text"].get<std::string>())}}
                      .dump()};
    });
  }
  [[nodiscard]] ProgramResult speak(std::vector<std::string> words) const {
    words.insert(words.begin(), "speak");
    words.insert(words.end(), {"-o", file.string()});
    return run(ProgramCall{.arguments = std::move(words),
                           .environment = {{"NOMELY_TTS_ROOT", vendor.url()}}});
  }

  static constexpr const char* path = "/api/v1/tts";
  LoopbackServer vendor;
  fs::path file = home.path() / "a.mp3";
};

TEST_F(SpeakCommandTest, ReadsANoteAsItIsShown) {
  (void)add(MemoTextUtilities::appendOriginal(
      "旧稿",
      "# 早上\n\n- **跑步** [路线](https://a.com)\n- @[[memo_1|小王]] ~~不~~ `x`\n\n"
      "| 一 | 二 |\n|---|---|\n| 三 | **四** |\n\n---\n\n> 引用 <span style=\"color: "
      "#FF0000\">红</span>\n\n```\ncode\n```\n\n```mermaid\ngraph\n```"));
  const ProgramResult spoken = speak({"2026-03-01/1", "--json"});
  EXPECT_EQ(spoken.status, 0) << spoken.errors;
  EXPECT_EQ(Json::parse(spoken.output), Json({{"file", file.string()}}));
  EXPECT_EQ(readFile(file), "早上\n跑步 路线\n@小王 不 x\n一，二\n三，四\n引用 红\ncode");
  EXPECT_EQ(speak({"别的"}).status, 2) << "asks before it replaces";
  EXPECT_EQ(speak({"两个", "**词**", "-y"}).status, 0);
  EXPECT_EQ(readFile(file), "两个 **词**");
  EXPECT_EQ(speak({"2026-03-01/9", "-y"}).status, 4);
  EXPECT_EQ(speak({" ", "-y"}).status, 2);
}

TEST_F(SpeakCommandTest, WhatFailsLeavesNoFile) {
  vendor.answerInTurn(
      path, {{.body = R"({"code": 3000, "data": "AAAA"})"}, {.status = 500, .body = "k1"}});
  std::string text(600, 'x');
  const ProgramResult failed = speak({text});
  EXPECT_EQ(failed.status, 1);
  EXPECT_THAT(failed.errors, HasSubstr("合成失败: HTTP 500: ***"));
  vendor.answer(path, {.manner = LoopbackServer::Manner::hanging});
  const auto waiting = start({.arguments = {"speak", text, "-o", file.string()},
                              .environment = {{"NOMELY_TTS_ROOT", vendor.url()}}});
  (void)vendor.awaitRequest(3);
  waiting->type("\x03");
  EXPECT_EQ(waiting->finish(), 130);
  for (const auto& entry : fs::directory_iterator(home.path()))
    EXPECT_EQ(entry.path().extension(), "") << entry.path();
}

}  // namespace
}  // namespace nomely::test
