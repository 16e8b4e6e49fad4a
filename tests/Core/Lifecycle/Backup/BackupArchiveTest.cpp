#include "Core/Lifecycle/Backup/BackupArchive.h"
#include "Core/Lifecycle/Backup/HostileArchives.h"
#include "Support/ErrorKind.h"
#include "Support/MemoryFileSystem.h"

namespace nomely::test {
namespace {

BackupArchive::Contents proven(const std::string& bytes) {
  MemoryFileSystem files("/disk", {{"a.zip", bytes}});
  return BackupArchive(files, "/disk/a.zip").prove({});
}

TEST(BackupArchiveTest, HostileArchivesAreRefused) {
  for (const HostileArchive& archive : hostileArchives()) {
    const auto refusal = messageOf<BackupError>([&] { (void)proven(archive.bytes); });
    EXPECT_EQ(refusal, archive.message) << archive.name;
  }
}

TEST(BackupArchiveTest, UnreadableNotesPassWhenTheManifestListsThem) {
  BackupManifest manifest{.unreadableFiles = {"2026-03-01/a.md", "2026-03-01/\xef\xbf\xbd.md"}};
  EXPECT_EQ(BackupManifest::parse(manifest.json()), manifest);
  const auto contents = proven(rawZip({{"2026-03-01/a.md", "no header"},
                                       {"2026-03-01/\xe9.md", std::string(300'000, 'x')},
                                       {"2026-03-01/b.md/c", "no note"},
                                       {"_config/d.md", "nor this"},
                                       goodEntries().front(),
                                       {BackupManifest::fileName, manifest.json()}}));
  EXPECT_EQ(contents.notes, 1);
  EXPECT_EQ(contents.files, 5);
  EXPECT_EQ(contents.manifest, manifest);
}

}  // namespace
}  // namespace nomely::test
