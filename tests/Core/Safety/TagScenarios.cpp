#include <functional>

#include <gtest/gtest.h>

#include "Core/Query/TagManagementStore.h"
#include "Core/Query/TagRewriting.h"
#include "Core/Safety/ScenarioParts.h"

namespace nomely::test {
namespace {

constexpr auto tag = "旅行";

// What becomes of a memo; false: nothing.
using Rewrite = std::function<bool(Memo&)>;
using Operation = std::function<void(const TagManagementStore&)>;

// Whether nothing was told to have failed. A memo that can't be read is passed over without a word.
bool runOn(const StoreContext& context, const Operation& operation) {
  const DayStore store(context);
  JobPool jobs;  // starts no thread unless it is used
  SearchIndex index(context, jobs);
  bool failed = false;
  const MemoService service(context);
  operation(TagManagementStore(service, index, [&](const std::string&) { failed = true; }));
  return !failed;
}

// `complete` is to hold in the end; until then a failure may have been passed over.
Scenario bulk(std::string name, const Operation& operation, const Scenario::Check& complete) {
  const auto run = [=](const StoreContext& context) { return runOn(context, operation); };
  return {.name = std::move(name),
          .run = run,
          .repeat =
              [=](const StoreContext& context) {
                EXPECT_TRUE(run(context));
                complete(context);
              },
          .done = [](const StoreContext&) {},
          .tidy = complete};
}

// An operation on the memos with the tag, each of which becomes what `rewrite` makes of it.
Scenario rewriting(const Diary& diary, std::string name, const Operation& operation,
                   const Rewrite& rewrite) {
  std::vector<Diary::Entry> wanted;
  std::map<std::string, Fate> fates;
  for (const auto& [day, memo] : diary.entries()) {
    Memo changed = memo;
    if (!rewrite(changed)) continue;
    wanted.push_back({day, changed});
    fates[memo.memoId.value()] = {.states = {memo, changed}, .days = {day}};
  }
  Scenario scenario = bulk(std::move(name), operation, [wanted](const StoreContext& context) {
    for (const auto& [day, memo] : wanted)
      EXPECT_EQ(MemoStore(context).read(day, memo.seqNumber), memo);
  });
  scenario.fates = std::move(fates);
  for (const auto& [day, memo] : wanted) {
    scenario.touched.push_back(memoBelowRoot(day, memo));
    scenario.contents.push_back(Diary::textOf(memo));
  }
  return scenario;
}

Scenario trashing(const Diary& diary) {
  std::vector<Diary::Entry> trashed = diary.entries();
  std::erase_if(trashed,
                [](const auto& entry) { return !TagRewriting::goesWith(entry.memo, tag); });
  Scenario scenario = bulk(
      "deleteTagWithMemos", [](const TagManagementStore& store) { store.deleteTagWithMemos(tag); },
      [trashed](const StoreContext& context) {
        for (const auto& [day, memo] : trashed) EXPECT_TRUE(found(context, day, memo).empty());
      });
  for (const auto& [day, memo] : trashed) {
    scenario.fates[memo.memoId.value()] = {
        .states = {memo}, .days = {day}, .survival = Fate::Survival::optional};
    scenario.touched.push_back(memoBelowRoot(day, memo));
    for (const std::string& name : memo.attachments)
      scenario.touched.push_back(belowRoot(day, name));
  }
  scenario.always = [=, &diary](const StoreContext& context) {
    for (const auto& [day, memo] : trashed) expectKept(context, diary, day, memo);
  };
  scenario.contents = {"2026-03-01,2", "2026-03-01,3", "2026-03-02,1"};
  scenario.attachmentsIn = ".trash";
  return scenario;
}

}  // namespace

std::vector<Scenario> tagScenarios(const Diary& diary) {
  return {
      rewriting(
          diary, "renameTag", [](const TagManagementStore& store) { store.renameTag(tag, "出行"); },
          [](Memo& memo) { return TagRewriting::rename(memo, tag, "出行"); }),
      rewriting(
          diary, "mergeTag", [](const TagManagementStore& store) { store.mergeTag(tag, "生活"); },
          [](Memo& memo) { return TagRewriting::merge(memo, tag, "生活"); }),
      rewriting(
          diary, "deleteTag", [](const TagManagementStore& store) { store.deleteTag(tag); },
          [](Memo& memo) { return TagRewriting::remove(memo, tag); }),
      trashing(diary),
  };
}

}  // namespace nomely::test
