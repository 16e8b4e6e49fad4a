#include <cerrno>
#include <set>

#include <gmock/gmock.h>

#include "Platform/Files/FileError.h"
#include "Platform/System/Environment.h"
#include "Platform/System/Log.h"
#include "Platform/System/Uuid.h"
#include "Support/ForkedRun.h"

namespace nomely::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

TEST(UuidTest, FormatVersionAndVariant) {
  std::set<Uuid> drawn;
  for (int i = 0; i < 1000; ++i) {
    const Uuid id = Uuid::random();
    drawn.insert(id);
    ASSERT_THAT(
        id.string(),
        MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    ASSERT_THAT(id.compact(), MatchesRegex("[0-9a-f]{32}"));
  }
  EXPECT_EQ(drawn.size(), 1000);
}

TEST(UuidTest, ChildDrawsItsOwn) {
  (void)Uuid::random();  // there is a buffer to inherit
  const std::string first = inChild([] { return Uuid::random().string(); });
  const std::string second = inChild([] { return Uuid::random().string(); });
  const std::string own = Uuid::random().string();
  EXPECT_NE(first, second);
  EXPECT_NE(first, own);
  EXPECT_NE(second, own);
}

TEST(LogTest, EchoLevels) {
  const std::string errors = "[storage] e\n[feishu] {} f\n";
  for (const auto& [echo, expected] : {std::pair(Log::Echo::nothing, std::string()),
                                       {Log::Echo::everything, "[app] i 1\n" + errors},
                                       {Log::Echo::errors, errors}}) {
    Log::setEcho(echo);
    testing::internal::CaptureStderr();
    Log::information(LogChannel::app, "i {}", 1);
    Log::error(LogChannel::storage, "e");
    Log::write(LogChannel::feishu, LogLevel::fault, "{} f");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), expected);
  }
}

TEST(EnvironmentTest, Folders) {
  using Variables = Environment::Variables;
  const auto folders = [](Variables variables) {
    variables.emplace("HOME", "/h");
    const Environment environment(std::move(variables));
    return fmt::format("{} {} {}", environment.temporaryFolder().string(),
                       environment.configurationFolder().string(),
                       environment.stateFolder().string());
  };
  EXPECT_EQ(folders({}), "/tmp /h/.config/nomely /h/.local/state/nomely");
  EXPECT_EQ(folders({{"TMPDIR", "/t"}, {"XDG_CONFIG_HOME", "/c"}, {"XDG_STATE_HOME", "/s"}}),
            "/t /c/nomely /s/nomely");
  EXPECT_EQ(folders({{"TMPDIR", ""}, {"XDG_CONFIG_HOME", "c"}, {"XDG_STATE_HOME", "./s"}}),
            folders({}))
      << "what is empty or relative counts as not set";
  EXPECT_TRUE(Environment(Environment::Variables{{"HOME", ""}}).homeFolder().is_absolute());
  EXPECT_FALSE(Environment(Environment::Variables()).get("HOME"));
  EXPECT_EQ(inChild([] {
              ::setenv("NOMELY_TEST_VALUE", "a=b=", 1);
              return Environment::current().get("NOMELY_TEST_VALUE").value_or("absent");
            }),
            "a=b=");
}

TEST(FileErrorTest, CasesOfTheErrno) {
  using Kind = FileError::Kind;
  const struct {
    int errorNumber;
    Kind kind;
    const char* code;
    const char* reason;
  } cases[] = {
      {ENOENT, Kind::notFound, "file.notFound", "文件或文件夹不存在"},
      {EOVERFLOW, Kind::tooLarge, "file.tooLarge", "文件过大"},
      {EXDEV, Kind::unsupported, "file.unsupported", "两处不在同一个文件系统"},
      {EDOM, Kind::other, "file.other", "系统错误 33"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.errorNumber);
    const FileError error("读取", "/a/日记.md", c.errorNumber);
    EXPECT_EQ(error.kind(), c.kind);
    EXPECT_EQ(error.code(), c.code);
    EXPECT_EQ(error.what(), std::string("读取“/a/日记.md”失败：") + c.reason);
  }
}

}  // namespace
}  // namespace nomely::test
