#include <algorithm>
#include <iterator>

#include <gtest/gtest.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Lifecycle/TemporaryFileSweep.h"
#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Safety/ScenarioParts.h"
#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/VersionStore.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

Scenario creation(const Diary& diary, std::string name, Day day) {
  const Memo wanted = [&] {
    Memo memo;
    memo.schemaVersion = MemoFrontmatter::currentSchemaVersion;
    memo.createdAt = DateFormatters::timestamp(diary.clock.now());
    memo.updatedAt = memo.createdAt;
    memo.time = "21:07";
    memo.tags = {"新"};
    memo.mood = 4;
    memo.body = std::string(6000, 'n') + "\n";
    if (day == diary.first) memo.attachments = {"loose.bin"};
    return memo;
  }();
  const auto run = [day, wanted](const StoreContext& context) {
    const Memo made = DayStore(context).createMemo(day, {.body = wanted.body,
                                                         .tags = wanted.tags,
                                                         .mood = wanted.mood,
                                                         .attachments = wanted.attachments,
                                                         .time = wanted.time});
    return sameButForNumber(made, wanted);
  };
  return {
      .name = std::move(name),
      .run = run,
      .repeat =
          [=](const StoreContext& context) {
            if (found(context, day, wanted).empty()) {
              EXPECT_TRUE(run(context));
            }
          },
      .done =
          [=](const StoreContext& context) { EXPECT_EQ(found(context, day, wanted).size(), 1); },
      .fates = {{"", {.states = {wanted}, .days = {day}, .survival = Fate::Survival::optional}}},
  };
}

// Anything that replaces `changed` by `edited`.
template <typename Replace>
Scenario replacement(const Diary& diary, std::string name, Replace replace) {
  const Memo old = diary.changed;
  const Memo wanted = edited(diary);
  const Day day = diary.first;
  return {
      .name = std::move(name),
      .run =
          [=](const StoreContext& context) {
            replace(context, wanted, day, old);
            return true;
          },
      .repeat =
          [=](const StoreContext& context) {
            const Memo current = DayStore(context).memoStore().read(day, old.seqNumber).value();
            replace(context, wanted, day, current);
          },
      .done =
          [=](const StoreContext& context) {
            EXPECT_EQ(DayStore(context).memoStore().read(day, wanted.seqNumber), wanted);
          },
      .fates = {{old.memoId.value(), {.states = {old, wanted}, .days = {day}}}},
      .touched = {memoBelowRoot(day, old)},
      .contents = {Diary::textOf(wanted)},
  };
}

Scenario writing(const Diary& diary) {
  return replacement(diary, "MemoStoreWrite",
                     [](const StoreContext& context, const Memo& memo, Day day, const Memo&) {
                       MemoStore(context).write(memo, day);
                     });
}

Scenario updating(const Diary& diary) {
  return replacement(diary, "updateMemo",
                     [](const StoreContext& context, const Memo& memo, Day day, const Memo& seen) {
                       DayStore(context).updateMemo(memo, day, seen);
                     });
}

Scenario committing(const Diary& diary) {
  Scenario scenario =
      replacement(diary, "commitMemo",
                  [](const StoreContext& context, const Memo& memo, Day day, const Memo& seen) {
                    DayStore(context).commitMemo(memo, day, seen);
                  });
  allowPruning(scenario, diary);
  scenario.always = [&diary](const StoreContext& context) {
    const auto now = MemoStore(context).read(diary.first, diary.changed.seqNumber);
    if (now != diary.changed) expectSnapshotOfOld(context, diary);
  };
  scenario.tidy = [&diary](const StoreContext& context) { expectPruned(context, diary); };
  return scenario;
}

Scenario placing(const Diary& diary) {
  Memo wanted = diary.distant;
  wanted.memoId = "memo_new";
  wanted.attachments = {};
  wanted.seqNumber = 9;
  const Day day = diary.second;
  const auto run = [=](const StoreContext& context) {
    return MemoStore(context).create(wanted, day);
  };
  return {
      .name = "MemoStoreCreate",
      .run = run,
      .repeat =
          [=](const StoreContext& context) {
            if (!MemoStore(context).read(day, wanted.seqNumber)) {
              EXPECT_TRUE(run(context));
            }
          },
      .done =
          [=](const StoreContext& context) {
            EXPECT_EQ(MemoStore(context).read(day, wanted.seqNumber), wanted);
          },
      .fates = {{"memo_new",
                 {.states = {wanted}, .days = {day}, .survival = Fate::Survival::optional}}},
      .contents = {Diary::textOf(wanted)},
  };
}

Scenario removing(const Diary& diary) {
  const Memo memo = diary.single;
  const Day day = diary.first;
  return {
      .name = "MemoStoreRemove",
      .run =
          [=](const StoreContext& context) {
            MemoStore(context).remove(day, memo.seqNumber);
            return true;
          },
      .done =
          [=](const StoreContext& context) {
            EXPECT_EQ(MemoStore(context).read(day, memo.seqNumber), std::nullopt);
          },
      .fates = {{memo.memoId.value(),
                 {.states = {memo}, .days = {day}, .survival = Fate::Survival::optional}}},
      .touched = {memoBelowRoot(day, memo)},
  };
}

Scenario deleting(const Diary& diary) {
  const Memo memo = diary.single;
  const Day day = diary.first;
  const auto run = [=](const StoreContext& context) {
    DayStore(context).deleteMemo(day, memo);
    return true;
  };
  return {
      .name = "deleteMemo",
      .run = run,
      .repeat =
          [=](const StoreContext& context) {
            if (!found(context, day, memo).empty()) run(context);
          },
      .done = [=](const StoreContext& context) { EXPECT_TRUE(found(context, day, memo).empty()); },
      .tidy =
          [=](const StoreContext& context) {
            EXPECT_FALSE(fs::exists(context.paths.dayFolder(day) / "single.png"));
          },
      .fates = {{memo.memoId.value(),
                 {.states = {memo}, .days = {day}, .survival = Fate::Survival::optional}}},
      .touched = {memoBelowRoot(day, memo), belowRoot(day, "single.png")},
  };
}

Scenario moving(const Diary& diary, std::string name, Day to) {
  const Memo memo = diary.changed;
  const Day from = diary.first;
  const auto run = [=](const StoreContext& context) {
    return sameButForNumber(DayStore(context).moveMemo(memo, from, to), memo);
  };
  return {
      .name = std::move(name),
      .run = run,
      .repeat =
          [=](const StoreContext& context) {
            const bool arrived = !found(context, to, memo).empty();
            if (!arrived) {
              EXPECT_TRUE(run(context));
            }
            // Standing in both days, one of them is the one too many.
            if (arrived) MemoStore(context).remove(from, memo.seqNumber);
          },
      .done =
          [=](const StoreContext& context) {
            EXPECT_EQ(found(context, from, memo).size(), 0);
            EXPECT_EQ(found(context, to, memo).size(), 1);
          },
      .tidy =
          [=, &diary](const StoreContext& context) {
            EXPECT_FALSE(fs::exists(context.paths.dayFolder(from) / "own.png"));
            EXPECT_EQ(
                filesWith(context.paths.attachmentTrashFolder(), diary.attachments.at("own.png")),
                1);
          },
      .fates = {{memo.memoId.value(), {.states = {memo}, .days = {from, to}}}},
      .touched = {memoBelowRoot(from, memo), belowRoot(from, "own.png")},
  };
}

Scenario importing(const Diary& diary) {
  const auto copies = [&diary](const StoreContext& context) {
    return filesWith(context.paths.dayFolder(diary.missing), diary.photo);
  };
  return {
      .name = "importFile",
      .run =
          [&diary](const StoreContext& context) {
            const auto result =
                AttachmentManager(context).importFile(Diary::photoFile(context), diary.missing);
            EXPECT_EQ(readFile(context.paths.dayFolder(diary.missing) / result.filename),
                      diary.photo);
            return true;
          },
      .done =
          [=, &diary](const StoreContext& context) {
            EXPECT_GE(copies(context), 1);
            EXPECT_EQ(readFile(Diary::photoFile(context)), diary.photo);
          },
      .tidy = [=](const StoreContext& context) { EXPECT_EQ(copies(context), 1); },
      .contents = {diary.photo},
  };
}

Scenario discarding(const Diary& diary) {
  const Day day = diary.first;
  const std::string& bytes = diary.attachments.at("loose.bin");
  const auto trashed = [bytes](const StoreContext& context) {
    return filesWith(context.paths.attachmentTrashFolder(), bytes);
  };
  return {
      .name = "deleteFile",
      .run =
          [=](const StoreContext& context) {
            AttachmentManager(context).deleteFile("loose.bin", day);
            return true;
          },
      .done =
          [=](const StoreContext& context) {
            EXPECT_FALSE(fs::exists(context.paths.dayFolder(day) / "loose.bin"));
            EXPECT_EQ(trashed(context), 1);
          },
      .always =
          [=](const StoreContext& context) {
            EXPECT_EQ(trashed(context) + filesWith(context.paths.dayFolder(day), bytes), 1);
          },
      .touched = {belowRoot(day, "loose.bin")},
  };
}

Scenario preparing(const Diary& diary) {
  const std::vector<std::string> names{"own.png", "distant.bin", "loose.bin"};
  return {
      .name = "preparePendingAttachments",
      .run =
          [=, &diary](const StoreContext& context) {
            AttachmentManager(context).preparePendingAttachments(
                names, {.sourceDates = {{"distant.bin", diary.second}},
                        .fallbackDate = diary.first,
                        .destinationDate = diary.missing});
            return true;
          },
      .done =
          [=, &diary](const StoreContext& context) {
            for (const std::string& name : names)
              EXPECT_EQ(readFile(context.paths.dayFolder(diary.missing) / name),
                        diary.attachments.at(name));
          },
  };
}

Scenario storing(const Diary& diary) {
  const std::string bytes = diary.photo + "edited";
  return {
      .name = "AttachmentStorageSave",
      .run =
          [=, &diary](const StoreContext& context) {
            const fs::path folder = context.paths.dayFolder(diary.missing);
            const auto name = AttachmentStorage::save(context, bytes, "jpg", folder);
            if (name) {
              EXPECT_EQ(readFile(folder / *name), bytes);
            }
            return name.has_value();
          },
      .done =
          [=, &diary](const StoreContext& context) {
            EXPECT_GE(filesWith(context.paths.dayFolder(diary.missing), bytes), 1);
          },
      .contents = {bytes},
  };
}

Scenario sweeping() {
  return {
      .name = "sweepTemporaryFiles",
      .run =
          [](const StoreContext& context) {
            sweepTemporaryFiles(context, {});
            return true;
          },
      .done = [](const StoreContext&) {},  // what can't be removed is left without a word
  };
}

}  // namespace

std::vector<Scenario> scenarios(const Diary& diary) {
  std::vector<Scenario> all{
      creation(diary, "createMemoInDayWithMemos", diary.first),
      creation(diary, "createMemoInNewDay", diary.missing),
      updating(diary),
      committing(diary),
      deleting(diary),
      moving(diary, "moveMemoToDayWithMemos", diary.second),
      moving(diary, "moveMemoToNewDay", diary.missing),
      writing(diary),
      placing(diary),
      removing(diary),
      importing(diary),
      discarding(diary),
      preparing(diary),
      storing(diary),
      sweeping(),
  };
  for (const auto& more : {historyScenarios, trashScenarios, tagScenarios})
    std::ranges::move(more(diary), std::back_inserter(all));
  return all;
}

}  // namespace nomely::test
