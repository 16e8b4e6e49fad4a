#include <gmock/gmock.h>

#include "Core/Storage/AttachmentManager.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;
using ImportError = AttachmentManager::ImportError;
using testing::ElementsAre;
using testing::MatchesRegex;

class AttachmentManagerTest : public StoreTest {
 protected:
  [[nodiscard]] fs::path in(Day of, const std::string& name) const {
    return context.paths.dayFolder(of) / name;
  }

  AttachmentManager attachments{context};
  TemporaryFolder outside;
  Day today = day("2026-03-01");
  Day tomorrow = day("2026-03-02");
};

TEST_F(AttachmentManagerTest, ImportedNames) {
  for (const auto& [original, expected] : {std::pair("Photo.JPG", "[0-9A-F]{8}\\.jpg"),
                                           {"no extension", "[0-9A-F]{8}"},
                                           {".hidden", "[0-9A-F]{8}"},
                                           {"a.tar.gz", "[0-9A-F]{8}\\.gz"},
                                           {"note.md", "[0-9A-F]{8}\\.md"},
                                           {"trailing.", "[0-9A-F]{8}"},
                                           {"odd.a\\b", "[0-9A-F]{8}"}}) {
    SCOPED_TRACE(original);
    writeFile(outside.path() / original, original);
    const auto result = attachments.importFile(outside.path() / original, today);
    EXPECT_EQ(result.originalName, original);
    EXPECT_THAT(result.filename, MatchesRegex(expected));
    EXPECT_TRUE(AttachmentManager::isSafeName(result.filename));
    EXPECT_EQ(readFile(in(today, result.filename)), original);
  }
}

TEST_F(AttachmentManagerTest, FailedImports) {
  EXPECT_EQ(kindOf<ImportError>([&] { (void)attachments.importFile(outside.path() / "x", today); }),
            ImportError::Kind::fileNotFound);
  EXPECT_EQ(kindOf<ImportError>([&] { (void)attachments.importFile(outside.path(), today); }),
            ImportError::Kind::copyFailed);
  fs::create_symlink("nowhere", outside.path() / "link");
  EXPECT_EQ(
      kindOf<ImportError>([&] { (void)attachments.importFile(outside.path() / "link", today); }),
      ImportError::Kind::fileNotFound);
  writeFile(context.paths.dayFolder(tomorrow), "in the way");
  writeFile(outside.path() / "x", "x");
  EXPECT_THROW((void)attachments.importFile(outside.path() / "x", tomorrow), FileError);
}

TEST_F(AttachmentManagerTest, DeletedFilesGoToTheTrash) {
  const fs::path trash = context.paths.attachmentTrashFolder();
  attachments.deleteFile("none.png", today);
  EXPECT_FALSE(fs::exists(context.paths.trashFolder()));

  for (const char* content : {"1", "2"}) {
    writeFile(in(today, "a.png"), content);
    attachments.deleteFile("a.png", today);
    EXPECT_FALSE(fs::exists(in(today, "a.png")));
  }
  EXPECT_EQ(readFile(trash / "2026-03-01_093005" / "a.png"), "1");
  std::string second;
  for (const auto& entry : fs::directory_iterator(trash / "2026-03-01_093005"))
    if (entry.path().filename() != "a.png") second = entry.path().filename();
  EXPECT_THAT(second, MatchesRegex("[0-9A-F-]{36}_a\\.png"));
  EXPECT_EQ(readFile(trash / "2026-03-01_093005" / second), "2");

  const Memo memo = store.createMemo(today, {});
  writeFile(folder.path() / "x", "x");
  const std::string before = treeOf(folder.path());
  for (const char* name : {"../x", "001.md", "", ".", ".."}) attachments.deleteFile(name, today);
  EXPECT_EQ(treeOf(folder.path()), before) << "what is no attachment stays";
}

TEST_F(AttachmentManagerTest, PendingAttachmentsThatAreThereStay) {
  const Day destination = day("2026-03-09");
  writeFile(in(destination, "there.png"), "there");
  writeFile(in(today, "same.png"), "same");
  writeFile(in(destination, "same.png"), "same");
  attachments.preparePendingAttachments({"there.png", "same.png"},
                                        {.sourceDates = {{"there.png", destination}},
                                         .fallbackDate = today,
                                         .destinationDate = destination});
  EXPECT_EQ(treeOf(context.paths.dayFolder(destination)), "same.png\nsame\nthere.png\nthere\n");
}

TEST_F(AttachmentManagerTest, PendingAttachmentsUpToTheFirstFailure) {
  for (const auto& [attachment, expected] : {std::pair("../x", ImportError::Kind::fileNotFound),
                                             {"gone.png", ImportError::Kind::fileNotFound},
                                             {"", ImportError::Kind::fileNotFound},
                                             {"001.md", ImportError::Kind::fileNotFound},
                                             {"differs.png", ImportError::Kind::copyFailed}}) {
    SCOPED_TRACE(attachment);
    fs::remove_all(folder.path());
    writeFile(folder.path() / "x", "x");
    writeFile(in(today, "001.md"), "memo");
    for (const char* name : {"first.png", "last.png"}) writeFile(in(today, name), name);
    writeFile(in(today, "differs.png"), "12");
    writeFile(in(tomorrow, "differs.png"), "13");
    EXPECT_EQ(kindOf<ImportError>([&] {
                attachments.preparePendingAttachments(
                    {"first.png", attachment, "last.png"},
                    {.fallbackDate = today, .destinationDate = tomorrow});
              }),
              expected);
    EXPECT_EQ(treeOf(context.paths.dayFolder(tomorrow)), "differs.png\n13\nfirst.png\nfirst.png\n");
  }
}

TEST_F(AttachmentManagerTest, StoredBytes) {
  const fs::path dayFolder = context.paths.dayFolder(today);
  const auto named = AttachmentStorage::save(context, "bytes", "m4a", dayFolder);
  ASSERT_TRUE(named);
  EXPECT_THAT(*named, MatchesRegex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}\\.m4a"));
  EXPECT_EQ(readFile(dayFolder / *named), "bytes");
  const auto bare = AttachmentStorage::save(context, "", {}, dayFolder);
  ASSERT_TRUE(bare);
  EXPECT_THAT(*bare, MatchesRegex("[0-9a-f-]{36}"));

  const std::string before = treeOf(folder.path());
  EXPECT_FALSE(AttachmentStorage::save(context, "b", "a/../b", dayFolder));
  EXPECT_FALSE(AttachmentStorage::save(context, "b", "a\\b", dayFolder));
  testing::internal::CaptureStderr();
  EXPECT_FALSE(AttachmentStorage::save(context, "b", "png", dayFolder / *named));
  EXPECT_NE(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(treeOf(folder.path()), before);
}

TEST(PendingMemoAttachmentsTest, RecordingsAreNotLost) {
  EXPECT_THAT(PendingMemoAttachments::merged({"z.png", "b.m4a"},
                                             {{"c.m4a", {}}, {"b.m4a", {}}, {"a.m4a", {}}}),
              ElementsAre("z.png", "b.m4a", "a.m4a", "c.m4a"));
}

}  // namespace
}  // namespace nomely::test
