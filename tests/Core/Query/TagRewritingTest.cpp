#include <gtest/gtest.h>

#include "Core/Extensions/TagNames.h"
#include "Core/Query/TagRewriting.h"

namespace nomely::test {
namespace {

using Tags = std::vector<std::string>;

struct Text {
  Tags tags;
  std::string body;

  friend bool operator==(const Text&, const Text&) = default;
  friend void PrintTo(const Text& text, std::ostream* out) {
    *out << testing::PrintToString(text.tags) << " " << text.body;
  }
};

// Absent where the memo was not touched, which must leave it as it was.
template <typename Rewrite>
std::optional<Text> rewritten(const Text& text, Rewrite rewrite) {
  Memo memo;
  memo.tags = text.tags;
  memo.body = text.body;
  const bool isTouched = rewrite(memo);
  Text after{memo.tags, memo.body};
  if (isTouched) return after;
  EXPECT_EQ(after, text);
  return std::nullopt;
}

TEST(TagRewritingTest, Stripping) {
  const struct {
    const char* body;
    const char* expected;
  } cases[] = {
      {"x #work y #work", "x y "},
      {"#work\n#work", " \n "},
      {"a#work #work b", "a b"},
      {"#work/plan", " /plan"},
      {"#workshop #wor", " shop #wor"},
      {"work", "work"},
      // Two with one blank between: it goes with the first, and the second is found later.
      {" #work #work #work ", "  "},
  };
  for (const auto& c : cases)
    EXPECT_EQ(TagRewriting::strippingTag(c.body, "work"), c.expected) << c.body;
  EXPECT_EQ(TagRewriting::strippingTag("# a #", ""), "# a #");
}

TEST(TagRewritingTest, Renaming) {
  const struct {
    const char* name;
    Text text;
    std::optional<Text> expected;
  } cases[] = {
      {"tag and body", {{"x", "a"}, "\n\n#a 正文 #a\n"}, Text{{"x", "b"}, "正文"}},
      {"new tag in the body: not trimmed", {{"a"}, "#a #b\n"}, Text{{"b"}, " #b\n"}},
      {"new tag of a note in the body", {{"a"}, "\n#备忘录/b"}, Text{{"b"}, "\n#备忘录/b"}},
      {"both", {{"a", "b"}, ""}, Text{{"b"}, ""}},
      {"nested", {{"a/c", "ab", "c/a"}, "#a/c"}, Text{{"b/c", "ab", "c/a"}, "/c"}},
      {"below the notes",
       {{"备忘录/a", "备忘录/a/c", "备忘录"}, "x #备忘录/a"},
       Text{{"备忘录/b", "备忘录/b/c", "备忘录"}, "x"}},
      {"body alone", {{"ab", "c/a"}, "#a"}, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(rewritten(c.text, [](Memo& m) { return TagRewriting::rename(m, "a", "b"); }),
              c.expected);
    EXPECT_FALSE(rewritten(c.text, [](Memo& m) { return TagRewriting::rename(m, "", "b"); }));
  }
  const Text notes{{"备忘录/备忘录", "备忘录/c"}, ""};
  EXPECT_EQ(rewritten(notes, [](Memo& m) { return TagRewriting::rename(m, "备忘录", "b"); }),
            (Text{{"备忘录/b", "b/c"}, ""}));
}

TEST(TagRewritingTest, Merging) {
  const struct {
    const char* name;
    Text text;
    std::optional<Text> expected;
  } cases[] = {
      {"tag and body", {{"a", "x", "b"}, " 正文 #a\n"}, Text{{"b", "x"}, " 正文 \n"}},
      {"nested text goes first", {{"a", "a/c"}, "x #a/c y #a z"}, Text{{"b", "b/c"}, "x /c y z"}},
      {"nested listed first", {{"a/c", "a"}, "x #a/c y #a z"}, Text{{"b/c", "b"}, "x y z"}},
      {"notes are not considered", {{"备忘录/a"}, "#a"}, {}},
      {"body alone", {{"ab"}, "#a"}, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(rewritten(c.text, [](Memo& m) { return TagRewriting::merge(m, "a", "b"); }),
              c.expected);
  }
}

TEST(TagRewritingTest, Removing) {
  const struct {
    const char* name;
    Text text;
    std::optional<Text> expected;
    bool goes;  // with its memos
  } cases[] = {
      {"tag and body", {{"a", "x"}, "\n #a 正文 \t"}, Text{{"x"}, "\n 正文"}, true},
      {"nested", {{"a/b", "ab"}, "#a/b #ab"}, Text{{"ab"}, "b"}, true},
      {"body alone", {{"x", "x"}, "说 #a"}, Text{{"x", "x"}, "说"}, true},
      {"in a longer word", {{}, "#ab"}, Text{{}, "b"}, true},
      {"neither", {{"ab"}, " a "}, {}, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(rewritten(c.text, [](Memo& m) { return TagRewriting::remove(m, "a"); }), c.expected);
    EXPECT_FALSE(rewritten(c.text, [](Memo& m) { return TagRewriting::remove(m, ""); }));
    Memo memo;
    memo.tags = c.text.tags;
    memo.body = c.text.body;
    EXPECT_EQ(TagRewriting::goesWith(memo, "a"), c.goes);
    EXPECT_FALSE(TagRewriting::goesWith(memo, ""));
  }
  Memo batch;
  batch.body = "#_batch";
  EXPECT_FALSE(TagRewriting::goesWith(batch, "_batch")) << "hidden tags are no text";
  batch.tags = {"_batch"};
  EXPECT_TRUE(TagRewriting::goesWith(batch, "_batch"));
}

TEST(TagRewritingTest, SectionsOfTheSidebar) {
  const struct {
    Tags tags;
    std::optional<Tags> notes;
    std::optional<Tags> column;
  } cases[] = {
      {{"a"}, {}, {}},
      {{"_notes_import", "工作", "_x"}, Tags{"备忘录/工作"}, {}},
      {{"备忘录", "备忘录/", "备忘录/a/b", "备忘录x"}, Tags{"备忘录/a/b", "备忘录/备忘录x"}, {}},
      {{"备忘录x", "个人专栏x"}, {}, {}},
      {{"个人专栏"}, {}, Tags{}},
      {{"个人专栏/", "个人专栏/a", "x", "个人专栏/a/b", "个人专栏/ab"},
       {},
       Tags{"个人专栏/a/b", "个人专栏/ab"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.tags));
    EXPECT_EQ(TagRewriting::notesTags(c.tags), c.notes);
    EXPECT_EQ(TagRewriting::sectionTags(c.tags, TagNames::personalColumnRoot), c.column);
  }
}

}  // namespace
}  // namespace nomely::test
