#include <array>
#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <set>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "Core/Lifecycle/Maintenance/TemporaryFileSweep.h"
#include "Core/Safety/Course.h"
#include "Support/FaultyFileSystem.h"
#include "Support/ForkedRun.h"
#include "Support/TemporaryFolder.h"
#include "Support/TestPaths.h"

namespace nomely::test {
namespace {

using Call = FaultyFileSystem::Call;
using Fault = FaultyFileSystem::Fault;
using Mode = FaultyFileSystem::Mode;

// Every operation, disturbed at each of its file system calls. In a child process, because gates
// keep their root's folder open as long as their process lasts.
class DisturbedRun : public testing::TestWithParam<Scenario> {
 protected:
  const Scenario& scenario = GetParam();

  // A person tries again, and the resident program sweeps.
  static void expectRepeatable(const Scenario& scenario, const Course& course, Disk& disk) {
    try {
      disk.perform(scenario);
      sweepTemporaryFiles(disk.context(disk.files), {});
    } catch (const std::exception& error) {
      ADD_FAILURE() << "can't be repeated: " << error.what();
    }
    const Tree tree = disk.files.tree(Left::all);
    course.oracle.expectIntact(tree);
    for (const auto& [path, bytes] : tree)
      EXPECT_FALSE(Oracle::isTemporary(path)) << "left behind: " << path;
    if (scenario.strands) return;
    course.oracle.expectDone(tree);
    course.oracle.expectNothingLeft(tree);
  }
};

TEST_P(DisturbedRun, EndOfTheProcessOrThePowerLosesNothing) {
  const ChildEnd child = runInChild([&] {
    const Course course(scenario);
    for (const auto& [tree, moment] : course.cuts) {
      SCOPED_TRACE(moment);
      course.oracle.expectIntact(tree);
      Disk disk(tree);
      expectRepeatable(scenario, course, disk);
    }
    for (const Left left : {Left::durable, Left::names}) {
      SCOPED_TRACE("power cut after the last call");
      course.oracle.expectDone(course.end.at(left));
      course.oracle.expectNothingLeft(course.end.at(left));
    }
    std::cout << fmt::format("{}: {} calls, {} different ends\n", scenario.name,
                             course.calls.size(), course.cuts.size());
  });
  EXPECT_EQ(child, ChildEnd{});
}

TEST_P(DisturbedRun, FailingCallsLoseNothing) {
  const ChildEnd child = runInChild([&] {
    const Course course(scenario);
    std::set<Tree> seen;
    for (std::size_t i = 0; i < course.calls.size(); ++i) {
      std::vector<Fault> faults{{Mode::fail, i + 1, EIO}, {Mode::failLate, i + 1, EIO}};
      if (FaultyFileSystem::canBePartial(course.calls[i]))
        faults.push_back({Mode::partial, i + 1, ENOSPC});
      for (const Fault& fault : faults) {
        SCOPED_TRACE(fmt::format(
            "{} at {}",
            std::array{"fail", "partial", "fail late"}.at(static_cast<std::size_t>(fault.mode)),
            momentOf(i + 1, course.calls[i])));
        Disk disk(scenario.before);
        FaultyFileSystem faulty(disk.files, fault);
        bool reported = false;
        try {
          scenario.run(disk.context(faulty), disk.context(disk.files));
          reported = true;
        } catch (const std::exception&) {
        }
        const Tree tree = disk.files.tree(Left::all);
        if (reported && !scenario.quiet) course.oracle.expectDone(tree);
        if (!seen.insert(tree).second) continue;
        course.oracle.expectIntact(tree);
        course.oracle.expectTakenBack(tree);
        expectRepeatable(scenario, course, disk);
      }
    }
  });
  EXPECT_EQ(child, ChildEnd{});
}

INSTANTIATE_TEST_SUITE_P(Safety, DisturbedRun, testing::ValuesIn(scenarios()),
                         [](const auto& tested) { return tested.param.name; });

// NOMELY_REBASELINE=1 writes the record anew.
TEST(SafetyScenarios, ChangeWhatIsOnRecord) {
  const std::string record = TestPaths::fixtures + "/safety/changes.txt";
  std::string text;
  for (const Scenario& scenario : scenarios()) {
    const Course course(scenario);
    text += scenario.name + "\n" + course.oracle.changes();
    EXPECT_TRUE(scenario.destroys || course.oracle.lost().empty())
        << scenario.name << " loses " << course.oracle.lost().at(0);
    // A real file system takes the same course.
    const TemporaryFolder folder(quickParent());
    writeTree(folder.path(), scenario.before);
    const StoreContext context = contextAt(folder.path(), posixFileSystem());
    scenario.run(context, context);
    EXPECT_EQ(Oracle(scenario.before, treeOn(folder.path())).changes(), course.oracle.changes());
  }
  if (std::getenv("NOMELY_REBASELINE") != nullptr) writeFile(record, text);
  EXPECT_EQ(text, readFile(record));
}

}  // namespace
}  // namespace nomely::test
