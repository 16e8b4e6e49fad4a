#include "Core/Extensions/TagNames.h"
#include "Core/Query/TagManagementStore.h"
#include "Core/Query/TagRewriting.h"
#include "Support/StoreFixture.h"

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
  const std::pair<const char*, const char*> cases[] = {
      {"x #work y #work", "x y "},
      {"#work\n#work", " \n "},
      {"a#work #work b", "a b"},
      {"#work/plan", " /plan"},
      {"#workshop #wor", " shop #wor"},
      {"work", "work"},
      // Two with one blank between: it goes with the first, and the second is found later.
      {" #work #work #work ", "  "},
  };
  for (const auto& [body, expected] : cases)
    EXPECT_EQ(TagRewriting::strippingTag(body, "work"), expected) << body;
  EXPECT_EQ(TagRewriting::strippingTag("# a #", ""), "# a #");
}

TEST(TagRewritingTest, Renaming) {
  const std::tuple<const char*, Text, std::optional<Text>> cases[] = {
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
  for (const auto& [name, text, expected] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(rewritten(text, [](Memo& m) { return TagRewriting::rename(m, "a", "b"); }), expected);
    EXPECT_FALSE(rewritten(text, [](Memo& m) { return TagRewriting::rename(m, "", "b"); }));
  }
  const Text notes{{"备忘录/备忘录", "备忘录/c"}, ""};
  EXPECT_EQ(rewritten(notes, [](Memo& m) { return TagRewriting::rename(m, "备忘录", "b"); }),
            (Text{{"备忘录/b", "b/c"}, ""}));
}

TEST(TagRewritingTest, Merging) {
  const std::tuple<const char*, Text, std::optional<Text>> cases[] = {
      {"tag and body", {{"a", "x", "b"}, " 正文 #a\n"}, Text{{"b", "x"}, " 正文 \n"}},
      {"nested text goes first", {{"a", "a/c"}, "x #a/c y #a z"}, Text{{"b", "b/c"}, "x /c y z"}},
      {"nested listed first", {{"a/c", "a"}, "x #a/c y #a z"}, Text{{"b/c", "b"}, "x y z"}},
      {"notes are not considered", {{"备忘录/a"}, "#a"}, {}},
      {"body alone", {{"ab"}, "#a"}, {}},
  };
  for (const auto& [name, text, expected] : cases)
    EXPECT_EQ(rewritten(text, [](Memo& m) { return TagRewriting::merge(m, "a", "b"); }), expected)
        << name;
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

class TagManagementStoreTest : public StoreTest {
 protected:
  Memo write(Day of, const std::string& body, std::vector<std::string> tags) {
    return store.createMemo(of, {.body = body, .tags = std::move(tags), .time = "09:30"});
  }

  JobPool jobs{1};
  SearchIndex index{context, jobs};
  std::vector<std::string> errors;
  MemoService service{context};
  TagManagementStore manager{service, index,
                             [&](const std::string& text) { errors.push_back(text); }};
  Day today = day("2026-03-05");
  Day yesterday = day("2026-03-04");
};

TEST_F(TagManagementStoreTest, FailuresAreToldAndTheOthersGoOn) {
  write(today, "", {"a"});
  write(today, "", {"a"});
  write(today, "", {"a"});
  store.writes().freeze();
  manager.renameTag("a", "b");
  manager.mergeTag("a", "b");
  manager.deleteTag("a");
  manager.deleteTagWithMemos("a");
  EXPECT_EQ(errors.size(), 9);
  EXPECT_THAT(errors[0], StartsWith("重命名标签时更新笔记失败（第3条）：数据恢复维护中"));
  EXPECT_THAT(errors[4], StartsWith("合并标签时更新笔记失败（第2条）："));
  EXPECT_THAT(errors[8], StartsWith("删除标签时更新笔记失败（第1条）："));
  EXPECT_EQ(manager.countNotesWithTag("a"), 3);
}

TEST_F(TagManagementStoreTest, SectionsOfTheSidebar) {
  write(yesterday, "1", {"_notes_import", "工作"});
  write(today, "2", {"_notes_import", "工作", "备忘录/a"});
  write(today, "3", {"个人专栏"});
  write(yesterday, "4", {"得到大脑/x", "得到大脑/x/y"});
  write(day("2026-03-03"), "5", {"备忘录", "备忘录/", "备忘录/a/b", "备忘录x", "_x"});
  write(day("2026-03-02"), "6", {"备忘录x", "个人专栏x"});
  write(day("2026-03-01"), "7", {"个人专栏/", "个人专栏/a", "x", "个人专栏/a/b", "个人专栏/ab"});
  EXPECT_EQ(manager.sidebarNotesSummary(), (SidebarTagSummary{{{"备忘录/工作", 2, "2026-03-05"},
                                                               {"备忘录/a", 1, "2026-03-05"},
                                                               {"备忘录/a/b", 1, "2026-03-03"},
                                                               {"备忘录/备忘录x", 1, "2026-03-03"}},
                                                              3}));
  EXPECT_EQ(manager.sidebarPersonalColumnSummary(),
            (SidebarTagSummary{
                {{"个人专栏/a/b", 1, "2026-03-01"}, {"个人专栏/ab", 1, "2026-03-01"}}, 2}));
  EXPECT_EQ(manager.sidebarDedaoSummary(),
            (SidebarTagSummary{{{"得到大脑/x/y", 1, "2026-03-04"}}, 1}));
  for (const TagUse& use : manager.loadAllTags()) EXPECT_NE(use.tag, "_notes_import");
}

}  // namespace
}  // namespace nomely::test
