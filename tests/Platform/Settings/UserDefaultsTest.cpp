#include <thread>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "Platform/Files/FileError.h"
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
    std::filesystem::remove_all(file.parent_path());
    writeFile(file, content);
    UserDefaults defaults = open();
    EXPECT_FALSE(defaults.integer("n") || defaults.string("s") || defaults.strings("l"));
    EXPECT_EQ(readFile(file), content);
    defaults.setString("new", "value");
    EXPECT_EQ(defaults.string("new"), "value");
    const std::filesystem::path kept = file.string() + ".corrupt";
    EXPECT_EQ(std::filesystem::exists(kept) ? readFile(kept) : "none",
              isCorrupt ? content : "none");
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
  EXPECT_EQ(kindOf<FileError>([&] { open().setBoolean("flag", true); }),
            FileError::Kind::notADirectory);
}

}  // namespace
}  // namespace nomely::test
