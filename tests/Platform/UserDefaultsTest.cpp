#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Files/FileError.h"
#include "Platform/Settings/UserDefaults.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

class UserDefaultsTest : public testing::Test {
 protected:
  [[nodiscard]] UserDefaults open() const {
    return {folder.path() / "state", FileManager(posixFileSystem())};
  }

  TemporaryFolder folder;
  std::filesystem::path file = folder.path() / "state" / "defaults.json";
};

TEST_F(UserDefaultsTest, ValuesByTypeAndAcrossInstances) {
  UserDefaults defaults = open();
  EXPECT_FALSE(defaults.string("name"));
  EXPECT_FALSE(std::filesystem::exists(file)) << "reading creates nothing";
  defaults.setBoolean("flag", false);
  defaults.setInteger("count", INT64_MIN);
  UserDefaults other = open();
  other.setString("name", "日记\n\"a\"");
  EXPECT_EQ(other.boolean("flag"), false);
  EXPECT_EQ(other.integer("count"), INT64_MIN);
  EXPECT_EQ(defaults.string("name"), "日记\n\"a\"");
  EXPECT_FALSE(defaults.integer("flag"));
  EXPECT_FALSE(defaults.boolean("count"));
  EXPECT_FALSE(defaults.string("count"));
  other.setString("flag", "text now");
  EXPECT_FALSE(defaults.boolean("flag"));
  defaults.remove("flag");
  defaults.remove("never there");
  EXPECT_FALSE(other.string("flag"));
  EXPECT_EQ(other.integer("count"), INT64_MIN);
}

TEST_F(UserDefaultsTest, ForeignContents) {
  const struct {
    const char* name;
    const char* content;
    bool corrupt;
  } cases[] = {
      {"cut off", R"({"n": 1, "s": "a)", true},
      {"no object", "[1]", true},
      {"empty", "", true},
      {"not UTF-8", "{\"n\": 1, \"s\": \"\xFF\"}", true},
      {"other types", R"({"n": 1.5, "s": null})", false},
      {"beyond 64 bits", R"({"n": 18446744073709551615, "s": {}})", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::filesystem::remove_all(file.parent_path());
    writeFile(file, c.content);
    UserDefaults defaults = open();
    EXPECT_FALSE(defaults.integer("n"));
    EXPECT_FALSE(defaults.string("s"));
    EXPECT_EQ(readFile(file), c.content);
    defaults.setString("new", "value");
    EXPECT_EQ(defaults.string("new"), "value");
    const std::filesystem::path kept = file.string() + ".corrupt";
    ASSERT_EQ(std::filesystem::exists(kept), c.corrupt);
    if (c.corrupt) {
      EXPECT_EQ(readFile(kept), c.content);
    }
  }
}

TEST_F(UserDefaultsTest, InstancesOfManyThreadsLoseNothing) {
  constexpr int each = 20;
  {
    std::vector<std::jthread> threads;
    for (int t = 0; t < 3; ++t)
      threads.emplace_back([this, t] {
        UserDefaults defaults = open();
        for (int i = 0; i < each; ++i)
          defaults.setInteger(std::to_string(t) + "." + std::to_string(i), i);
      });
  }
  const UserDefaults defaults = open();
  for (int t = 0; t < 3; ++t)
    for (int i = 0; i < each; ++i)
      EXPECT_EQ(defaults.integer(std::to_string(t) + "." + std::to_string(i)), i);
}

TEST_F(UserDefaultsTest, ChangeThatCannotBeStoredIsReported) {
  writeFile(folder.path() / "state", "in the way");
  UserDefaults defaults = open();
  EXPECT_FALSE(defaults.boolean("flag"));
  try {
    defaults.setBoolean("flag", true);
    FAIL() << "no error";
  } catch (const FileError& error) {
    EXPECT_EQ(error.kind(), FileError::Kind::notADirectory);
  }
}

}  // namespace
}  // namespace nomely::test
