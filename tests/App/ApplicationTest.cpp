#include <gmock/gmock.h>
#include <unistd.h>

#include "App/Application.h"
#include "Editor/DayViewModel.h"
#include "Platform/Concurrency/RunLoop.h"
#include "Support/ManualClock.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;
using State = StartupCoordinator::State;
using testing::MatchesRegex;
using namespace std::chrono_literals;

class ApplicationTest : public testing::Test {
 protected:
  [[nodiscard]] ApplicationContext with(Environment::Variables variables,
                                        std::optional<fs::path> root = {}) {
    variables.emplace("HOME", home.string());
    variables.emplace("TMPDIR", temporary.string());
    variables.emplace("XDG_STATE_HOME", (folder.path() / "state").string());
    return {.environment = Environment(std::move(variables)),
            .root = std::move(root),
            .executor = loop,
            .clock = clock,
            .fileSystem = posixFileSystem()};
  }

  TemporaryFolder folder;
  fs::path home = folder.path() / "home";
  fs::path temporary = folder.path() / "temporary";
  RunLoop loop;
  ManualClock clock;
};

TEST_F(ApplicationTest, RootOfTheEnvironment) {
  const std::string testHost = "Nomely-TestHost-" + std::to_string(::getpid());
  const struct {
    const char* name;
    Environment::Variables variables;
    fs::path expected;
    bool isUnitTesting;
  } cases[] = {
      {"the user's", {}, home / "NomelyData", false},
      {"fixture name is cleaned",
       {{"NOMELY_UI_TESTING", "1"}, {"NOMELY_UI_FIXTURE", "a b/c-1"}},
       temporary / "Nomely-UIFixture-abc-1",
       true},
      {"letters and numbers of any script",
       {{"NOMELY_UI_TESTING", "1"}, {"NOMELY_UI_FIXTURE", "../日记_É½.😀\xFF"}},
       temporary / "Nomely-UIFixture-日记É½",
       true},
      {"nothing is left of the name",
       {{"NOMELY_UI_TESTING", "1"}, {"NOMELY_UI_FIXTURE", "../.."}},
       temporary / "Nomely-UIFixture-",
       true},
      {"only 1 counts",
       {{"NOMELY_UI_TESTING", "true"}, {"NOMELY_UI_FIXTURE", "a"}},
       home / "NomelyData",
       false},
      {"test host, whatever its value",
       {{"XCTestConfigurationFilePath", ""}},
       temporary / testHost,
       true},
      {"both",
       {{"XCTestConfigurationFilePath", "x"},
        {"NOMELY_UI_TESTING", "1"},
        {"NOMELY_UI_FIXTURE", "a"}},
       temporary / "Nomely-UIFixture-a",
       true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    fs::remove_all(home);
    {
      const Application application(with(c.variables));
      EXPECT_EQ(application.paths().rootURL, c.expected);
      EXPECT_EQ(application.isUnitTesting(), c.isUnitTesting);
      EXPECT_EQ(fs::exists(home), !c.isUnitTesting);
    }
    const fs::path chosen = folder.path() / "chosen";
    const Application application(with(c.variables, chosen));
    EXPECT_EQ(application.paths().rootURL, c.isUnitTesting ? c.expected : chosen);
  }
  const Application application(with({{"NOMELY_UI_TESTING", "1"}}));
  EXPECT_THAT(application.paths().rootURL.filename().string(),
              MatchesRegex("Nomely-UIFixture-[0-9A-F-]{36}"));
}

TEST_F(ApplicationTest, TestsLeaveTheUsersStateAlone) {
  const auto note = [&](Environment::Variables variables) {
    Application application(with(std::move(variables)));
    application.userDefaults().setBoolean("seen", true);
    return application.userDefaults().boolean("seen");
  };
  EXPECT_EQ(note({{"XCTestConfigurationFilePath", ""}}), true);
  EXPECT_FALSE(fs::exists(folder.path() / "state"));
  EXPECT_EQ(note({}), true);
  EXPECT_TRUE(fs::exists(folder.path() / "state" / "nomely"));
}

TEST_F(ApplicationTest, UnreadableRootShowsEmptyDays) {
  writeFile(home, "in the way");
  testing::internal::CaptureStderr();
  Application application(with({}));
  EXPECT_NE(testing::internal::GetCapturedStderr(), "");
  EXPECT_TRUE(application.dayStore().listMemos(day("2026-03-01")).empty());
  EXPECT_TRUE(application.dayStore().listAllDates().empty());
  DayViewModel& model = application.dayViewModel();
  model.loadDay(day("2026-03-01"));
  ASSERT_TRUE(loop.runUntil([&] { return model.hasLoadedInitialTimeline.get(); }, 10s));
  EXPECT_TRUE(model.displayMemos.get().empty());
  EXPECT_THROW((void)application.dayStore().createMemo(day("2026-03-01"), {}), Error);
}

TEST_F(ApplicationTest, MaintenanceSweepsOnceWhenReady) {
  const fs::path leftover = home / "NomelyData" / "2026-03-01" / ".nomely-a.tmp";
  writeFile(leftover, "half");
  Application application(with({}));
  application.startMaintenance(false);
  EXPECT_EQ(application.startup().state(), State::waitingForContent);
  const auto completed = [&] { return application.startup().state() == State::completed; };
  application.startMaintenance(true);
  application.startMaintenance(true);
  ASSERT_TRUE(loop.runUntil(completed, 10s));
  EXPECT_FALSE(fs::exists(leftover));
  writeFile(leftover, "half");
  application.startMaintenance(true);
  EXPECT_FALSE(application.startup().hasTask());
  EXPECT_TRUE(fs::exists(leftover));
}

TEST_F(ApplicationTest, NoMaintenanceUnderTests) {
  Application application(with({{"XCTestConfigurationFilePath", ""}}));
  application.startMaintenance(true);
  EXPECT_EQ(application.startup().state(), State::waitingForContent);
}

TEST_F(ApplicationTest, EndsWhileJobsRun) {
  for (int i = 0; i < 20; ++i) {
    Application application(with({}));
    application.startMaintenance(true);
    application.dayViewModel().loadAllMemos();
    application.entryDateIndex().refresh();
    (void)loop.runUntil([&, calls = 0]() mutable { return calls++ > i % 3; }, 1ms);
  }
  loop.stop();
  loop.run();
}

}  // namespace
}  // namespace nomely::test
