#include <gmock/gmock.h>

#include "Core/Lifecycle/StartupCoordinator.h"
#include "Core/Lifecycle/TemporaryFileSweep.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

using TemporaryFileSweepTest = StoreTest;

constexpr const char* temporary = ".nomely-0f8fad5bd9cb469fa16570867728950e.tmp";

TEST_F(TemporaryFileSweepTest, TakesTemporariesAndNothingElse) {
  const char* const kept[] = {
      "2026-03-01/001.md",      "2026-03-01/.nomely-.tmp",         "2026-03-01/nomely-a.tmp",
      "2026-03-01/.nomely-a",   ".trash/_attachments/t/a.png",     ".versions/by-id/6d/1_A.md",
      "_config/ai-config.yaml", "2026-03-01/.nomely-b.tmp/inside",
  };
  for (const char* name : kept) writeFile(folder.path() / name, name);
  const TemporaryFolder elsewhere;
  writeFile(elsewhere.path() / temporary, "not ours");
  fs::create_directory_symlink(elsewhere.path(), folder.path() / "link");
  const std::string before = treeOf(folder.path());
  for (const char* name :
       {".", "2026-03-01", ".trash/_attachments/t", ".versions/by-id/6d/attachments"})
    writeFile(folder.path() / name / temporary, "half");
  fs::create_directories(folder.path() / ".versions/by-id/6d/attachments");
  EXPECT_EQ(sweepTemporaryFiles(context, {}), 4);
  fs::remove(folder.path() / ".versions/by-id/6d/attachments");
  EXPECT_EQ(treeOf(folder.path()), before);
  EXPECT_TRUE(fs::exists(elsewhere.path() / temporary));
  EXPECT_EQ(sweepTemporaryFiles(context, {}), 0);
}

TEST_F(TemporaryFileSweepTest, StopsWhenAsked) {
  writeFile(folder.path() / temporary, "half");
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(sweepTemporaryFiles(context, source.get_token()), CancellationError);
  EXPECT_TRUE(fs::exists(folder.path() / temporary));
}

TEST_F(TemporaryFileSweepTest, MissingRootStaysMissing) {
  fs::remove_all(folder.path());
  EXPECT_EQ(sweepTemporaryFiles(context, {}), 0);
  EXPECT_FALSE(fs::exists(folder.path()));
}

}  // namespace
}  // namespace nomely::test
