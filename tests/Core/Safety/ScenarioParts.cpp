#include "Core/Safety/ScenarioParts.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Storage/VersionStore.h"

namespace nomely::test {

namespace fs = std::filesystem;

std::vector<Memo> found(const StoreContext& context, Day day, const Memo& state) {
  std::vector<Memo> memos = DayStore(context).listMemos(day);
  std::erase_if(memos, [&](const Memo& memo) { return !sameButForNumber(memo, state); });
  return memos;
}

std::string belowRoot(Day day, const std::string& name) {
  return day.string() + "/" + name;
}

std::string memoBelowRoot(Day day, const Memo& memo) {
  return belowRoot(day, DiskPaths::memoFileName(memo.seqNumber));
}

std::size_t filesWith(const fs::path& folder, const std::string& content) {
  if (!fs::exists(folder)) return 0;
  const auto files = filesBelow(folder);
  return static_cast<std::size_t>(
      std::ranges::count_if(files, [&](const auto& file) { return file.second == content; }));
}

void expectKept(const StoreContext& context, const Diary& diary, Day day, const Memo& memo) {
  const fs::path dayFolder = context.paths.dayFolder(day);
  const fs::path trash = context.paths.trashFolder();
  std::size_t copies = filesWith(dayFolder, Diary::textOf(memo));
  if (fs::exists(trash))
    for (const auto& [name, text] : filesBelow(trash))
      copies += fs::path(name).filename() == "memo.md" && text == Diary::textOf(memo) ? 1 : 0;
  EXPECT_EQ(copies, 1) << memo.body.substr(0, 20);
  for (const std::string& name : memo.attachments) {
    const std::string& bytes = diary.attachments.at(name);
    EXPECT_GE(filesWith(dayFolder, bytes) + filesWith(trash, bytes), 1) << name;
  }
}

fs::path versionsBelowRoot(const Diary& diary, const Memo& memo) {
  const StoreContext context = diary.contextFor("", posixFileSystem());
  return VersionStore(context)
      .identityDirectory(memo.memoId.value())
      .lexically_relative(context.paths.rootURL);
}

Memo edited(const Diary& diary) {
  Memo memo = diary.changed;
  memo.attachments = {"shared.png"};  // "own.png" is let go
  memo.updatedAt = DateFormatters::timestamp(diary.clock.now());
  memo.body += "又写了一段。\n";
  return memo;
}

fs::path versionsOfChanged(const StoreContext& context, const Diary& diary) {
  return VersionStore(context).identityDirectory(diary.changed.memoId.value());
}

void expectSnapshotOfOld(const StoreContext& context, const Diary& diary) {
  const fs::path versions = versionsOfChanged(context, diary);
  EXPECT_GE(filesWith(versions, Diary::textOf(diary.changed)), 1) << "no snapshot of the old memo";
  const fs::path kept = versions / "attachments" / "own.png";
  ASSERT_TRUE(fs::exists(kept));
  EXPECT_EQ(readFile(kept), diary.attachments.at("own.png"));
}

void allowPruning(Scenario& scenario, const Diary& diary) {
  scenario.extra = diary.snapshots();
  // The oldest: each try may add a snapshot.
  for (const auto& [name, text] : scenario.extra)
    if (scenario.touched.size() < 7) scenario.touched.push_back(name);
}

void expectPruned(const StoreContext& context, const Diary& diary) {
  const auto files = context.files.listVisible(versionsOfChanged(context, diary));
  EXPECT_EQ(
      std::ranges::count_if(files, [](const auto& entry) { return entry.name.ends_with(".md"); }),
      VersionStore::defaultMaxVersions);
}

}  // namespace nomely::test
