#include <thread>

#include <gmock/gmock.h>
#include <unistd.h>

#include "Core/Storage/DraftStore.h"
#include "Editor/Recording/RecordingRecovery.h"
#include "Support/FaultyFileSystem.h"
#include "Support/ForkedRun.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RecordingRecoveryTest : public StoreTest {
 protected:
  // No sound, but nothing tells it from a plain recording without decoding it.
  void leaveBehind(const std::string& name = "voice_2026-02-27_235959.m4a") const {
    using namespace std::string_literals;
    writeFile(recordings() / name, "\0\0\0\x08mdat"s + name);
  }
  [[nodiscard]] std::filesystem::path recordings() const {
    return folder.path() / ".drafts/recordings";
  }
  [[nodiscard]] std::vector<std::string> attachments() const {
    std::vector<std::string> contents;
    for (const Day date : store.listAllDates())
      for (const Memo& memo : store.listMemos(date))
        for (const std::string& name : memo.attachments)
          contents.push_back(readFile(context.paths.dayFolder(date) / name));
    return contents;
  }
  [[nodiscard]] std::size_t soundFiles() const {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.path()))
      count += entry.path().extension() == ".m4a" ? 1 : 0;
    return count;
  }
  [[nodiscard]] auto run() const { return RecordingRecovery::run(MemoService(context), {}); }

  const Day left = day("2026-02-27");
};

TEST_F(RecordingRecoveryTest, BecomesAMemoOfItsDay) {
  leaveBehind();
  writeFile(recordings() / "voice_2026-02-28_000000.m4a", "");  // died at once
  writeFile(recordings() / ".voice_ABC", "half a conversion");
  ASSERT_EQ(run().size(), 1U);
  const Memo memo = store.listMemos(left).at(0);
  EXPECT_EQ(memo.time, "23:59");
  EXPECT_THAT(memo.tags, ElementsAre("语音"));
  EXPECT_EQ(memo.originalNames.at(memo.attachments.at(0)), "voice_2026-02-27_235959.m4a");
  EXPECT_TRUE(std::filesystem::is_empty(recordings()));
  EXPECT_THAT(run(), IsEmpty());
}

TEST_F(RecordingRecoveryTest, HeldRecordingIsLeftAlone) {
  const auto path = context.write([&] { return DraftStore(context).ensureRecordingsDir(); });
  const auto held = LockedRecording::create(path, clock.now());
  EXPECT_THAT(run(), IsEmpty());
  EXPECT_TRUE(std::filesystem::exists(held.path()));
}

// Its process died between giving it away and removing it.
TEST_F(RecordingRecoveryTest, WhatIsGivenAwayAlreadyIsNotGivenTwice) {
  const MemoService memos(context);
  leaveBehind();
  const auto file = recordings() / "voice_2026-02-27_235959.m4a";
  // To a memo of another day.
  (void)memos.create(day("2026-03-01"), {.body = "原有"}, {file});
  EXPECT_THAT(run(), IsEmpty());
  EXPECT_EQ(soundFiles(), 1U);

  // To a draft.
  leaveBehind("voice_2026-02-27_100000.m4a");
  const auto imported =
      AttachmentManager(context).importFile(recordings() / "voice_2026-02-27_100000.m4a", left);
  DraftStore(context).saveQuickInputDraft({.pendingAttachments = {imported.filename}});
  EXPECT_THAT(run(), IsEmpty());
  EXPECT_EQ(soundFiles(), 2U);

  // Another recording of the same name and day is one more.
  leaveBehind();
  writeFile(file, readFile(file) + "other");
  EXPECT_EQ(run().size(), 1U);
}

TEST_F(RecordingRecoveryTest, KilledAtAnyCallItComesToOneMemo) {
  for (std::uint64_t call = 1;; ++call) {
    SCOPED_TRACE(call);
    leaveBehind();
    const ChildEnd end = runInChild([&] {
      std::uint64_t count = 0;
      FaultyFileSystem dying(posixFileSystem(), {}, [&](const FaultyFileSystem::Call&) {
        if (++count == call) ::_exit(7);
      });
      (void)RecordingRecovery::run(
          MemoService(StoreContext{{folder.path()}, FileManager(dying), clock}), {});
    });
    EXPECT_EQ(runInChild([&] { (void)run(); }), ChildEnd{});
    EXPECT_EQ(attachments().size(), 1U);
    EXPECT_EQ(soundFiles(), 1U);
    if (end == ChildEnd{}) break;
    ASSERT_EQ(end, ChildEnd{.status = 7});
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
      std::filesystem::remove_all(entry.path());
  }
}

TEST_F(RecordingRecoveryTest, TwoAtOnceMakeOneMemo) {
  for (int i = 0; i < 20; ++i) {
    leaveBehind();
    EXPECT_EQ(runInChild([&] {
                std::jthread other([&] { (void)run(); });
                (void)run();
              }),
              ChildEnd{});
    EXPECT_EQ(attachments().size(), 1U);
    std::filesystem::remove_all(context.paths.dayFolder(left));
  }
}

}  // namespace
}  // namespace nomely::test
