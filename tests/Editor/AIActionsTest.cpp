#include "AI/LanguageVendor.h"
#include "Editor/Intelligence/BeautifyChat.h"
#include "Editor/Intelligence/InputAI.h"
#include "Editor/Intelligence/SummaryGeneration.h"
#include "Platform/Concurrency/NotificationCenter.h"
#include "Platform/Concurrency/RunLoop.h"
#include "Support/Deadline.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using Manner = LoopbackServer::Manner;

// A vendor whose next reply may be held until the user has gone on.
class AIActionsTest : public StoreTest {
 protected:
  template <typename Done>
  void await(Done done) {
    ASSERT_TRUE(loop.runUntil(done, std::chrono::seconds(20)));
  }
  // The user's next doing, while the model thinks.
  void meanwhile(const std::function<void()>& doing) {
    vendor.answer(LanguageVendor::openAIPath, [this, doing](const LoopbackServer::Request&) {
      std::promise<void> done;
      loop.post([&] {
        doing();
        done.set_value();
      });
      inTime(done);
      return LoopbackServer::Answer{.body = LanguageVendor::reply("更后")};
    });
  }

  LanguageVendor vendor;
  AIConfig config = vendor.config();
  RunLoop loop;
  AIAccess access{[this] { return config; }, *vendor.http, loop, clock};
};

class InputAITest : public AIActionsTest {
 protected:
  void perform(InputAIAction action) {
    input.performAI(action);
    await([this] { return !input.isAIProcessing.get(); });
  }

  InputAI input{access};
};

TEST_F(InputAITest, EachActionInTheBox) {
  input.inputText.set(" \n");
  for (const InputAIActionInfo& info : InputAIActionInfo::all())
    if (info.action != InputAIAction::greeting) input.performAI(info.action);
  EXPECT_FALSE(input.isAIProcessing.get()) << "nothing to work on";
  EXPECT_TRUE(vendor.requests().empty());
  vendor.replies(" 好\n");
  using enum InputAIAction;
  for (const auto& [action, before, after, kept] :
       std::vector<std::tuple<InputAIAction, std::string, std::string, std::optional<std::string>>>{
           {greeting, " ", "好", {}},
           {greeting, "A", "好", {}},
           {summarize, "A", "A\n\n---\n## 摘要\n好", {}},
           {translate, " A\n", " A\n\n\n---\n## 翻译\n好", {}},
           {polish, " A\n", "好", " A\n"},
           {expand, "B", "好", " A\n"},
           {organize, "C", "好", " A\n"}}) {
    input.inputText.set(before);
    input.pending.set({.attachments = {before}, .transcripts = {}});
    perform(action);
    EXPECT_EQ(input.inputText.get(), after);
    EXPECT_EQ(input.originalTextBeforeAI.get(), kept);
    EXPECT_EQ(input.aiStatusMessage.get(), "已生成问候");
  }
  EXPECT_THAT(input.attachmentsSnapshotBeforeAI.get()->attachments, ElementsAre(" A\n"));
  EXPECT_FALSE(input.aiNotice.get());
  vendor.replies(" \n", "length");
  perform(polish);
  EXPECT_EQ(input.inputText.get(), "好") << "nothing came";
  EXPECT_TRUE(input.aiNotice.get());
  config.apiKey.clear();
  perform(polish);
  EXPECT_EQ(input.aiError.get(), "AI 未配置，请在设置中填写 API Key");
  EXPECT_EQ(input.inputText.get(), "好");
  EXPECT_FALSE(input.aiStatusMessage.get() || input.aiNotice.get());
}

TEST_F(InputAITest, WhatIsTypedMeanwhileIsKept) {
  using enum InputAIAction;
  for (const auto& [action, typed, after, kept] :
       std::vector<std::tuple<InputAIAction, std::string, std::string, std::optional<std::string>>>{
           {summarize, "A2", "A2\n\n---\n## 摘要\n更后", {}},
           {polish, "A2", "更后", "A2"},
           {polish, "A3", "更后", "A2\n\nA3"},
           {greeting, "A4", "更后", "A2\n\nA3\n\nA4"},
           {polish, "", "更后", "A2\n\nA3\n\nA4"}}) {
    input.inputText.set("A");
    meanwhile([&, text = typed] { input.inputText.set(text); });
    perform(action);
    EXPECT_EQ(input.inputText.get(), after);
    EXPECT_EQ(input.originalTextBeforeAI.get(), kept);
  }
  input.forgetOriginal();
  perform(polish);
  EXPECT_EQ(input.originalTextBeforeAI.get(), "更后")
      << "a box that was emptied kept what was sent";
}

TEST_F(AIActionsTest, BeautifyingStepByStep) {
  std::string applied;
  BeautifyChat chat(access, "原文",
                    {.onApply = [&](const std::string& text) { applied = text; }, .onCancel = {}});
  EXPECT_EQ(chat.visiblePresets().size(), 7U);
  chat.showAllPresets.set(true);
  EXPECT_EQ(chat.visiblePresets().back().number, 13);
  chat.inputText.set(" \n");
  chat.sendMessage();
  EXPECT_FALSE(chat.canSend() || chat.isProcessing.get());
  const auto isDone = [&] { return !chat.isProcessing.get(); };

  vendor.replies("第一稿");
  chat.inputText.set(" 加总结\n");
  chat.sendMessage();
  chat.send(BeautifyPreset::all()[0]);
  EXPECT_EQ(chat.inputText.get(), "");
  await(isDone);
  vendor.answer(LanguageVendor::openAIPath, {.status = 500, .body = "坏"});
  chat.send(BeautifyPreset::all()[1]);
  await(isDone);
  EXPECT_EQ(chat.errorMessage.get(), "API 错误: HTTP 500: 坏");
  EXPECT_EQ(chat.beautified.get(), "第一稿");
  vendor.replies("第二稿", "length");
  chat.send(BeautifyPreset::all()[11]);
  await(isDone);
  EXPECT_NE(vendor.requests().back().body.find("【当前内容】\\n第一稿"), std::string::npos);
  EXPECT_TRUE(chat.notice.get() && !chat.errorMessage.get());
  EXPECT_THAT(
      chat.chatMessages.get(),
      ElementsAre(BeautifyChat::Message{"user", "加总结"}, BeautifyChat::Message{"ai", "已调整"},
                  BeautifyChat::Message{"user", "润色表达：保持原意，让文字更顺、更自然。"},
                  BeautifyChat::Message{"ai", "失败：API 错误: HTTP 500: 坏"},
                  BeautifyChat::Message{"user", "压缩变短：删掉啰嗦表达，保留重点。"},
                  BeautifyChat::Message{"ai", "已调整"}));
  chat.apply();
  EXPECT_EQ(applied, "第二稿");
  // Closed while it waits.
  vendor.answer(LanguageVendor::openAIPath, {.manner = Manner::hanging});
  chat.send(BeautifyPreset::all()[0]);
  (void)vendor.awaitRequest(4);
}

TEST_F(AIActionsTest, SummariesOneAtATime) {
  const MemoService memos(context);
  const Day day = *Day::parse("2026-02-03");
  (void)store.createMemo(day, {.body = "二月"});
  std::vector<std::string> seen;
  SummaryGeneration generation(memos, access,
                               {.reload = [&] { seen.emplace_back("reload"); },
                                .failure = [&](const std::string& text) { seen.push_back(text); }});
  const auto note = [&](std::string_view name) {
    return NotificationCenter::shared().observe(
        name, [&seen, name](const std::string&) { seen.emplace_back(name); });
  };
  const Subscription tags = note(Notifications::refreshSidebarTags);
  const Subscription completed = note(Notifications::monthlySummaryCompleted);
  const auto isDone = [&] { return !generation.isGenerating.get(); };

  generation.generateSummary(SummaryStyle::diary, {2026, 1});
  await(isDone);
  generation.generateAnnualSummary(SummaryStyle::proValue, 2026);
  await(isDone);
  EXPECT_THAT(
      seen,
      ElementsAre("总结生成失败：该时间段没有任何笔记，无法生成总结。", "monthlySummaryCompleted",
                  "年度总结生成失败：该视角不支持此总结类型。", "monthlySummaryCompleted"));
  seen.clear();
  // The second takes the first one's place; a cancel after its reply has no effect.
  vendor.answerInTurn(LanguageVendor::openAIPath,
                      {{.manner = Manner::hanging}, {.body = LanguageVendor::reply("年")}});
  generation.generateSummary(SummaryStyle::warm, {2026, 2});
  (void)vendor.awaitRequest();
  generation.generateAnnualSummary(SummaryStyle::warm, 2026);
  await(isDone);
  generation.cancel();
  EXPECT_THAT(seen, ElementsAre("monthlySummaryCompleted", "reload", "refreshSidebarTags",
                                "monthlySummaryCompleted"));
  const std::vector<Memo> saved = store.listMemos(clock.today());
  ASSERT_EQ(saved.size(), 1U);
  EXPECT_EQ(saved[0].body, "# 2026年度总结·温情版\n\n年");
  EXPECT_THAT(saved[0].tags, ElementsAre("个人专栏", "个人专栏/年度总结/2026"));
}

}  // namespace
}  // namespace nomely::test
