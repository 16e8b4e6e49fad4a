#include "Core/Markdown/Inline/MemoBodyKit.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

TEST(MemoBodyKitTest, Collapsing) {
  const std::tuple<const char*, std::string, bool, std::string> cases[] = {
      {"nothing", " \n", false, ""},
      {"300 ideographs", repeated("日", 300), true, repeated("日", 156) + "..."},
      {"300 letters", repeated("a", 300), false, repeated("a", 300)},
      {"301 letters", repeated("a", 301), true, repeated("a", 300) + "..."},
      {"six lines", "\na\nb\nc\nd\ne\nf\n", false, "a\nb\nc\nd\ne\nf"},
      {"seven", "a\nb\nc\nd\ne\nf\ng", true, "a\nb\nc\nd\ne\nf..."},
      {"blank lines cost more", "a\n\nb\n\nc\n\nd", true, "a\n\nb\n\nc..."},
      {"the last line in part", "a\nb\nc\nd\ne\n" + repeated("x ", 30), true,
       "a\nb\nc\nd\ne\n" + repeated("x ", 24) + "x..."},
      {"code cut off", "a\n```\nb\nc\nd\ne\nf\n```", true, "a..."},
      {"bold cut off", "a **b\nc\nd\ne\nf\ng\nh**", true, "a..."},
      {"colour cut off", "<span style=\"color: #FF0000\">a\nb\nc\nd\ne\nf\ng</span>", true,
       "<span style=\"color: #FF0000\">a\nb\nc\nd\ne\nf</span>..."},
      {"table cut off", "a\nb\n\n|x|y|\n|---|---|\n|1|2|\n|3|4|", true, "a\nb..."},
      {"two lines are no table", "a\nb\nc\nd\n|e\n|f\ng", true, "a\nb\nc\nd\n|e\n|f..."},
      {"nothing but a table", "|x|y|\n|---|---|\n|1|2|\n|3|4|\n|5|6|\n|7|8|\n|9|0|", true,
       "|x|y|\n|---|---|\n|1|2|\n|3|4|\n|5|6|\n|7|8|..."},
  };
  for (const auto& [name, text, collapses, preview] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(MemoBodyKit::shouldCollapse(text), collapses);
    EXPECT_EQ(MemoBodyKit::collapsedPreview(text), preview);
  }
}

}  // namespace
}  // namespace nomely::test
