#include <chrono>
#include <thread>

#include <gmock/gmock.h>
#include <signal.h>

#include "AI/Voice/LockedRecording.h"
#include "CLI/CommandTest.h"
#include "Support/Deadline.h"
#include "Support/LoopbackServer.h"
#include "Support/Sound.h"

namespace nomely::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

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
    auto run = std::make_unique<TerminalRun>(
        TestPaths::nomely, home.path(),
        ProgramCall{.arguments = std::move(more),
                    .environment = {{"NOMELY_ROOT", root.string()},
                                    {"ALSA_CONFIG_PATH", microphone.configuration().string()}}});
    run->waitFor("●");
    return run;
  }
  // Speaks for three seconds.
  void speak(TerminalRun& run) const {
    microphone.play(3.5);
    run.waitFor("00:03");
  }
  [[nodiscard]] Json memos() const { return json({"list", "--all"}); }
  [[nodiscard]] bool nothingIsLeft() const {
    return std::filesystem::is_empty(root / ".drafts/recordings");
  }

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
  const ProgramResult failed = this->run({"transcribe", "@"});
  EXPECT_EQ(failed.status, 1);
  EXPECT_THAT(failed.errors, HasSubstr("语音识别失败: HTTP 503: busy"));
  server.answer(path, {.body = R"({"text": "你好"})"});
  (void)json({"transcribe", "@", "--save"});
  EXPECT_EQ(memos().at(0)["body"], "原有\n\n你好");
}

TEST_F(VoiceCommandsTest, KilledRecordingIsTakenInByTheNext) {
  for (const bool mediaToo : {true, false}) {
    auto run = record();
    speak(*run);
    const pid_t program = childrenOf(::getpid()).at(0);
    const std::vector<pid_t> helpers = childrenOf(program);
    ASSERT_THAT(helpers, SizeIs(1));
    if (mediaToo) ::kill(helpers[0], SIGSTOP);
    ::kill(program, SIGKILL);
    if (mediaToo) ::kill(helpers[0], SIGKILL);
    run.reset();
    // The one that lives on saves what was said, and lets go.
    const auto deadline = std::chrono::steady_clock::now() + longestWait;
    while (LockedRecording::leftBehind(root / ".drafts/recordings").empty() &&
           std::chrono::steady_clock::now() < deadline)
      std::this_thread::yield();
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
  const struct {
    std::vector<std::string> arguments;
    int status;
    const char* text;
  } cases[] = {
      {{"transcribe", (home.path() / "a.m4a").string()}, 1, "nomely config set transcription"},
      {{"transcribe", "@"}, 4, "这条笔记没有录音"},
      {{"transcribe", (home.path() / "a.m4a").string(), "--save"}, 2, "--save 只用于笔记"},
      {{"record", "--device", "none"}, 1, "录音初始化失败: 找不到麦克风“none”"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.text);
    const ProgramResult result = run(test.arguments);
    EXPECT_EQ(result.status, test.status);
    EXPECT_THAT(result.errors, HasSubstr(test.text));
  }
  EXPECT_TRUE(nothingIsLeft());
  EXPECT_THAT(server.requests(), IsEmpty());
}

}  // namespace
}  // namespace nomely::test
