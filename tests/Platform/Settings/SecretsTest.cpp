#include <gmock/gmock.h>

#include "Platform/Settings/DesktopSecrets.h"
#include "Platform/Settings/KeychainStore.h"
#include "Platform/Settings/MemorySecrets.h"
#include "Support/ErrorKind.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;
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
    EXPECT_EQ(kindOf<SecretError>([&] { (void)secrets.store("s", "a", "new"); }),
              SecretError::Kind::unavailable);
    EXPECT_EQ(kindOf<SecretError>([&] { secrets.remove("s", "a"); }),
              SecretError::Kind::unavailable);
    EXPECT_EQ(readFile(file), damaged);
  }
}

}  // namespace
}  // namespace nomely::test
