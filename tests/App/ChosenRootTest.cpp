#include <gtest/gtest.h>

#include "App/ChosenRoot.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

TEST(ChosenRoot, EachWordOverrulesTheNext) {
  const TemporaryFolder home;
  const FileManager files(posixFileSystem());
  const Environment plain({{"HOME", home.path().string()}});
  const Environment set({{"HOME", home.path().string()}, {"NOMELY_ROOT", "/set"}});
  EXPECT_EQ(ChosenRoot::of("", plain, files), home.path() / "NomelyData");
  ChosenRoot::settleOn("/settled", plain, files);
  EXPECT_EQ(ChosenRoot::of("", plain, files), "/settled");
  EXPECT_EQ(ChosenRoot::of("", set, files), "/set");
  EXPECT_EQ(ChosenRoot::of("/named/", set, files), "/named/");
  ChosenRoot::settleOn(home.path() / "NomelyData", plain, files);
  EXPECT_EQ(ChosenRoot::of("", plain, files), home.path() / "NomelyData");

  writeFile(home.path() / "文档" / "a.txt", "");
  writeFile(home.path() / "日记" / "2026-03-01" / "001.md", "");
  EXPECT_EQ(ChosenRoot::within(home.path() / "文档", files), home.path() / "文档" / "NomelyData");
  writeFile(home.path() / "克隆" / ".git" / "HEAD", "");
  for (const char* name : {"日记", "新的", "克隆"})
    EXPECT_EQ(ChosenRoot::within(home.path() / name, files), home.path() / name);
}

}  // namespace
}  // namespace nomely::test
