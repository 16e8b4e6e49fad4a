#include <gtest/gtest.h>
#include <unistd.h>

#include "Core/Safety/Course.h"
#include "Support/ForkedRun.h"
#include "Support/Mounts.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

// A real disk loses no more than the one in memory does: operations on an ext4 whose
// power goes when they have been reported as done. What touches the disk are child processes, so
// that nothing keeps it from being unmounted.
TEST(PowerLossTest, WhatWasReportedAsDoneIsThere) {
  const ChildEnd end = runInChild([] {
    if (const auto reason = takePrivateMounts()) GTEST_SKIP() << *reason;
    const TemporaryFolder folder(quickParent());
    const fs::path disk = folder.path() / "mounted";
    fs::create_directory(disk);
    const fs::path image = folder.path() / "disk";
    const auto mounted = [&] { return Mount({.type = "ext4", .device = image}, disk); };
    try {
      makeExt4(image, std::uintmax_t{32} << 20);
      const Mount probe = mounted();
    } catch (const std::system_error& error) {
      GTEST_SKIP() << "no ext4 on a loop device here: " << error.what();
    }
    for (const Scenario& scenario : scenarios()) {
      if (scenario.name != "commitMemo" && scenario.name != "moveMemoToNewDay") continue;
      SCOPED_TRACE(scenario.name);
      const fs::path home = disk / scenario.name;
      {
        Mount mount = mounted();
        EXPECT_EQ(runInChild([&] {
                    writeTree(home, scenario.before);
                    ::sync();
                    const StoreContext context = contextAt(home, posixFileSystem());
                    scenario.run(context, context);
                    cutPower(disk);
                  }),
                  ChildEnd{});
        mount.unmount();
      }
      Mount mount = mounted();
      EXPECT_EQ(runInChild([&] { Course(scenario).oracle.expectDone(treeOn(home)); }), ChildEnd{});
      mount.unmount();
    }
  });
  if (end == skippedInChild) GTEST_SKIP() << "for the reason above";
  EXPECT_EQ(end, ChildEnd{});
}

}  // namespace
}  // namespace nomely::test
