#include <algorithm>
#include <functional>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Platform/Files/FileError.h"
#include "Platform/Files/FileManager.h"
#include "Support/ErrorKind.h"
#include "Support/FaultyFileSystem.h"
#include "Support/ForkedRun.h"
#include "Support/Mounts.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

using Fault = FaultyFileSystem::Fault;
using Mode = FaultyFileSystem::Mode;

class FileManagerTest : public testing::Test {
 protected:
  [[nodiscard]] fs::path at(const std::string& name) const { return folder_.path() / name; }

  TemporaryFolder folder_;
  FileManager files_{posixFileSystem()};
};

TEST_F(FileManagerTest, WritingKeepsThePermissionsOfWhatItReplaces) {
  for (const unsigned permissions : {0600U, 0640U, 0444U, 0755U}) {
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

TEST_F(FileManagerTest, CopyKeepsTimeAndPermissions) {
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{3'000'000}}) {
    writeFile(at("from"), std::string(size, 'x'));
    fs::permissions(at("from"), fs::perms::owner_read | fs::perms::owner_exec);
    const auto then = fs::last_write_time(at("from")) - std::chrono::hours(50);
    fs::last_write_time(at("from"), then);
    files_.copyFile(at("from"), at("to"));
    EXPECT_EQ(readFile(at("to")), readFile(at("from")));
    EXPECT_EQ(fs::last_write_time(at("to")), then);
    EXPECT_EQ(files_.attributes(at("to"))->permissions, 0500U);
    fs::remove(at("from"));
    fs::remove(at("to"));
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
  std::string other = large;
  other.back() = 'y';
  std::string early = large;
  early[70'000] = 'y';
  struct Case {
    std::string left;
    std::string right;
    bool equal;
  };
  for (const Case& each : {Case{"", "", true}, Case{"a", "a", true}, Case{"a", "b", false},
                           Case{"a", "ab", false}, Case{"", "a", false}, Case{large, large, true},
                           Case{large, other, false}, Case{large, early, false}}) {
    writeFile(at("left"), each.left);
    writeFile(at("right"), each.right);
    EXPECT_EQ(files_.contentsEqual(at("left"), at("right")), each.equal);
  }
  EXPECT_EQ(kindOf<FileError>([&] { (void)files_.contentsEqual(at("left"), at("none")); }),
            FileError::Kind::notFound);
}

TEST_F(FileManagerTest, MoveKeepsTheFileWhenTheNameIsTaken) {
  writeFile(at("from"), "moved");
  writeFile(at("taken"), "kept");
  EXPECT_EQ(kindOf<FileError>([&] { files_.moveFile(at("from"), at("taken")); }),
            FileError::Kind::alreadyExists);
  EXPECT_EQ(readFile(at("from")) + readFile(at("taken")), "movedkept");
  files_.moveFile(at("from"), at("to"));
  EXPECT_FALSE(fs::exists(at("from")));
  EXPECT_EQ(readFile(at("to")), "moved");
}

// The same between file systems, where it takes a copy.
void moveBetween(const fs::path& here, const fs::path& there) {
  const FileManager files(posixFileSystem());
  writeFile(here / "from", "moved");
  fs::permissions(here / "from", fs::perms::owner_read);
  const auto then = fs::last_write_time(here / "from") - std::chrono::hours(50);
  fs::last_write_time(here / "from", then);
  writeFile(there / "taken", "kept");
  fs::create_symlink("from", here / "link");

  EXPECT_EQ(kindOf<FileError>([&] { files.moveFile(here / "from", there / "taken"); }),
            FileError::Kind::alreadyExists);
  EXPECT_EQ(readFile(here / "from") + readFile(there / "taken"), "movedkept");
  EXPECT_EQ(kindOf<FileError>([&] { files.moveFile(here / "link", there / "link"); }),
            FileError::Kind::symbolicLink);
  EXPECT_TRUE(fs::is_symlink(here / "link"));

  files.moveFile(here / "from", there / "to");
  EXPECT_FALSE(fs::exists(here / "from"));
  EXPECT_EQ(readFile(there / "to"), "moved");
  EXPECT_EQ(fs::last_write_time(there / "to"), then);
  EXPECT_EQ(files.attributes(there / "to")->permissions, 0400U);
}

TEST_F(FileManagerTest, MoveCrossesFileSystems) {
  fs::create_directory(at("here"));
  fs::create_directory(at("there"));
  const ChildEnd end = runInChild([&] {
    if (const auto reason = takePrivateMounts()) GTEST_SKIP() << *reason;
    const Mount mount({.type = "tmpfs"}, at("there"));
    moveBetween(at("here"), at("there"));
  });
  if (end == skippedInChild) GTEST_SKIP() << "for the reason above";
  EXPECT_EQ(end, ChildEnd{});
}

TEST_F(FileManagerTest, SweepTakesItsOwnFilesOnly) {
  for (const char* name : {".nomely-1f.tmp", ".nomely-a b.tmp"}) writeFile(at(name), "x");
  const std::string swept = treeOf(folder_.path());
  for (const char* name : {".nomely-1f.tmp.md", "nomely-1f.tmp", ".nomely-.tmp", ".nomely-1f",
                           ".other-1f.tmp", "001.md", "a.nomely-1f.tmp"})
    writeFile(at(name), "kept");
  fs::create_directory(at(".nomely-folder.tmp"));
  fs::create_symlink("001.md", at(".nomely-link.tmp"));
  writeFile(at("inner/.nomely-1f.tmp"), "not asked for");
  const auto count = [&] {
    return std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator());
  };
  const auto before = count();
  EXPECT_EQ(files_.sweepTemporaries(folder_.path()), 2U);
  EXPECT_EQ(count(), before - 2);
  EXPECT_FALSE(fs::exists(at(".nomely-1f.tmp")) || fs::exists(at(".nomely-a b.tmp")));
  EXPECT_EQ(files_.sweepTemporaries(folder_.path()), 0U);
}

// The number of the last call with that name in an undisturbed run.
std::uint64_t lastCall(std::string_view name,
                       const std::function<void(const FileManager&)>& change) {
  FaultyFileSystem undisturbed(posixFileSystem(), {});
  change(FileManager(undisturbed));
  const auto& calls = undisturbed.calls();
  for (std::size_t i = calls.size(); i > 0; --i)
    if (calls[i - 1].name == name) return i;
  ADD_FAILURE() << "no call " << name;
  return 0;
}

TEST_F(FileManagerTest, AStaleTemporaryBlocksNothing) {
  const auto save = [&](const FileManager& files) { files.writeAtomically(at("a"), "new"); };
  // From the rename on everything fails, the removal of the temporary too.
  const std::uint64_t rename = lastCall("rename", save);
  FaultyFileSystem broken(posixFileSystem(), {.atCall = rename, .lasting = true});
  EXPECT_TRUE(kindOf<FileError>([&] { save(FileManager(broken)); }));
  fs::path stale;
  for (const auto& entry : fs::directory_iterator(folder_.path()))
    if (FileManager::isTemporaryName(entry.path().filename().native())) stale = entry.path();
  ASSERT_FALSE(stale.empty());

  // A sweep that can't remove it says so by its count alone.
  FaultyFileSystem stubborn(posixFileSystem(), {.atCall = 2, .lasting = true});
  EXPECT_EQ(FileManager(stubborn).sweepTemporaries(folder_.path()), 0U);
  EXPECT_TRUE(fs::exists(stale));

  EXPECT_FALSE(kindOf<FileError>([&] { save(files_); }));
  EXPECT_EQ(files_.sweepTemporaries(folder_.path()), 1U);
  EXPECT_EQ(readFile(at("a")), "new");
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
  FaultyFileSystem full(posixFileSystem(), {.mode = Mode::partial, .atCall = 2, .lasting = true});
  EXPECT_TRUE(kindOf<FileError>([&] { FileManager(full).writeAtomically(at("a"), produce); }));
  files_.sweepTemporaries(folder_.path());
  EXPECT_EQ(treeOf(folder_.path()), before);

  files_.writeAtomically(at("a"), [](const auto& sink) { sink("new"); });
  EXPECT_EQ(readFile(at("a")), "new");
}

TEST_F(FileManagerTest, WhatIsNewAndNotDurableIsTakenAway) {
  writeFile(at("source"), "text");
  struct Case {
    const char* name;
    std::function<void(const FileManager&)> change;
  };
  const std::vector<Case> cases{
      {"created",
       [&](const auto& files) { EXPECT_TRUE(files.createAtomically(at("created"), "text")); }},
      {"copied", [&](const auto& files) { files.copyFile(at("source"), at("copied")); }},
      {"folder", [&](const auto& files) { files.createDirectories(at("folder")); }},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    const std::uint64_t settling = lastCall("syncDirectory", each.change);
    fs::remove(at(each.name));
    for (const Mode mode : {Mode::fail, Mode::failLate}) {
      FaultyFileSystem faulty(posixFileSystem(), {.mode = mode, .atCall = settling});
      EXPECT_EQ(kindOf<FileError>([&] { each.change(FileManager(faulty)); }),
                FileError::Kind::inputOutput);
      EXPECT_FALSE(fs::exists(at(each.name)));
    }
    EXPECT_FALSE(kindOf<FileError>([&] { each.change(files_); })) << "can't be repeated";
    EXPECT_TRUE(fs::exists(at(each.name)));
  }
}

TEST_F(FileManagerTest, AWriteThatIsNotDurableIsReportedAndWhole) {
  writeFile(at("a"), "old");
  const auto save = [&](const FileManager& files) { files.writeAtomically(at("a"), "new"); };
  const std::uint64_t settling = lastCall("syncDirectory", save);
  FaultyFileSystem faulty(posixFileSystem(), {.atCall = settling});
  EXPECT_EQ(kindOf<FileError>([&] { save(FileManager(faulty)); }), FileError::Kind::inputOutput);
  EXPECT_EQ(readFile(at("a")), "new");
}

}  // namespace
}  // namespace nomely::test
