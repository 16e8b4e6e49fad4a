#include "CommandTest.h"

namespace nomely::test {
namespace {

using PasteCommandTest = CommandTest;

TEST_F(PasteCommandTest, ClippingsFromFileAndStandardInput) {
  const std::string rtf = "{\\rtf1 b\\par}";
  writeFile(home.path() / "clip", rtf);
  const std::string file = (home.path() / "clip").string();
  const struct {
    const char* name;
    ProgramCall call;
    int status;
    std::string output;
  } cases[] = {
      {"HTML", {.arguments = {"paste"}, .input = "<b>你</b>"}, 0, "**你**\n"},
      {"JSON",
       {.arguments = {"paste", "-", "--json"}, .input = "<i>a</i>"},
       0,
       "{\"markdown\":\"*a*\"}"},
      {"RTF", {.arguments = {"paste", file}}, 0, "b\n"},
      {"nothing in it", {.arguments = {"paste"}, .input = "<img>"}, 1, ""},
      {"damaged", {.arguments = {"paste"}, .input = "{\\rtf1 a"}, 1, ""},
      {"no text", {.arguments = {"paste"}, .input = "\xFF"}, 2, ""},
      {"terminal", {.arguments = {"paste"}, .inputKind = InputKind::terminal}, 2, ""},
      {"no such file", {.arguments = {"paste", file + "x"}}, 4, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const ProgramResult result = run(c.call);
    EXPECT_EQ(result.status, c.status) << result.errors;
    if (c.output.starts_with('{'))
      EXPECT_EQ(Json::parse(result.output), Json::parse(c.output));
    else
      EXPECT_EQ(result.output, c.output);
  }
}

}  // namespace
}  // namespace nomely::test
