#include "Core/Storage/AttachmentManager.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/RandomText.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using ImportError = AttachmentManager::ImportError;

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
  for (const auto& [original, expected] :
       rowsOf<2>("Photo.JPG¦\\.jpg¦no extension¦¦.hidden¦¦a.tar.gz¦\\.gz¦note.md¦\\.md¦trailing.¦¦"
                 "odd.a\\b¦")) {
    SCOPED_TRACE(original);
    writeFile(outside.path() / original, original);
    const auto result = attachments.importFile(outside.path() / original, today);
    EXPECT_EQ(result.originalName, original);
    EXPECT_THAT(result.filename, MatchesRegex("[0-9A-F]{8}" + expected));
    EXPECT_TRUE(AttachmentManager::isSafeName(result.filename));
    EXPECT_EQ(readFile(in(today, result.filename)), original);
  }
}

TEST_F(AttachmentManagerTest, FailedImports) {
  EXPECT_FAILURE(ImportError, fileNotFound, attachments.importFile(outside.path() / "x", today));
  EXPECT_FAILURE(ImportError, copyFailed, attachments.importFile(outside.path(), today));
  fs::create_symlink("nowhere", outside.path() / "link");
  EXPECT_FAILURE(ImportError, fileNotFound, attachments.importFile(outside.path() / "link", today));
  writeFile(context.paths.dayFolder(tomorrow), "in the way");
  writeFile(outside.path() / "x", "x");
  EXPECT_THROW((void)attachments.importFile(outside.path() / "x", tomorrow), FileError);
}

TEST_F(AttachmentManagerTest, DeletedFilesGoToTheTrash) {
  attachments.deleteFile("none.png", today);
  EXPECT_FALSE(fs::exists(context.paths.trashFolder()));
  for (const char* content : {"1", "2"}) {
    writeFile(in(today, "a.png"), content);
    attachments.deleteFile("a.png", today);
  }
  EXPECT_THAT(treeOf(context.paths.attachmentTrashFolder() / "2026-03-01_093005"),
              MatchesRegex("[0-9A-F-]{36}_a\\.png\n2\na\\.png\n1\n"));

  (void)store.createMemo(today, {});
  writeFile(folder.path() / "x", "x");
  const std::string before = treeOf(folder.path());
  for (const char* name : {"../x", "001.md", "", ".", ".."}) attachments.deleteFile(name, today);
  EXPECT_EQ(treeOf(folder.path()), before) << "what is no attachment stays";
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
    for (const char* name : {"first.png", "same.png", "last.png"}) writeFile(in(today, name), name);
    for (const char* name : {"there.png", "same.png"}) writeFile(in(tomorrow, name), name);
    writeFile(in(today, "differs.png"), "12");
    writeFile(in(tomorrow, "differs.png"), "13");
    EXPECT_EQ(kindOf<ImportError>([&] {
                attachments.preparePendingAttachments(
                    {"there.png", "same.png", "first.png", attachment, "last.png"},
                    {.sourceDates = {{"there.png", tomorrow}},
                     .fallbackDate = today,
                     .destinationDate = tomorrow});
              }),
              expected);
    EXPECT_EQ(treeOf(context.paths.dayFolder(tomorrow)),
              "differs.png\n13\nfirst.png\nfirst.png\nsame.png\nsame.png\nthere.png\nthere.png\n");
  }
}

TEST_F(AttachmentManagerTest, StoredBytes) {
  const fs::path dayFolder = context.paths.dayFolder(today);
  const auto named = AttachmentStorage::save(context, "bytes", "m4a", dayFolder);
  ASSERT_TRUE(named);
  EXPECT_THAT(*named, MatchesRegex("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}\\.m4a"));
  EXPECT_THAT(AttachmentStorage::save(context, "", {}, dayFolder).value(),
              MatchesRegex("[0-9a-f-]{36}"));
  const std::string before = treeOf(folder.path());
  testing::internal::CaptureStderr();
  for (const auto& [extension, place] :
       {std::pair("a/../b", dayFolder), {"a\\b", dayFolder}, {"png", dayFolder / *named}})
    EXPECT_FALSE(AttachmentStorage::save(context, "b", extension, place));
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
