#include <cerrno>
#include <cstddef>
#include <tuple>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include "Platform/Files/FileError.h"
#include "Platform/Files/FileManager.h"
#include "Support/ErrorKind.h"
#include "Support/FaultyFileSystem.h"
#include "Support/ForkedRun.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

const auto longAgo = fs::file_time_type::clock::now() - std::chrono::hours(50);

// A file with a time and permissions of its own.
fs::path oldFile(const fs::path& folder, const std::string& content) {
  writeFile(folder / "from", content);
  fs::permissions(folder / "from", fs::perms::owner_read | fs::perms::owner_exec);
  fs::last_write_time(folder / "from", longAgo);
  return folder / "from";
}
void expectAsOld(const fs::path& file) {
  EXPECT_EQ(fs::last_write_time(file), longAgo);
  EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_exec);
}

class FileManagerTest : public testing::Test {
 protected:
  [[nodiscard]] fs::path at(const std::string& name) const { return folder_.path() / name; }

  TemporaryFolder folder_;
  FileManager files_{posixFileSystem()};
};

TEST_F(FileManagerTest, WritingKeepsThePermissionsOfWhatItReplaces) {
  for (const unsigned permissions : {0600U, 0444U}) {
    writeFile(at("a"), "old");
    fs::permissions(at("a"), static_cast<fs::perms>(permissions));
    files_.writeAtomically(at("a"), "new");
    EXPECT_EQ(readFile(at("a")), "new");
    EXPECT_EQ(files_.attributes(at("a"))->permissions, permissions);
    fs::remove(at("a"));
  }
}

TEST_F(FileManagerTest, WritingReplacesALinkAndNotWhatItPointsTo) {
  writeFile(at("elsewhere"), "kept");
  fs::create_symlink("elsewhere", at("link"));
  files_.writeAtomically(at("link"), "new");
  EXPECT_EQ(readFile(at("elsewhere")), "kept");
  EXPECT_FALSE(fs::is_symlink(at("link")));
  EXPECT_EQ(readFile(at("link")), "new");
}

TEST_F(FileManagerTest, CreatingLeavesATakenNameAlone) {
  writeFile(at("file"), "kept");
  fs::create_directory(at("folder"));
  fs::create_symlink("nowhere", at("dangling"));
  const std::string before = treeOf(folder_.path());
  for (const char* name : {"file", "folder", "dangling"})
    EXPECT_FALSE(files_.createAtomically(at(name), "new")) << name;
  EXPECT_EQ(treeOf(folder_.path()), before);
  EXPECT_TRUE(files_.createAtomically(at("free"), "new"));
  EXPECT_EQ(readFile(at("free")), "new");
}

// From here on this process's system knows no renaming that refuses to replace.
void forgetRefusingRename() {
  sock_filter steps[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_renameat2, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EINVAL),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog program{.len = std::size(steps), .filter = steps};
  ASSERT_EQ(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
  ASSERT_EQ(::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program), 0);
}

TEST_F(FileManagerTest, NothingIsReplacedWhereRenamingCannotRefuseTo) {
  const ChildEnd end = runInChild([&] {
    forgetRefusingRename();
    writeFile(at("taken"), "kept");
    EXPECT_FALSE(files_.createAtomically(at("taken"), "new"));
    EXPECT_TRUE(files_.createAtomically(at("free"), "new"));
    EXPECT_EQ(treeOf(folder_.path()), "free\nnew\ntaken\nkept\n");
  });
  EXPECT_EQ(end, ChildEnd{});
}

TEST_F(FileManagerTest, CopyKeepsTimeAndPermissions) {
  for (const std::size_t size : {0, 1, 3'000'000}) {
    const fs::path from = oldFile(at(""), std::string(size, 'x'));
    files_.copyFile(from, at("to"));
    EXPECT_EQ(readFile(at("to")), readFile(from));
    expectAsOld(at("to"));
    fs::remove(at("to"));
    fs::remove(from);
  }
}

TEST_F(FileManagerTest, CopyRefusesWhatIsNoFile) {
  writeFile(at("file"), "text");
  fs::create_symlink("file", at("link"));
  fs::create_directory(at("folder"));
  ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
  writeFile(at("taken"), "kept");
  const std::string before = treeOf(folder_.path());

  struct Case {
    const char* from;
    const char* to;
    LinkPolicy links;
    FileError::Kind kind;
  };
  for (const Case& each : {
           Case{"link", "to", LinkPolicy::noFollow, FileError::Kind::symbolicLink},
           Case{"folder", "to", LinkPolicy::follow, FileError::Kind::isADirectory},
           Case{"pipe", "to", LinkPolicy::follow, FileError::Kind::unsupported},
           Case{"none", "to", LinkPolicy::follow, FileError::Kind::notFound},
           Case{"file", "taken", LinkPolicy::follow, FileError::Kind::alreadyExists},
           Case{"file", "none/to", LinkPolicy::follow, FileError::Kind::notFound},
       }) {
    EXPECT_EQ(kindOf<FileError>([&] { files_.copyFile(at(each.from), at(each.to), each.links); }),
              each.kind)
        << each.from;
    EXPECT_EQ(treeOf(folder_.path()), before) << each.from;
  }
  files_.copyFile(at("link"), at("to"));
  EXPECT_EQ(readFile(at("to")), "text");
}

TEST_F(FileManagerTest, ContentsAreComparedToTheLastByte) {
  const std::string large(200'000, 'x');
  for (const auto& [left, right] : {std::pair(std::string(), std::string()),
                                    {"a", "b"},
                                    {"a", "ab"},
                                    {large, large},
                                    {large + "x", large + "y"},
                                    {"x" + large, "y" + large}}) {
    writeFile(at("left"), left);
    writeFile(at("right"), right);
    EXPECT_EQ(files_.contentsEqual(at("left"), at("right")), left == right);
  }
  EXPECT_FAILURE(FileError, notFound, files_.contentsEqual(at("left"), at("none")));
}

TEST_F(FileManagerTest, MoveKeepsTheFileWhenTheNameIsTaken) {
  writeFile(at("from"), "moved");
  writeFile(at("taken"), "kept");
  EXPECT_FAILURE(FileError, alreadyExists, files_.moveFile(at("from"), at("taken")));
  EXPECT_EQ(readFile(at("from")) + readFile(at("taken")), "movedkept");
  files_.moveFile(at("from"), at("to"));
  EXPECT_FALSE(fs::exists(at("from")));
  EXPECT_EQ(readFile(at("to")), "moved");
}

// Where it takes a copy.
TEST_F(FileManagerTest, MoveCrossesFileSystems) {
  const TemporaryFolder elsewhere(quickParent());
  const fs::path there = elsewhere.path();
  if (files_.attributes(there)->device == files_.attributes(folder_.path())->device)
    GTEST_SKIP() << "there is but one file system";
  const fs::path from = oldFile(folder_.path(), "moved");
  writeFile(there / "taken", "kept");
  fs::create_symlink("from", at("link"));
  EXPECT_FAILURE(FileError, alreadyExists, files_.moveFile(from, there / "taken"));
  EXPECT_EQ(readFile(from) + readFile(there / "taken"), "movedkept");
  EXPECT_FAILURE(FileError, symbolicLink, files_.moveFile(at("link"), there / "link"));
  EXPECT_TRUE(fs::is_symlink(at("link")));
  files_.moveFile(from, there / "to");
  EXPECT_FALSE(fs::exists(from));
  EXPECT_EQ(readFile(there / "to"), "moved");
  expectAsOld(there / "to");
}

TEST_F(FileManagerTest, SweepTakesItsOwnFilesOnly) {
  for (const char* name : {".nomely-1f.tmp.md", "nomely-1f.tmp", ".nomely-.tmp", ".nomely-1f",
                           ".other-1f.tmp", "a.nomely-1f.tmp", "inner/.nomely-1f.tmp"})
    writeFile(at(name), "kept");
  fs::create_directory(at(".nomely-folder.tmp"));
  fs::create_symlink("nowhere", at(".nomely-link.tmp"));
  const std::string before = treeOf(folder_.path());
  for (const char* name : {".nomely-1f.tmp", ".nomely-a b.tmp"}) writeFile(at(name), "x");
  EXPECT_EQ(files_.sweepTemporaries(folder_.path()), 2U);
  EXPECT_EQ(treeOf(folder_.path()), before);
}

TEST_F(FileManagerTest, ContentsPieceByPiece) {
  // Around the size at which pieces are no longer collected.
  constexpr std::size_t step = std::size_t{1} << 18;
  std::string expected;
  const auto produce = [&](const FileManager::Sink& sink) {
    expected.clear();
    for (const std::size_t size : {std::size_t{1}, step - 1, std::size_t{1}, step, 2 * step + 3}) {
      const std::string piece(size, static_cast<char>('a' + expected.size() % 26));
      expected += piece;
      sink(piece);
    }
  };
  EXPECT_TRUE(files_.createAtomically(at("a"), produce));
  EXPECT_EQ(readFile(at("a")), expected);
  EXPECT_FALSE(files_.createAtomically(at("a"), [](const auto& sink) { sink("other"); }));

  const std::string before = treeOf(folder_.path());
  const auto giveUp = [](const FileManager::Sink& sink) {
    sink(std::string(2 * step, 'x'));
    throw std::runtime_error("enough");
  };
  EXPECT_THROW(files_.writeAtomically(at("a"), giveUp), std::runtime_error);
  EXPECT_THROW((void)files_.createAtomically(at("b"), giveUp), std::runtime_error);
  FaultyFileSystem full(posixFileSystem(), {.atCall = 3});
  EXPECT_TRUE(kindOf<FileError>([&] { FileManager(full).writeAtomically(at("a"), produce); }));
  files_.sweepTemporaries(folder_.path());
  EXPECT_EQ(treeOf(folder_.path()), before);

  files_.writeAtomically(at("a"), [](const auto& sink) { sink("new"); });
  EXPECT_EQ(readFile(at("a")), "new");
}

}  // namespace
}  // namespace nomely::test
