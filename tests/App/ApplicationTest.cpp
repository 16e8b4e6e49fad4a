#include <unistd.h>

#include "App/Application.h"
#include "Editor/Timeline/DayViewModel.h"
#include "Platform/Concurrency/RunLoop.h"
#include "Support/ManualClock.h"
#include "Support/RandomText.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

using State = StartupCoordinator::State;
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
            .fileSystem = posixFileSystem(),
            .secrets = secrets,
            .http = *http,
            .webSockets = *webSockets,
            .timers = *timers};
  }

  TemporaryFolder folder;
  fs::path home = folder.path() / "home";
  fs::path temporary = folder.path() / "temporary";
  RunLoop loop;
  ManualClock clock;
  MemorySecrets secrets;
  std::unique_ptr<HttpClient> http = makeHttpClient();
  std::unique_ptr<WebSocketClient> webSockets = makeWebSocketClient();
  std::unique_ptr<Timers> timers = makeSystemTimers();
};

TEST_F(ApplicationTest, RootOfTheEnvironment) {
  const std::string testHost = "Nomely-TestHost-" + std::to_string(::getpid());
  const auto fixture = [](const char* name) {
    return Environment::Variables{{"NOMELY_UI_TESTING", "1"}, {"NOMELY_UI_FIXTURE", name}};
  };
  Environment::Variables both = fixture("a");
  both["XCTestConfigurationFilePath"] = "x";
  const fs::path usual = home / "NomelyData";
  for (const auto& [variables, expected] :
       {std::pair(Environment::Variables(), usual),
        {{{"NOMELY_UI_TESTING", "true"}, {"NOMELY_UI_FIXTURE", "a"}}, usual},
        {fixture("a b/c-1"), temporary / "Nomely-UIFixture-abc-1"},
        {fixture("../日记_É½.😀\xFF"), temporary / "Nomely-UIFixture-日记É½"},
        {fixture("../.."), temporary / "Nomely-UIFixture-"},
        {{{"XCTestConfigurationFilePath", ""}}, temporary / testHost},
        {both, temporary / "Nomely-UIFixture-a"}}) {
    SCOPED_TRACE(expected);
    const bool isUnitTesting = expected != usual;
    fs::remove_all(home);
    {
      const Application application(with(variables));
      EXPECT_EQ(application.paths().rootURL, expected);
      EXPECT_EQ(application.isUnitTesting(), isUnitTesting);
      EXPECT_EQ(fs::exists(home), !isUnitTesting);
    }
    const fs::path chosen = folder.path() / "chosen";
    const Application application(with(variables, chosen));
    EXPECT_EQ(application.paths().rootURL, isUnitTesting ? expected : chosen);
  }
  const Application application(with({{"NOMELY_UI_TESTING", "1"}}));
  EXPECT_THAT(application.paths().rootURL.filename().string(),
              MatchesRegex("Nomely-UIFixture-[0-9A-F-]{36}"));
}

TEST_F(ApplicationTest, TestsLeaveTheUsersStateAlone) {
  const auto note = [&](Environment::Variables variables) {
    Application application(with(std::move(variables)));
    application.userDefaults().setBoolean("seen", true);
    application.startMaintenance(true);
    return application.startup().state();
  };
  EXPECT_EQ(note({{"XCTestConfigurationFilePath", ""}}), State::waitingForContent);
  EXPECT_FALSE(fs::exists(folder.path() / "state"));
  EXPECT_NE(note({}), State::waitingForContent);
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

TEST_F(ApplicationTest, MaintenanceSweepsAndRestoresRecordingsWhenReady) {
  const fs::path root = home / "NomelyData";
  const fs::path leftover = root / "2026-03-01" / ".nomely-a.tmp";
  writeFile(leftover, "half");
  writeFile(root / "2026-03-01" / "lost.m4a", "sound");
  writeFile(root / ".drafts/recordings/voice_2026-03-02_093005.m4a", filledWith("sound", 5000));
  Application application(with({}));
  application.startMaintenance(false);
  EXPECT_EQ(application.startup().state(), State::waitingForContent);
  application.startMaintenance(true);
  const auto completed = [&] { return application.startup().state() == State::completed; };
  ASSERT_TRUE(loop.runUntil(completed, 10s));
  EXPECT_FALSE(fs::exists(leftover));
  EXPECT_EQ(application.orphanRestoreToast.get(), "自动恢复 2 段录音，已挂在「语音」标签下");
  EXPECT_EQ(application.dayStore().listMemos(day("2026-03-01")).at(0).attachments,
            std::vector<std::string>{"lost.m4a"});
  EXPECT_EQ(application.dayStore().listMemos(day("2026-03-02")).size(), 1U);
}

TEST_F(ApplicationTest, ShowsWhatOtherProgramsWrite) {
  const fs::path today = home / "NomelyData" / "2026-03-01";
  writeFile(today / "001.md", "---\ntime: '09:00'\n---\nours");
  Application application(with({}));
  DayViewModel& model = application.dayViewModel();
  model.loadDay(day("2026-03-01"));
  EXPECT_EQ(application.searchIndex().allMemoEntries().size(), 1U);
  application.startMaintenance(true);
  const auto completed = [&] { return application.startup().state() == State::completed; };
  ASSERT_TRUE(loop.runUntil(completed, 10s));
  // Again and again: what is watched begins after the job that starts it.
  const auto isShown = [&] { return model.displayMemos.get().size() == 2; };
  for (int i = 0; i < 10 && !isShown(); ++i) {
    writeFile(today / "901.md", "---\ntime: '09:30'\n---\nforeign");
    (void)loop.runUntil(isShown, 2s);
  }
  EXPECT_TRUE(isShown());
  EXPECT_EQ(application.searchIndex().allMemoEntries().size(), 2U);
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
