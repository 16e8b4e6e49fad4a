#include <algorithm>
#include <array>
#include <iostream>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "Core/Safety/Scenario.h"
#include "Platform/Error.h"
#include "Support/FaultyFileSystem.h"
#include "Support/ForkedRun.h"

namespace nomely::test {
namespace {

using Fault = FaultyFileSystem::Fault;
using Mode = FaultyFileSystem::Mode;

const Diary& theDiary() {
  static const auto* const diary = new Diary;
  return *diary;
}

// Every operation, disturbed at each of its file system calls. The runs are in child processes:
// gates and what they hold open last as long as their process, and a new one is what comes after a
// dead one.
class DisturbedRun : public testing::TestWithParam<Scenario> {
 protected:
  // The calls of an undisturbed run.
  std::vector<FaultyFileSystem::Call> calls() {
    const auto folder = stage_.copy();
    FaultyFileSystem files(posixFileSystem(), {});
    EXPECT_TRUE(GetParam().run(theDiary().contextFor(folder, files)));
    const StoreContext context = theDiary().contextFor(folder, posixFileSystem());
    GetParam().done(context);
    if (GetParam().tidy) GetParam().tidy(context);
    stage_.checkIntact(context);
    return files.calls();
  }

  void report(std::string_view what, std::size_t calls, std::size_t runs) {
    RecordProperty("calls", static_cast<int>(calls));
    RecordProperty("runs", static_cast<int>(runs));
    std::cout << fmt::format("{}: {} calls, {} {}\n", GetParam().name, calls, runs, what);
  }

  Stage stage_{theDiary(), GetParam()};
};

std::vector<Fault> faultsAt(std::uint64_t number, const FaultyFileSystem::Call& call) {
  std::vector<Fault> faults;
  for (const bool lasting : {false, true}) {
    for (const int reason : {EIO, ENOSPC, EMFILE})
      faults.push_back({Mode::fail, number, reason, lasting});
    faults.push_back({Mode::failLate, number, EIO, lasting});
    if (FaultyFileSystem::canBePartial(call))
      faults.push_back({Mode::partial, number, ENOSPC, lasting});
  }
  return faults;
}

std::string describe(const Fault& fault, const FaultyFileSystem::Call& call) {
  constexpr std::array names{"fail", "partial", "failLate", "die", "dieLate"};
  return fmt::format("{}{} at call {}: {} {}, errno {}", fault.lasting ? "lasting " : "",
                     names.at(static_cast<std::size_t>(fault.mode)), fault.atCall, call.name,
                     call.path.string(), fault.errorNumber);
}

void runWith(const Fault& fault, const FaultyFileSystem::Call& call, Stage& stage) {
  SCOPED_TRACE(describe(fault, call));
  const auto folder = stage.copy();
  FaultyFileSystem files(posixFileSystem(), fault);
  const StoreContext context = theDiary().contextFor(folder, posixFileSystem());
  bool reported = false;
  try {
    reported = stage.scenario().run(theDiary().contextFor(folder, files));
  } catch (const Error&) {
  }
  files.heal();
  stage.checkIntact(context);
  if (reported) stage.scenario().done(context);
  stage.checkRepeats(context);
  std::filesystem::remove_all(folder);
}

TEST_P(DisturbedRun, FailingCallsLoseNothing) {
  const auto calls = this->calls();
  constexpr std::size_t callsPerChild = 16;
  std::size_t runs = 0;
  for (std::size_t first = 0; first < calls.size(); first += callsPerChild) {
    const std::size_t end = std::min(first + callsPerChild, calls.size());
    for (std::size_t i = first; i < end; ++i) runs += faultsAt(i + 1, calls[i]).size();
    const ChildEnd child = runInChild([&] {
      for (std::size_t i = first; i < end; ++i)
        for (const Fault& fault : faultsAt(i + 1, calls[i])) runWith(fault, calls[i], stage_);
    });
    EXPECT_EQ(child, ChildEnd{});
  }
  report("runs with a fault", calls.size(), runs);
}

TEST_P(DisturbedRun, EndOfTheProcessLosesNothing) {
  const auto calls = this->calls();
  std::vector<Fault> faults;
  for (std::size_t i = 1; i <= calls.size(); ++i) faults.push_back({Mode::die, i});
  // Behind any other call is in front of the next.
  faults.push_back({Mode::dieLate, calls.size()});
  std::vector<std::filesystem::path> folders;
  for (const Fault& fault : faults) {
    folders.push_back(stage_.copy());
    const ChildEnd death = runInChild([&] {
      FaultyFileSystem files(posixFileSystem(), fault);
      (void)GetParam().run(theDiary().contextFor(folders.back(), files));
    });
    EXPECT_EQ(death, ChildEnd{.status = FaultyFileSystem::deathStatus});
  }
  const ChildEnd check = runInChild([&] {
    for (std::size_t i = 0; i < faults.size(); ++i) {
      SCOPED_TRACE(describe(faults[i], calls[std::min(i, calls.size() - 1)]));
      const StoreContext context = theDiary().contextFor(folders[i], posixFileSystem());
      stage_.checkIntact(context);
      stage_.checkRepeats(context);
    }
  });
  EXPECT_EQ(check, ChildEnd{});
  report("runs that were ended", calls.size(), faults.size());
}

INSTANTIATE_TEST_SUITE_P(Safety, DisturbedRun, testing::ValuesIn(scenarios(theDiary())),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
}  // namespace nomely::test
