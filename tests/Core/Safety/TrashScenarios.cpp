#include <algorithm>
#include <functional>
#include <iterator>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "Core/Safety/ScenarioParts.h"
#include "Core/Storage/TrashStore.h"
#include "Core/Storage/VersionStore.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

// A memo in the trash, with a version and one attachment.
struct Trashed {
  TrashEntry entry;
  std::string bytes;
  std::map<std::string, std::string> files = {};     // by path below the root
  std::map<std::string, std::string> versions = {};  // so too
};

fs::path versionsOf(const Trashed& trashed, const StoreContext& context) {
  return VersionStore(context).identityDirectory(trashed.entry.memo.memoId.value());
}

Trashed trashed(const Diary& diary, std::int64_t number, const std::string& attachment,
                const std::string& bytes) {
  Memo memo = diary.plain;
  memo.memoId = fmt::format("memo_trashed{}", number);
  memo.seqNumber = number;
  memo.body = fmt::format("扔掉的第 {} 条\n", number) + std::string(3000, 't');
  memo.attachments = {attachment};
  Trashed made{.entry = {diary.first, memo, fmt::format("{}_{:03}", diary.first.string(), number)},
               .bytes = bytes};
  const std::string folder = ".trash/" + made.entry.trashSubdir;
  made.files = {{folder + "/memo.md", Diary::textOf(memo)},
                {folder + "/meta.txt", fmt::format("{},{}", diary.first.string(), number)},
                {folder + "/attachments/" + attachment, bytes}};
  memo.body = "扔掉以前的一稿\n";
  made.versions = {
      {versionsBelowRoot(diary, memo) / "1600000000.5_0F8FAD5B.md", Diary::textOf(memo)}};
  return made;
}

// The first has its number free, the second has not.
std::vector<Trashed> twoTrashed(const Diary& diary) {
  return {trashed(diary, 7, "distant.bin", diary.attachments.at("distant.bin")),
          trashed(diary, diary.changed.seqNumber, "loose.bin", "not the loose one of the day")};
}

std::vector<TrashEntry> entriesOf(const std::vector<Trashed>& trash) {
  std::vector<TrashEntry> entries;
  std::ranges::transform(trash, std::back_inserter(entries), &Trashed::entry);
  return entries;
}

void add(Scenario& scenario, const std::map<std::string, std::string>& files) {
  for (const auto& [name, text] : files) {
    scenario.extra[name] = text;
    scenario.touched.push_back(name);
  }
}

// A failure behind the memo's move leaves a folder that the list of the trash does not show. What
// it lacks is told by its name, so that a person can complete it.
void completeFolders(const StoreContext& context, Day day, const Memo& memo) {
  if (!fs::exists(context.paths.trashFolder())) return;
  for (const auto& folder : fs::directory_iterator(context.paths.trashFolder()))
    if (fs::exists(folder.path() / "memo.md") && !fs::exists(folder.path() / "meta.txt"))
      writeFile(folder.path() / "meta.txt", fmt::format("{},{}", day.string(), memo.seqNumber));
}

Scenario trashing(const Diary& diary) {
  const Memo memo = diary.changed;
  const Day day = diary.first;
  const auto run = [=](const StoreContext& context) {
    return !TrashStore(context).trashMemo(day, memo).empty();
  };
  return {
      .name = "trashMemo",
      .run = run,
      .repeat =
          [=](const StoreContext& context) {
            if (!found(context, day, memo).empty()) {
              EXPECT_TRUE(run(context));
            }
            completeFolders(context, day, memo);
          },
      .done =
          [=](const StoreContext& context) {
            const auto entries = TrashStore(context).listTrash();
            ASSERT_EQ(entries.size(), 1);
            EXPECT_EQ(entries[0].memo, memo);
            EXPECT_EQ(entries[0].originalDate, day);
            EXPECT_TRUE(found(context, day, memo).empty());
          },
      .tidy =
          [=](const StoreContext& context) {
            for (const std::string& name : memo.attachments)
              EXPECT_TRUE(
                  fs::exists(context.paths.trashFolder() / "2026-03-01_002/attachments" / name));
          },
      .always = [=, &diary](const StoreContext& context) { expectKept(context, diary, day, memo); },
      .fates = {{memo.memoId.value(),
                 {.states = {memo}, .days = {day}, .survival = Fate::Survival::optional}}},
      .touched = {memoBelowRoot(day, memo), belowRoot(day, "shared.png"),
                  belowRoot(day, "own.png")},
      .contents = {"2026-03-01,2"},
      .attachmentsIn = ".trash",  // another memo's shared one goes along
  };
}

Scenario restoring(const Diary& diary, std::string name, const std::vector<Trashed>& trash) {
  const auto isBack = [](const StoreContext& context, const Trashed& each) {
    return found(context, each.entry.originalDate, each.entry.memo).size() == 1;
  };
  Scenario scenario{
      .name = std::move(name),
      .run =
          [=](const StoreContext& context) {
            const TrashStore store(context);
            if (trash.size() == 1)
              store.restoreMemo(trash[0].entry);
            else
              store.restoreTrashEntries(entriesOf(trash));
            return true;
          },
      .repeat =
          [=](const StoreContext& context) {
            for (const Trashed& each : trash)
              if (fs::exists(context.paths.trashFolder() / each.entry.trashSubdir))
                TrashStore(context).restoreMemo(each.entry);
          },
      .done =
          [=](const StoreContext& context) {
            for (const Trashed& each : trash) {
              EXPECT_TRUE(isBack(context, each));
              // Where another file has its name it lies with the attachments thrown away.
              EXPECT_EQ(filesWith(context.paths.dayFolder(each.entry.originalDate), each.bytes) +
                            filesWith(context.paths.attachmentTrashFolder(), each.bytes),
                        1);
            }
          },
      .tidy =
          [=](const StoreContext& context) {
            EXPECT_TRUE(TrashStore(context).listTrash().empty());
            for (const Trashed& each : trash)
              EXPECT_FALSE(fs::exists(context.paths.trashFolder() / each.entry.trashSubdir));
          },
      .always =
          [=, &diary](const StoreContext& context) {
            for (const Trashed& each : trash) {
              expectKept(context, diary, each.entry.originalDate, each.entry.memo);
              EXPECT_EQ(filesWith(context.paths.dayFolder(each.entry.originalDate), each.bytes) +
                            filesWith(context.paths.trashFolder(), each.bytes),
                        1);
            }
          },
      .attachmentsIn = ".trash",
  };
  for (const Trashed& each : trash) {
    add(scenario, each.files);
    scenario.extra.insert(each.versions.begin(), each.versions.end());
    scenario.fates[each.entry.memo.memoId.value()] = {.states = {each.entry.memo},
                                                      .days = {each.entry.originalDate},
                                                      .survival = Fate::Survival::optional};
  }
  return scenario;
}

// Anything that removes two entries for good.
Scenario removing(const Diary& diary, std::string name,
                  std::function<void(const StoreContext&)> remove) {
  const std::vector<Trashed> trash = twoTrashed(diary);
  Scenario scenario{
      .name = std::move(name),
      .run =
          [=](const StoreContext& context) {
            remove(context);
            return true;
          },
      .done =
          [=](const StoreContext& context) {
            for (const Trashed& each : trash)
              EXPECT_FALSE(fs::exists(context.paths.trashFolder() / each.entry.trashSubdir));
          },
      .tidy =
          [=](const StoreContext& context) {
            for (const Trashed& each : trash) EXPECT_FALSE(fs::exists(versionsOf(each, context)));
          },
  };
  for (const Trashed& each : trash) {
    add(scenario, each.files);
    add(scenario, each.versions);
  }
  // A version that is none of theirs.
  scenario.extra.insert(*diary.snapshots().begin());
  return scenario;
}

Scenario deleting(const Diary& diary) {
  const auto entries = entriesOf(twoTrashed(diary));
  Scenario scenario = removing(diary, "deleteTrashEntries", [entries](const StoreContext& context) {
    TrashStore(context).deleteTrashEntries(entries);
  });
  const Trashed staying = trashed(diary, 9, "single.png", "third");
  scenario.extra.insert(staying.files.begin(), staying.files.end());
  scenario.extra.insert(staying.versions.begin(), staying.versions.end());
  return scenario;
}

Scenario emptying(const Diary& diary) {
  Scenario scenario = removing(
      diary, "emptyTrash", [](const StoreContext& context) { TrashStore(context).emptyTrash(); });
  add(scenario, {{".trash/_attachments/2026-03-01_080000/x.bin", "x"}});
  scenario.done = [](const StoreContext& context) {
    EXPECT_FALSE(fs::exists(context.paths.trashFolder()));
  };
  return scenario;
}

}  // namespace

std::vector<Scenario> trashScenarios(const Diary& diary) {
  const Trashed free = twoTrashed(diary)[0];
  const Trashed numberTaken =
      trashed(diary, diary.changed.seqNumber, "distant.bin", diary.attachments.at("distant.bin"));
  const Trashed nameTaken = trashed(diary, 7, "loose.bin", "not the loose one of the day");
  return {
      trashing(diary),
      restoring(diary, "restoreMemo", {free}),
      restoring(diary, "restoreMemoWhoseNumberIsTaken", {numberTaken}),
      restoring(diary, "restoreMemoWhoseAttachmentsNameIsTaken", {nameTaken}),
      restoring(diary, "restoreTrashEntries", twoTrashed(diary)),
      deleting(diary),
      emptying(diary),
  };
}

}  // namespace nomely::test
