#include <optional>
#include <thread>

#include "Core/Lifecycle/Maintenance/TemporaryFileSweep.h"
#include "Core/Lifecycle/StartupCoordinator.h"
#include "Platform/Concurrency/RunLoop.h"
#include "Platform/System/Log.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using State = StartupCoordinator::State;
using Completion = StartupCoordinator::Completion;
using Job = StartupCoordinator::Job;
using namespace std::chrono_literals;

class StartupCoordinatorTest : public testing::Test {
 protected:
  // A job that notes its name and ends at once.
  Job noting(const char* name) {
    return {name, [this, name](const std::stop_token&, const Completion& completion) {
              ran += name;
              completion(nullptr);
            }};
  }
  // One that goes on until the test calls `finish`.
  Job waiting(const char* name) {
    return {name, [this, name](std::stop_token token, Completion completion) {
              ran += name;
              stop = std::move(token);
              finish = std::move(completion);
            }};
  }
  template <typename Failure>
  Job failing(const char* name, Failure failure) {
    return {name, [this, name, failure](const std::stop_token&, const Completion&) {
              ran += name;
              throw failure;
            }};
  }

  bool runUntil(const std::function<bool()>& done) { return loop.runUntil(done, 10s); }
  bool startAndWait(std::vector<Job> jobs) {
    coordinator->start(true, std::move(jobs));
    return runUntil([&] { return finish != nullptr; });
  }
  bool runToTheEnd() {
    return runUntil([&] { return !coordinator->hasTask(); });
  }

  RunLoop loop;
  std::optional<StartupCoordinator> coordinator{std::in_place, loop};
  std::string ran;
  std::stop_token stop;
  Completion finish;
};

TEST_F(StartupCoordinatorTest, StartsOnceWhenReady) {
  EXPECT_EQ(coordinator->state(), State::waitingForContent);
  coordinator->start(false, {noting("x")});
  EXPECT_EQ(coordinator->state(), State::waitingForContent);
  coordinator->start(true, {noting("a"), noting("b")});
  EXPECT_EQ(coordinator->state(), State::running);
  EXPECT_EQ(ran, "") << "start returns before the first job";
  coordinator->start(true, {noting("x")});
  ASSERT_TRUE(runToTheEnd());
  EXPECT_EQ(coordinator->state(), State::completed);
  coordinator->start(true, {noting("x")});
  EXPECT_FALSE(coordinator->hasTask());
  EXPECT_EQ(ran, "ab");
}

TEST_F(StartupCoordinatorTest, JobsFollowOneAnotherFromAnyThread) {
  std::jthread worker;
  const Job background{"w", [&](const std::stop_token&, const Completion& completion) {
                         ran += "w";
                         EXPECT_TRUE(loop.isCurrent());
                         worker = std::jthread([completion] { completion(nullptr); });
                       }};
  ASSERT_TRUE((startAndWait({background, waiting("a"), noting("b")})));
  EXPECT_EQ(ran, "wa");
  EXPECT_EQ(coordinator->state(), State::running);
  finish(nullptr);
  ASSERT_TRUE(runToTheEnd());
  EXPECT_EQ(ran, "wab");
}

TEST_F(StartupCoordinatorTest, FailedJobIsLoggedAndTheNextRuns) {
  testing::internal::CaptureStderr();
  ASSERT_TRUE((startAndWait({failing("一", std::runtime_error("disk on fire")), failing("二", 1),
                             waiting("三"), noting("四")})));
  finish(std::make_exception_ptr(std::runtime_error("later")));
  ASSERT_TRUE(runToTheEnd());
  const std::string log = testing::internal::GetCapturedStderr();
  EXPECT_THAT(log, HasSubstr("[app] 启动任务 一 失败：disk on fire\n"));
  EXPECT_THAT(log, HasSubstr("[app] 启动任务 二 失败："));
  EXPECT_THAT(log, HasSubstr("[app] 启动任务 三 失败：later\n"));
  EXPECT_EQ(ran, "一二三四");
  EXPECT_EQ(coordinator->state(), State::completed);
}

TEST_F(StartupCoordinatorTest, CancelledJobEndsTheSequenceUntilReset) {
  std::optional<bool> reset;
  const auto note = [&](bool did) { reset = did; };
  coordinator->resetAfterCancellation(note);
  EXPECT_EQ(reset, false);

  ASSERT_TRUE((startAndWait({waiting("a"), noting("x")})));
  coordinator->resetAfterCancellation(note);
  EXPECT_EQ(reset, false) << "not while it runs";
  EXPECT_FALSE(stop.stop_requested());
  coordinator->cancel();
  EXPECT_TRUE(stop.stop_requested());
  finish(std::make_exception_ptr(CancellationError()));
  ASSERT_TRUE(runToTheEnd());
  EXPECT_EQ(coordinator->state(), State::cancelled);
  coordinator->start(true, {noting("x")});
  EXPECT_EQ(coordinator->state(), State::cancelled);

  reset.reset();
  coordinator->resetAfterCancellation(note);
  ASSERT_TRUE(runUntil([&] { return reset.has_value(); }));
  EXPECT_EQ(reset, true);
  EXPECT_EQ(coordinator->state(), State::waitingForContent);
  coordinator->start(true, {noting("b")});
  ASSERT_TRUE(runToTheEnd());
  EXPECT_EQ(coordinator->state(), State::completed);
  coordinator->resetAfterCancellation(note);
  EXPECT_EQ(reset, false) << "there is no way back";
  EXPECT_EQ(ran, "ab");
}

TEST_F(StartupCoordinatorTest, JobThatEndsWellDespiteTheCancellation) {
  ASSERT_TRUE((startAndWait({waiting("a"), noting("x")})));
  coordinator->cancel();
  finish(nullptr);
  ASSERT_TRUE(runToTheEnd());
  EXPECT_EQ(ran, "a");
  EXPECT_EQ(coordinator->state(), State::running) << "the state stands as it was";
}

TEST_F(StartupCoordinatorTest, JobsMayOutliveTheCoordinator) {
  ASSERT_TRUE((startAndWait({waiting("a"), noting("x")})));
  coordinator.reset();
  EXPECT_TRUE(stop.stop_requested());
  finish(nullptr);
  loop.stop();
  loop.run();
  EXPECT_EQ(ran, "a");
}

using TemporaryFileSweepTest = StoreTest;

constexpr const char* temporary = ".nomely-0f8fad5bd9cb469fa16570867728950e.tmp";

TEST_F(TemporaryFileSweepTest, TakesTemporariesAndNothingElse) {
  for (const char* name : {"2026-03-01/001.md", "2026-03-01/.nomely-b.tmp/inside",
                           ".trash/_attachments/t/a.png", ".versions/by-id/6d/1_A.md"})
    writeFile(folder.path() / name, name);
  const TemporaryFolder elsewhere;
  writeFile(elsewhere.path() / temporary, "not ours");
  fs::create_directory_symlink(elsewhere.path(), folder.path() / "link");
  const std::string before = treeOf(folder.path());
  for (const char* name :
       {".", "2026-03-01", ".trash/_attachments/t", ".versions/by-id/6d/attachments"})
    writeFile(folder.path() / name / temporary, "half");
  fs::create_directories(folder.path() / ".versions/by-id/6d/attachments");
  writeFile(folder.path() / ".git" / temporary, "an engine's");
  EXPECT_EQ(sweepTemporaryFiles(context, {}), 4);
  EXPECT_EQ(fs::remove_all(folder.path() / ".git"), 2U);
  fs::remove(folder.path() / ".versions/by-id/6d/attachments");
  EXPECT_EQ(treeOf(folder.path()), before);
  EXPECT_TRUE(fs::exists(elsewhere.path() / temporary));
  fs::remove_all(folder.path());
  EXPECT_EQ(sweepTemporaryFiles(context, {}), 0);
  EXPECT_FALSE(fs::exists(folder.path())) << "a missing root stays so";
}

TEST_F(TemporaryFileSweepTest, StopsWhenAsked) {
  writeFile(folder.path() / temporary, "half");
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(sweepTemporaryFiles(context, source.get_token()), CancellationError);
  EXPECT_TRUE(fs::exists(folder.path() / temporary));
}

}  // namespace
}  // namespace nomely::test
