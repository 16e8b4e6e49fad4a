#include <future>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "Platform/Files/DirectoryLock.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/ForkedRun.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

void failOnWait() {
  ADD_FAILURE() << "had to wait";
}

// What another process would have: an opening of the directory of its own.
class OtherHolder {
 public:
  explicit OtherHolder(const fs::path& directory)
      : descriptor_(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}
  ~OtherHolder() { ::close(descriptor_); }
  OtherHolder(const OtherHolder&) = delete;
  OtherHolder& operator=(const OtherHolder&) = delete;

  [[nodiscard]] bool tryLock() const { return ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0; }
  void unlock() const { ::flock(descriptor_, LOCK_UN); }

 private:
  int descriptor_;
};

class DirectoryLockTest : public testing::Test {
 protected:
  DirectoryLockTest() { fs::create_directory(root_); }

  void replaceDirectory() {
    fs::rename(root_, folder_.path() / "old");
    fs::create_directory(root_);
  }

  // A lock that waits for `holder`, on a thread of its own.
  std::future<bool> lockAfter(DirectoryLock& lock) {
    auto waiting = std::make_shared<std::promise<void>>();
    auto waits = waiting->get_future();
    auto result = std::async(std::launch::async, [&lock, waiting] {
      return lock.lock([&] { waiting->set_value(); });  // throws when it is called twice
    });
    EXPECT_EQ(waits.wait_for(std::chrono::seconds(30)), std::future_status::ready);
    return result;
  }

  TemporaryFolder folder_;
  fs::path root_ = folder_.path() / "root";
};

TEST_F(DirectoryLockTest, WaitsForAnotherHolderAndExcludesOthersUntilItIsUnlockedOrGone) {
  const OtherHolder other(root_);
  ASSERT_TRUE(other.tryLock());
  {
    DirectoryLock lock(root_);
    auto locked = lockAfter(lock);
    other.unlock();
    EXPECT_TRUE(locked.get());
    EXPECT_FALSE(other.tryLock());
    lock.unlock();
    EXPECT_TRUE(other.tryLock());
    other.unlock();
    ASSERT_TRUE(lock.lock(failOnWait));
  }
  EXPECT_TRUE(other.tryLock());
}

TEST_F(DirectoryLockTest, FollowsADirectoryThatWasReplacedBetweenLocks) {
  DirectoryLock lock(root_);
  ASSERT_TRUE(lock.lock(failOnWait));
  lock.unlock();
  replaceDirectory();
  ASSERT_TRUE(lock.lock(failOnWait));
  EXPECT_FALSE(OtherHolder(root_).tryLock());
  EXPECT_TRUE(OtherHolder(folder_.path() / "old").tryLock());

  fs::rename(root_, folder_.path() / "older");
  fs::create_directory(root_);
  DirectoryLock replaced(folder_.path() / "older");
  EXPECT_EQ(replaced.attempt(), DirectoryLock::Attempt::busy);
  EXPECT_TRUE(lock.tryLock());
  EXPECT_TRUE(replaced.tryLock());
}

TEST_F(DirectoryLockTest, FollowsADirectoryThatIsReplacedWhileItWaits) {
  const OtherHolder other(root_);
  ASSERT_TRUE(other.tryLock());
  DirectoryLock lock(root_);
  auto locked = lockAfter(lock);
  replaceDirectory();
  other.unlock();
  EXPECT_TRUE(locked.get());
  EXPECT_FALSE(OtherHolder(root_).tryLock());
  EXPECT_TRUE(other.tryLock());
}

TEST_F(DirectoryLockTest, AForkedChildIsAnotherHolder) {
  constexpr int waited = 42;
  DirectoryLock lock(root_);
  ASSERT_TRUE(lock.lock(failOnWait));
  const ChildEnd end = runInChild([&] { (void)lock.lock([] { ::_exit(waited); }); });
  EXPECT_EQ(end, ChildEnd{.status = waited});
  EXPECT_FALSE(OtherHolder(root_).tryLock()) << "the child's end released its parent's lock";
}

}  // namespace
}  // namespace nomely::test
