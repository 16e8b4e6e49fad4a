#include "AI/LanguageVendor.h"
#include "CLI/CommandTest.h"

namespace nomely::test {
namespace {

// The real program and a vendor on this machine.
class AiCommandTest : public CommandTest {
 protected:
  AiCommandTest() { configure("true"); }

  void configure(const std::string& feature) const {
    writeFile(root / "_config" / "ai-config.yaml",
              "provider: custom\nmodel: model-1\napiKey: 'sk-planted'\nbaseURL: " + vendor.url() +
                  "\nfeatures:\n  writingAssistant: " + feature + "\n  beautify: " + feature +
                  "\n");
  }

  LanguageVendor vendor;
};

TEST_F(AiCommandTest, ActionsOnText) {
  vendor.replies("好\x1B[2J");
  for (const auto& [arguments, input, message] :
       std::vector<std::tuple<std::vector<std::string>, std::string, std::string>>{
           {{"test"}, "", "Say 'OK' in one word."},
           {{"polish", "一", "二"}, "", "一 二"},
           {{"translate", "-"}, "行一\r\n行二\n", "行一\n行二"},
           {{"summarize"}, "管道", "管道"},
           {{"beautify", "文", "--preset", "6"},
            "",
            "【原始笔记】\n文\n\n【当前内容】\n文\n\n【用户要求】\n"
            "改成清单：把段落改成项目符号列表。\n\n请根据用户要求修改当前内容，只返回修改后的 "
            "Markdown。"}}) {
    std::vector<std::string> words = {"ai"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const ProgramResult result = run({.arguments = words, .input = input});
    EXPECT_EQ(result.output, arguments[0] == "test" ? "✓ 好\uFFFD[2J\n" : "好\uFFFD[2J\n");
    EXPECT_EQ(result.errors, "");
    const LoopbackServer::Request asked = vendor.requests().back();
    EXPECT_EQ(Json::parse(asked.body)["messages"][1]["content"], message);
    EXPECT_EQ(asked.headers.at("authorization"), "Bearer sk-planted");
  }
  EXPECT_EQ(json({"ai", "beautify", "文", "--preset", "生成标题"}),
            (Json{{"result", "好\x1B[2J"}}));
  vendor.replies("半", "length");
  EXPECT_EQ(json({"ai", "greeting"}), (Json{{"result", "半"}, {"isCutOff", true}}));
  EXPECT_THAT(run({"ai", "expand", "x"}).errors, HasSubstr("长度上限"));
}

TEST_F(AiCommandTest, WhatFails) {
  vendor.answer(LanguageVendor::openAIPath, {.status = 401, .body = "no sk-planted"});
  for (const auto& [arguments, status, error] :
       std::vector<std::tuple<std::vector<std::string>, int, std::string>>{
           {{"ai"}, 2, "请写明要做什么"},
           {{"ai", "polish", " "}, 2, "没有文字"},
           {{"ai", "beautify", "x"}, 2, "--instruction"},
           {{"ai", "beautify", "x", "--preset", "14"}, 2, "13 保持原意重新排版"},
           {{"summary", "month", "2026-13"}, 2, ""},
           {{"summary", "month", "2026-03", "--style", "x"}, 2, ""},
           {{"summary", "year", "2026", "--yes"}, 1, "没有任何笔记"},
           {{"ai", "polish", "x"}, 1, "API 错误: HTTP 401: no ***"}}) {
    const ProgramResult result = run(arguments);
    EXPECT_EQ(result.status, status) << result.errors;
    EXPECT_THAT(result.errors, HasSubstr(error));
    EXPECT_THAT(result.errors, Not(HasSubstr("sk-planted")));
  }
  const std::size_t asked = vendor.requests().size();
  configure("false");
  EXPECT_THAT(run({"ai", "polish", "x"}).errors, HasSubstr("ai.features.writingAssistant"));
  EXPECT_EQ(vendor.requests().size(), asked);
}

TEST_F(AiCommandTest, SummariesAfterAskingOncePerVendor) {
  (void)add("三月的事", {"--tag", "工作"});
  (void)add("三月的私事", {"--tag", "私/家"});
  vendor.replies("总结");
  const std::vector<std::string> month = {"summary",  "month",     "2026-03", "--style",
                                          "proValue", "--exclude", "私"};
  const auto with = [&](const std::string& option) {
    std::vector<std::string> words = month;
    words.push_back(option);
    return words;
  };
  const ProgramResult shown = run(with("--dry-run"));
  EXPECT_THAT(shown.output, HasSubstr("三月的事"));
  EXPECT_THAT(shown.output, Not(HasSubstr("私")));
  EXPECT_EQ(run(month).status, 2) << "nobody to ask";
  EXPECT_TRUE(vendor.requests().empty());

  for (const bool isFirst : {true, false}) {
    const auto terminal = start({.arguments = month});
    terminal->waitFor("1 条笔记");
    terminal->waitFor("127.0.0.1:" + std::to_string(vendor.port()));
    if (isFirst) {
      terminal->waitFor("[y/N]");
      terminal->type("y\n");
    }
    terminal->waitFor("价值澄清");
    EXPECT_EQ(terminal->finish(), 0);
  }
  const Json memo = json(month);
  EXPECT_EQ(memo["body"],
            "# 2026年3月总结·价值澄清\n\n## 数据总览\n- 本月共写了 1 天、1 条笔记\n"
            "- 高频标签：`工作`(1次)\n\n总结");
  EXPECT_EQ(memo["tags"], Json({"个人专栏", "个人专栏/月度总结/2026-03"}));
}

TEST_F(AiCommandTest, CtrlCEndsAtOnceAndLeavesNothing) {
  (void)add("三月的事");
  vendor.answer(LanguageVendor::openAIPath, {.manner = LoopbackServer::Manner::hanging});
  const std::string before = treeOf(root / "2026-03-01");
  const auto terminal = start({.arguments = {"summary", "month", "2026-03", "--yes"}});
  terminal->waitFor("正在等 自定义 的回复");
  (void)vendor.awaitRequest();
  terminal->type("\x03");
  EXPECT_EQ(terminal->finish(), 130);
  EXPECT_EQ(treeOf(root / "2026-03-01"), before);
  EXPECT_EQ(json({"list", "--all"}).size(), 1U);
}

}  // namespace
}  // namespace nomely::test
