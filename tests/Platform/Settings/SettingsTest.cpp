#include <thread>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

#include "Platform/Files/FileError.h"
#include "Platform/Settings/DesktopSecrets.h"
#include "Platform/Settings/KeychainStore.h"
#include "Platform/Settings/MemorySecrets.h"
#include "Platform/Settings/UserDefaults.h"
#include "Support/ErrorKind.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

class UserDefaultsTest : public testing::Test {
 protected:
  [[nodiscard]] UserDefaults open() const {
    return {folder.path() / "state", FileManager(posixFileSystem())};
  }

  TemporaryFolder folder;
  fs::path file = folder.path() / "state" / "defaults.json";
};

TEST_F(UserDefaultsTest, ValuesByTypeAndAcrossInstances) {
  UserDefaults defaults = open();
  EXPECT_FALSE(defaults.string("name"));
  EXPECT_FALSE(fs::exists(file)) << "reading creates nothing";
  defaults.setBoolean("flag", false);
  defaults.setInteger("count", INT64_MIN);
  UserDefaults other = open();
  other.setString("name", "日记\n\"a\"");
  EXPECT_EQ(other.boolean("flag"), false);
  EXPECT_EQ(other.integer("count"), INT64_MIN);
  EXPECT_EQ(defaults.string("name"), "日记\n\"a\"");
  const std::vector<std::string> list{"工作", ""};
  defaults.setStrings("list", list);
  EXPECT_EQ(other.strings("list"), list);
  EXPECT_FALSE(defaults.strings("name"));
  EXPECT_FALSE(defaults.integer("flag") || defaults.boolean("count") || defaults.string("count"));
  other.setString("flag", "text now");
  EXPECT_FALSE(defaults.boolean("flag"));
  defaults.remove("flag");
  defaults.remove("never there");
  EXPECT_FALSE(other.string("flag"));
  EXPECT_EQ(other.integer("count"), INT64_MIN);
}

TEST_F(UserDefaultsTest, ForeignContents) {
  for (const auto& [content, isCorrupt] : {std::pair(R"({"n": 1, "s": "a)", true),
                                           {"[1]", true},
                                           {"", true},
                                           {"{\"n\": 1, \"s\": \"\xFF\"}", true},
                                           {R"({"n": 1.5, "s": null, "l": ["a", 1]})", false},
                                           {R"({"n": 18446744073709551615, "s": {}})", false}}) {
    SCOPED_TRACE(content);
    fs::remove_all(file.parent_path());
    writeFile(file, content);
    UserDefaults defaults = open();
    EXPECT_FALSE(defaults.integer("n") || defaults.string("s") || defaults.strings("l"));
    EXPECT_EQ(readFile(file), content);
    defaults.setString("new", "value");
    EXPECT_EQ(defaults.string("new"), "value");
    const fs::path kept = file.string() + ".corrupt";
    EXPECT_EQ(fs::exists(kept) ? readFile(kept) : "none", isCorrupt ? content : "none");
  }
}

TEST_F(UserDefaultsTest, InstancesOfManyThreadsLoseNothing) {
  constexpr int each = 20;
  const auto key = [](int thread, int i) { return fmt::format("{}.{}", thread, i); };
  std::vector<std::jthread> threads;
  for (int t = 0; t < 3; ++t)
    threads.emplace_back([&, t] {
      UserDefaults defaults = open();
      for (int i = 0; i < each; ++i) defaults.setInteger(key(t, i), i);
    });
  threads.clear();
  for (int t = 0; t < 3; ++t)
    for (int i = 0; i < each; ++i) EXPECT_EQ(open().integer(key(t, i)), i);
}

TEST_F(UserDefaultsTest, ChangeThatCannotBeStoredIsReported) {
  writeFile(folder.path() / "state", "in the way");
  EXPECT_FALSE(open().boolean("flag"));
  EXPECT_FAILURE(FileError, notADirectory, open().setBoolean("flag", true));
}

using State = SecretLookup::State;

// What any store holds to.
void checkContract(SecretBackend& backend) {
  const KeychainStore store(backend);
  EXPECT_EQ(store.lookUp("none").state, State::none);
  EXPECT_TRUE(store.remove("none"));
  EXPECT_TRUE(store.setString("", "none"));
  const std::string value = "sk-\"1\"\\ 日记";
  EXPECT_TRUE(store.setString("older", "key"));
  EXPECT_TRUE(store.setString(value, "key"));
  EXPECT_TRUE(store.setString("other", "other"));
  EXPECT_EQ(store.string("key"), value);
  EXPECT_FALSE(KeychainStore(backend, "elsewhere").string("key"));
  EXPECT_TRUE(store.setString("", "key"));
  EXPECT_FALSE(store.string("key"));
  EXPECT_EQ(store.string("other"), "other");
}

// Those of a keyring are in the tests of the program, which need a bus.
TEST(SecretsTest, InMemoryAndInAFile) {
  MemorySecrets memory;
  checkContract(memory);
  const TemporaryFolder folder;
  DesktopSecrets desktop(Environment({{"XDG_STATE_HOME", folder.path().string()}}),
                         posixFileSystem());
  EXPECT_TRUE(fs::is_empty(folder.path()));
  checkContract(desktop);
  (void)memory.store("s", "a", "\xFF");
  EXPECT_FALSE(KeychainStore(memory, "s").string("a"));
}

TEST(SecretsTest, TheFileIsItsOwnersAloneAndADamagedOneStays) {
  const TemporaryFolder parent;
  const fs::path folder = parent.path() / "secrets";
  const fs::path file = folder / "secrets.json";
  FileSecrets secrets(folder, FileManager(posixFileSystem()));
  EXPECT_EQ(secrets.store("s", "a", "one"), SecretPlace::ownFile);
  const auto checkPermissions = [&] {
    EXPECT_EQ(fs::status(folder).permissions(), fs::perms::owner_all);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  };
  checkPermissions();
  fs::permissions(folder, fs::perms::all);
  fs::permissions(file, fs::perms::all);
  EXPECT_EQ(secrets.lookUp("s", "a").value, "one");
  checkPermissions();
  fs::permissions(file, fs::perms::all);
  (void)FileSecrets(folder, FileManager(posixFileSystem())).store("s", "b", "two");
  checkPermissions();
  EXPECT_EQ(secrets.lookUp("s", "a").value, "one");

  for (const char* damaged :
       {"", "[]", R"({"s": "a"})", R"({"s": {"a": 1}})", "{\"s\": {\"a\": \"\xFF"}) {
    SCOPED_TRACE(damaged);
    writeFile(file, damaged);
    EXPECT_EQ(secrets.lookUp("s", "none").state, State::unavailable);
    EXPECT_NE(secrets.lookUp("s", "none").problem, "");
    EXPECT_FAILURE(SecretError, unavailable, secrets.store("s", "a", "new"));
    EXPECT_FAILURE(SecretError, unavailable, secrets.remove("s", "a"));
    EXPECT_EQ(readFile(file), damaged);
  }
}

}  // namespace
}  // namespace nomely::test
