#include "Core/Storage/WriteError.h"
#include "Platform/Files/FileError.h"
#include "Support/Deadline.h"
#include "Support/ErrorKind.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

class GateTest : public StoreTest {
 protected:
  DataWriteCoordinator& gate = DataWriteCoordinator::shared(folder.path());
};

TEST_F(GateTest, IsOneHoweverTheRootIsSpelt) {
  const fs::path base = folder.path();
  fs::create_directories(base / "data/sub");
  fs::create_directory_symlink("data", base / "link");
  fs::create_directory_symlink(base, base / "data/loop");
  const DataWriteCoordinator* const one = &DataWriteCoordinator::shared(base / "data");
  for (const char* spelling : {"data/", "data//", "data/.", "data/sub/..", "link", "link/",
                               "./data", "link/sub/../../data", "data/loop/link/."})
    EXPECT_EQ(&DataWriteCoordinator::shared(base / spelling), one) << spelling;
  EXPECT_NE(&DataWriteCoordinator::shared(base / "data/sub"), one);

  const DataWriteCoordinator* const before = &DataWriteCoordinator::shared(base / "link/later");
  EXPECT_EQ(&DataWriteCoordinator::shared(base / "data/later/"), before);
  fs::create_directory(base / "data/later");
  EXPECT_EQ(&DataWriteCoordinator::shared(base / "data/later"), before) << "now that it is there";
}

TEST_F(GateTest, FreezingStopsWritesAndNotReads) {
  const Day today = day("2026-03-01");
  const Memo memo = store.createMemo(today, {.body = "before"});
  const std::string before = treeOf(folder.path());
  const auto refusal = [&] {
    return kindOf<WriteError>([&] { (void)store.createMemo(today, {.body = "after"}); });
  };
  std::optional<WriteError::Kind> ofWaiting;
  std::jthread waiting;
  context.write([&] {
    waiting = waitingThread([&] { ofWaiting = refusal(); });
    gate.freeze();
    EXPECT_EQ(refusal(), WriteError::Kind::maintenance);
  });
  waiting.join();
  EXPECT_EQ(ofWaiting, WriteError::Kind::maintenance);
  EXPECT_EQ(refusal(), WriteError::Kind::maintenance);
  EXPECT_EQ(store.listMemos(today), std::vector{memo});
  EXPECT_EQ(treeOf(folder.path()), before);
}

TEST_F(GateTest, AMissingRootIsMadeForItsOwnerAloneAndAFileInItsPlaceIsReported) {
  const auto create = [&](const fs::path& root) {
    const StoreContext other{{root}, FileManager(posixFileSystem()), clock};
    (void)DayStore(other).createMemo(day("2026-03-01"), {.body = "first"});
  };
  create(folder.path() / "a/b");
  EXPECT_EQ(context.files.attributes(folder.path() / "a/b")->permissions, 0700U);
  EXPECT_NE(context.files.attributes(folder.path() / "a")->permissions, 0700U);
  writeFile(folder.path() / "file", "mine");
  EXPECT_FAILURE(FileError, notADirectory, create(folder.path() / "file"));
  EXPECT_EQ(readFile(folder.path() / "file"), "mine");
}

}  // namespace
}  // namespace nomely::test
