#include <gmock/gmock.h>

#include "CLI/CommandTest.h"
#include "Core/Markdown/Text/MemoTextUtilities.h"
#include "Platform/Text/Base64.h"
#include "Platform/Text/JsonReading.h"
#include "Support/LoopbackServer.h"

namespace nomely::test {
namespace {

using testing::HasSubstr;

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
  std::filesystem::path file = home.path() / "a.mp3";
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
  TerminalRun waiting(
      TestPaths::nomely, home.path(),
      {.arguments = {"speak", text, "-o", file.string()},
       .environment = {{"NOMELY_ROOT", root.string()}, {"NOMELY_TTS_ROOT", vendor.url()}}});
  (void)vendor.awaitRequest(3);
  waiting.type("\x03");
  EXPECT_EQ(waiting.finish(), 130);
  for (const auto& entry : std::filesystem::directory_iterator(home.path()))
    EXPECT_EQ(entry.path().extension(), "") << entry.path();
}

}  // namespace
}  // namespace nomely::test
