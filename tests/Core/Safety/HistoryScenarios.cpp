#include <gtest/gtest.h>

#include "Core/Safety/ScenarioParts.h"
#include "Core/Storage/VersionStore.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

Scenario snapshotting(const Diary& diary) {
  Scenario scenario{
      .name = "saveIfNeeded",
      .run =
          [&diary](const StoreContext& context) {
            VersionStore(context).saveIfNeeded(diary.first, diary.changed.seqNumber, edited(diary));
            return true;
          },
      .done = [&diary](const StoreContext& context) { expectSnapshotOfOld(context, diary); },
      .tidy = [&diary](const StoreContext& context) { expectPruned(context, diary); },
  };
  allowPruning(scenario, diary);
  return scenario;
}

// Back to the oldest of as many versions as are kept, which names a file that lies beside the
// versions alone. The version is pushed out by that of the state that it replaces.
Scenario restoring(const Diary& diary) {
  const Memo now = diary.changed;
  Memo old = now;
  old.body = "最早的一稿\n";
  old.attachments = {"shared.png", "distant.bin"};
  const Day day = diary.first;
  const fs::path folder = versionsBelowRoot(diary, now);
  const fs::path versionFile = folder / "1500000000.5_0F8FAD5B.md";
  const VersionEntry version{
      .timestamp = {}, .memo = old, .filename = versionFile.lexically_relative(".versions")};

  const auto restore = [=](const StoreContext& context, const Memo& expected) {
    VersionStore(context).restore(day, now.seqNumber, version, expected);
  };
  Scenario scenario{
      .name = "VersionStoreRestore",
      .run =
          [=](const StoreContext& context) {
            restore(context, now);
            return true;
          },
      .repeat =
          [=](const StoreContext& context) {
            const Memo current = MemoStore(context).read(day, now.seqNumber).value();
            if (current != old) restore(context, current);
          },
      .done =
          [=, &diary](const StoreContext& context) {
            EXPECT_EQ(MemoStore(context).read(day, now.seqNumber), old);
            EXPECT_EQ(readFile(context.paths.dayFolder(day) / "distant.bin"),
                      diary.attachments.at("distant.bin"));
          },
      .tidy = [&diary](const StoreContext& context) { expectPruned(context, diary); },
      .always =
          [=, &diary](const StoreContext& context) {
            if (MemoStore(context).read(day, now.seqNumber) != now)
              expectSnapshotOfOld(context, diary);
            EXPECT_GE(filesWith(context.paths.rootURL, Diary::textOf(old)), 1)
                << "the version is nowhere";
          },
      .fates = {{now.memoId.value(), {.states = {now, old}, .days = {day}}}},
      .touched = {memoBelowRoot(day, now)},
  };
  allowPruning(scenario, diary);
  // One less than are kept, and the one that is restored.
  for (int i = 0; i < 3; ++i) scenario.extra.erase(scenario.extra.begin());
  scenario.touched.push_back(versionFile);
  scenario.extra[versionFile] = Diary::textOf(old);
  scenario.extra[folder / "attachments" / "distant.bin"] = diary.attachments.at("distant.bin");
  return scenario;
}

// Those of one memo, in the present layout and the one before; another memo's stay.
Scenario clearing(const Diary& diary) {
  const Memo memo = diary.changed;
  const Day day = diary.first;
  Scenario scenario{
      .name = "deleteAllVersions",
      .run =
          [=](const StoreContext& context) {
            VersionStore(context).deleteAllVersions(day, memo.seqNumber, std::nullopt);
            return true;
          },
      .done =
          [&diary](const StoreContext& context) {
            EXPECT_FALSE(fs::exists(versionsOfChanged(context, diary)));
          },
      .tidy =
          [=](const StoreContext& context) {
            EXPECT_TRUE(
                VersionStore(context).listVersions(day, memo.seqNumber, std::nullopt).empty());
          },
      .extra = diary.snapshots(),
  };
  while (scenario.extra.size() > 3) scenario.extra.erase(scenario.extra.begin());
  const fs::path folder = fs::path(scenario.extra.begin()->first).parent_path();
  scenario.extra[folder / "attachments" / "own.png"] = diary.attachments.at("own.png");
  const std::string oldLayout = ".versions/2026-03-01_002";
  scenario.extra[oldLayout + "/1500000000_0F8FAD5B.md"] = Diary::textOf(memo);
  for (const auto& [name, text] : scenario.extra) scenario.touched.push_back(name);
  scenario.extra[oldLayout + "/1500000001_0F8FAD5B.md"] = Diary::textOf(diary.sharing);
  return scenario;
}

}  // namespace

std::vector<Scenario> historyScenarios(const Diary& diary) {
  return {snapshotting(diary), restoring(diary), clearing(diary)};
}

}  // namespace nomely::test
