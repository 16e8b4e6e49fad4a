#include <set>

#include <fmt/format.h>

#include "Platform/System/Environment.h"
#include "Platform/System/Log.h"
#include "Platform/System/Uuid.h"
#include "Support/ForkedRun.h"
#include "Support/Matchers.h"

namespace nomely::test {
namespace {

TEST(UuidTest, FormatVersionAndVariant) {
  std::set<Uuid> drawn;
  for (int i = 0; i < 100; ++i) {
    const Uuid id = Uuid::random();
    drawn.insert(id);
    ASSERT_THAT(
        id.string(),
        MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    ASSERT_THAT(id.compact(), MatchesRegex("[0-9a-f]{32}"));
  }
  EXPECT_EQ(drawn.size(), 100);
}

TEST(UuidTest, ChildDrawsItsOwn) {
  (void)Uuid::random();  // there is a buffer to inherit
  const auto draw = [] { return Uuid::random().string(); };
  EXPECT_EQ((std::set{draw(), inChild(draw), inChild(draw)}.size()), 3);
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
  const auto folders = [](Environment::Variables variables) {
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
  EXPECT_EQ(inChild([] {
              ::setenv("NOMELY_TEST_VALUE", "a=b=", 1);
              return Environment::current().get("NOMELY_TEST_VALUE").value_or("absent");
            }),
            "a=b=");
}

}  // namespace
}  // namespace nomely::test
