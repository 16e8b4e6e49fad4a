#include <gmock/gmock.h>

#include "Core/Query/TagManagementStore.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TagManagementStoreTest : public StoreTest {
 protected:
  Memo write(Day of, const std::string& body, std::vector<std::string> tags) {
    return store.createMemo(of, {.body = body, .tags = std::move(tags), .time = "09:30"});
  }
  // From the index, which must have been told to look again.
  [[nodiscard]] std::vector<std::string> tagsAndBodies() {
    std::vector<std::string> all;
    for (const MemoEntry& entry : index.allMemoEntries()) {
      std::string text;
      for (const std::string& tag : entry.memo->tags) text += tag + ' ';
      all.push_back(text + "| " + entry.memo->body);
    }
    return all;
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

TEST_F(TagManagementStoreTest, RewritesTheMemosOfAllDays) {
  write(today, "x #a", {"a/c"});
  write(yesterday, "y", {"备忘录/a"});
  EXPECT_THAT(tagsAndBodies(), ElementsAre("a/c | x #a", "备忘录/a | y"));
  manager.renameTag("a", "b");
  EXPECT_THAT(tagsAndBodies(), ElementsAre("b/c | x", "备忘录/b | y"));
  manager.mergeTag("备忘录", "b/c");
  EXPECT_THAT(tagsAndBodies(), ElementsAre("b/c | x", "b/c/b | y"));
  EXPECT_EQ(manager.countNotesWithTag("b/c"), 2);
  EXPECT_EQ(manager.countNotesWithTag("b/c/b"), 1);
  manager.deleteTag("b/c/b");
  EXPECT_THAT(tagsAndBodies(), ElementsAre("b/c | x", "| y"));
  manager.deleteTagWithMemos("b");
  EXPECT_THAT(tagsAndBodies(), ElementsAre("| y"));
  EXPECT_THAT(errors, IsEmpty());
}

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
  EXPECT_THAT(errors[0], testing::StartsWith("重命名标签时更新笔记失败（第3条）：数据恢复维护中"));
  EXPECT_THAT(errors[4], testing::StartsWith("合并标签时更新笔记失败（第2条）："));
  EXPECT_THAT(errors[8], testing::StartsWith("删除标签时更新笔记失败（第1条）："));
  EXPECT_EQ(manager.countNotesWithTag("a"), 3);
}

TEST_F(TagManagementStoreTest, SectionsOfTheSidebar) {
  write(yesterday, "1", {"_notes_import", "工作"});
  write(today, "2", {"_notes_import", "工作", "备忘录/a"});
  write(today, "3", {"个人专栏"});
  write(yesterday, "4", {"得到大脑/x", "得到大脑/x/y"});
  EXPECT_EQ(
      manager.sidebarNotesSummary(),
      (SidebarTagSummary{{{"备忘录/工作", 2, "2026-03-05"}, {"备忘录/a", 1, "2026-03-05"}}, 2}));
  EXPECT_EQ(manager.sidebarPersonalColumnSummary(), (SidebarTagSummary{{}, 1}));
  EXPECT_EQ(manager.sidebarDedaoSummary(),
            (SidebarTagSummary{{{"得到大脑/x/y", 1, "2026-03-04"}}, 1}));
  for (const TagUse& use : manager.loadAllTags()) EXPECT_NE(use.tag, "_notes_import");
}

}  // namespace
}  // namespace nomely::test
