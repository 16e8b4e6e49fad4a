#include "Core/Storage/RootMarkers.h"
#include "Platform/Files/FileError.h"
#include "Support/MemoryFileSystem.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

class RootMarkersTest : public StoreTest {};

TEST_F(RootMarkersTest, ARootIsMarkedAtItsFirstWriteIfNothingStandsInIt) {
  const struct {
    const char* name;
    Tree before;
    bool isMadeHere;
  } cases[]{
      {"missing", {}, true},
      {"empty", {{"empty/", ""}}, true},
      {"claimed by half", {{"by half/.meta/.nomely-0f8fad5bd9cb469f.tmp", ""}}, true},
      {"with a note", {{"with a note/2026-03-01/001.md", "---\ntime: 08:00\n---\n"}}, false},
      {"of the oldest layout", {{"of the oldest layout/2009/03/01.md", "---\n---\n"}}, false},
      {"with what was deleted", {{"with what was deleted/.trash/x", ""}}, false},
  };
  for (const auto& [name, before, isMadeHere] : cases) {
    writeTree(folder.path(), before);
    const StoreContext other{{folder.path() / name}, context.files, clock};
    const RootMarkers markers(other.paths, other.files);
    (void)DayStore(other).createMemo(day("2026-03-01"), {.body = "first"});
    EXPECT_EQ(markers.isMadeHere(), isMadeHere) << name;
    // Gone under a process that has written in it, it is not made anew.
    fs::remove_all(other.paths.rootURL);
    EXPECT_THROW(other.write([] {}), FileError) << name;
    EXPECT_FALSE(fs::exists(other.paths.rootURL)) << name;
  }
}

TEST_F(RootMarkersTest, TheVersionIsANumberOrNone) {
  const RootMarkers markers(context.paths, context.files);
  EXPECT_EQ(markers.migratedSchemaVersion(), 0);
  markers.setMigratedSchemaVersion(2);
  EXPECT_EQ(markers.migratedSchemaVersion(), 2);
  writeFile(folder.path() / ".meta/nomely.lastMigratedSchemaVersion", "two");
  EXPECT_EQ(markers.migratedSchemaVersion(), 0);
  markers.forgetMigratedSchemaVersion();
  markers.forgetMigratedSchemaVersion();
  EXPECT_FALSE(markers.areColorSpansCleaned());
  markers.setColorSpansCleaned();
  EXPECT_TRUE(markers.areColorSpansCleaned());
}

}  // namespace
}  // namespace nomely::test
