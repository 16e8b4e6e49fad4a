#include <fmt/format.h>

#include "Core/Query/SearchIndex.h"
#include "Import/FlomoExport.h"
#include "Import/FlomoExportFiles.h"
#include "Import/FlomoImporter.h"
#include "Import/ImportError.h"
#include "Import/ImportUndoManager.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Support/ErrorKind.h"
#include "Support/RandomText.h"

namespace nomely::test {
namespace {

const std::string jpeg = "\xFF\xD8\xFF\xE0 bytes of a picture";

class FlomoImporterTest : public StoreTest {
 protected:
  fs::path page(const std::string& html) const {
    writeFile(outside.path() / "flomo.html", html);
    return outside.path() / "flomo.html";
  }
  // "2026-03-05/2 21:30 “晚上好” #_flomo_import .jpg", newest first.
  [[nodiscard]] std::string memos() const {
    std::string lines;
    for (const Day date : store.listAllDates())
      for (const Memo& memo : store.listMemos(date)) {
        lines += fmt::format("{}/{} {} “{}”", date.string(), memo.seqNumber, memo.time, memo.body);
        for (const std::string& tag : memo.tags) lines += " #" + tag;
        for (const std::string& name : memo.attachments) {
          lines += fs::path(name).extension().string();
          EXPECT_TRUE(fs::exists(context.paths.dayFolder(date) / name));
        }
        lines += "\n";
      }
    return lines;
  }

  TemporaryFolder outside;
  MemoService service{context};
  FlomoImporter importer{service};
  ImportUndoManager undo{service};
};

TEST_F(FlomoImporterTest, ReferencesFindFilesOfTheExportAlone) {
  const fs::path exported = outside.path() / "export";
  writeFile(exported / "file/a b.jpg", "1");
  writeFile(exported / "x/file/c.png", "2");
  writeFile(outside.path() / "secret.jpg", "secret");
  fs::create_symlink(outside.path() / "secret.jpg", exported / "file/link.jpg");
  fs::create_directory_symlink(outside.path(), exported / "up");
  writeFile(exported / "flomo.html", "");
  writeZip(outside.path() / "flomo.zip", {{"x/file/c.png", "2"},
                                          {"xfile/c.png", "other"},
                                          {"export/file/a b.jpg", "1"},
                                          {"file/", ""},
                                          {"export/flomo.html", ""},
                                          {"../secret.jpg", "3"}});
  const std::string secret = (outside.path() / "secret.jpg").string();
  // A reference, and what it finds in the folder and in the archive.
  const auto cases = rowsOf<3>(
      "file/a b.jpg¦1¦1¦/file/a%20b.jpg?v=1¦1¦1¦//file//./a b.jpg¦1¦¦file%2Fa b.jpg¦1¦1¦"
      "file/a b%2.jpg¦¦¦file/c.png¦¦2¦ile/c.png¦¦¦c.png¦¦2¦x/file/c.png¦2¦2¦¦¦¦/?¦¦¦file¦¦¦"
      "../secret.jpg¦¦3¦secret.jpg¦¦3¦%2e%2e/secret.jpg¦¦3¦file/../../secret.jpg¦¦¦"
      "up/secret.jpg¦¦¦file/link.jpg¦¦¦file/a b.jpg%00¦¦¦http://localhost/file/a b.jpg¦¦¦"
      "HTTPS://localhost/c.png¦¦¦" +
      secret + "¦¦¦file://" + secret + "¦¦¦" + std::string(5000, 'a') + "¦¦");
  const auto inFolder = openFlomoExport(context.files, exported / "flomo.html");
  const auto inArchive = openFlomoExport(context.files, outside.path() / "flomo.zip");
  for (const auto& [reference, folderHas, archiveHas] : cases) {
    SCOPED_TRACE(reference);
    const auto contentIn = [&, named = reference](FlomoSource& source) {
      std::string content;
      if (const auto media = source.media(named))
        media([&](std::string_view piece) { content += piece; });
      return content;
    };
    EXPECT_EQ(contentIn(*inFolder), folderHas);
    EXPECT_EQ(contentIn(*inArchive), archiveHas);
  }
}

TEST_F(FlomoImporterTest, AnExportItsRepeatsItsFilesAndItsUndo) {
  (void)store.createMemo(day("2026-03-05"), {.body = "早就有的", .attachments = {}});
  (void)store.createMemo(day("2026-03-05"), {.body = "\n 写过的 \n"});
  const std::string html = flomoNote("2026-03-05 21:30", "晚上好 #随笔", "file/a.undefined?v=1") +
                           flomoNote("2026-03-05 21:31", "写过的") +
                           flomoNote("2026-03-06 08:00", "晚上好 #随笔", "file/b.m4a") +
                           flomoNote("2026-03-06 08:01", "晚上好") +
                           flomoNote("2026-03-06 08:02", "", "file/b.m4a") +
                           flomoNote("三月", "没有时间");
  const ImportPreviewSummary summary = importer.previewFromURL(page(html));
  EXPECT_EQ(summary.confirmationText(),
            "来源：flomo.html\n新笔记：3\n重复跳过：2\n涉及天数：3\n"
            "日期范围：2026-03-01 ~ 2026-03-06\n时间无法识别：1 条（记在今天）\n"
            "空正文跳过：1 条（仅图片/附件，暂不支持）\n媒体：1 张图片，1 个音频\n缺失附件：2 个\n"
            "标签：随笔\n开始导入前会自动创建备份。");
  EXPECT_EQ(summary.totalItems, 6U);
  JobPool jobs(1);
  SearchIndex index(context, jobs);
  EXPECT_EQ(index.allEntryTags().size(), 2U);
  EXPECT_EQ(importer.importFromURL(page(html)).text(),
            "✅ 导入成功！共导入 3 条笔记，涉及 3 天。 2 个附件未找到，建议选择 flomo 的 ZIP "
            "包重新导入。");
  const std::string before = memos();
  EXPECT_EQ(before,
            "2026-03-01/1 00:00 “没有时间” #_flomo_import\n"
            "2026-03-05/3 21:30 “晚上好” #随笔 #_flomo_import\n"
            "2026-03-05/2 09:30 “ 写过的 \n”\n2026-03-05/1 09:30 “早就有的”\n"
            "2026-03-06/1 08:00 “晚上好” #随笔 #_flomo_import\n");
  EXPECT_EQ(index.allEntryTags().size(), 5U);
  EXPECT_FALSE(importer.previewFromURL(page(html)).isWorthwhile());
  EXPECT_EQ(importer.previewFromURL(page(html)).nothingNewText(),
            "5 条笔记都已存在，无需重复导入。");
  EXPECT_EQ(importer.importFromURL(page(html)).memosImported, 0U);
  EXPECT_EQ(memos(), before);

  // The archive has the files that the page alone lacked; an edited note keeps its text.
  const fs::path zip = outside.path() / "flomo.ZIP";
  writeZip(zip, {{"e/file/a.undefined", jpeg}, {"e/flomo.html", html}, {"e/file/b.m4a", "sound"}});
  EXPECT_THAT(importer.previewFromURL(zip).confirmationText(),
              HasSubstr("\n补上附件：2 条已有的笔记\n"));
  clock.advance(std::chrono::minutes(1));
  const Memo imported = store.memoStore().read(day("2026-03-06"), 1).value();
  EXPECT_EQ(
      importer.importFromURL(zip).text(),
      "✅ 导入成功！共导入 0 条笔记，涉及 0 天。 导入 2 个附件。 为 2 条已有的笔记补上了附件。");
  EXPECT_THAT(memos(), AllOf(HasSubstr("/3 21:30 “晚上好” #随笔 #_flomo_import.jpg\n"),
                             HasSubstr("/1 08:00 “晚上好” #随笔 #_flomo_import.m4a\n")));
  EXPECT_THAT(service.versions().listVersions(day("2026-03-06"), 1, imported.memoId), SizeIs(1));
  const std::string repaired = treeOf(context.paths.rootURL);
  EXPECT_EQ(importer.importFromURL(zip).attachmentsImported, 0U);
  EXPECT_EQ(treeOf(context.paths.rootURL), repaired);

  const Memo memo = store.memoStore().read(day("2026-03-05"), 3).value();
  (void)service.edit(day("2026-03-05"), memo, "改过");
  EXPECT_EQ(undo.countFlomoImports().memos, 3U);
  EXPECT_EQ(undo.countFlomoImports().edited, 1U);
  EXPECT_EQ(undo.undoFlomoImport(), 3U);
  EXPECT_EQ(index.allEntryTags().size(), 2U);
  EXPECT_THAT(service.trashed(), SizeIs(3));
  EXPECT_THAT(undo.undoFlomoImportDetailed(), IsEmpty());
}

TEST_F(FlomoImporterTest, WhatCannotBeImportedChangesNothing) {
  const auto refusal = [&](const fs::path& file) {
    return messageOf<Error>([&] { (void)importer.importFromURL(file); });
  };
  EXPECT_EQ(refusal(page("<p>")), "没有找到可导入的笔记");
  EXPECT_THAT(refusal(page(flomoNote("", "a") + flomoNote("", "\xFF"))), HasSubstr("UTF-8"));
  writeFile(outside.path() / "a.zip", "PK");
  EXPECT_EQ(refusal(outside.path() / "a.zip"), "ZIP 文件过小");
  writeZip(outside.path() / "a.zip", {{"a.txt", flomoNote("", "a")}});
  EXPECT_EQ(refusal(outside.path() / "a.zip"), "ZIP 中没有找到 HTML 文件");
  // A day that can't be listed may hold the note already.
  writeFile(context.paths.dayFolder(day("2026-03-05")), "");
  EXPECT_FAILURE(FileError, notADirectory,
                 importer.importFromURL(page(flomoNote("2026-03-05", "a"))));
  EXPECT_EQ(memos(), "");
}

// Batches: numbers go on, others may write between two of them, and a stop leaves what is whole.
TEST_F(FlomoImporterTest, ManyNotesOfOneDay) {
  std::string html;
  for (int i = 0; i < 2500; ++i)
    html += flomoNote("2026-03-05 21:30", fmt::format("第{}条", i % 2400));
  (void)store.createMemo(day("2026-03-05"), {.body = "第2399条"});
  std::stop_source stop;
  const auto others = [&](double) {
    (void)store.createMemo(day("2026-03-05"), {.body = "别的"});
    stop.request_stop();
  };
  EXPECT_THROW((void)importer.importFromURL(page(html), {stop.get_token(), others}),
               CancellationError);
  (void)importer.importFromURL(page(html));
  const std::vector<std::int64_t> numbers = store.listNumbers(day("2026-03-05"));
  EXPECT_EQ(numbers.back(), 2401);
  EXPECT_THAT(numbers, SizeIs(2401));
}

TEST_F(FlomoImporterTest, NotesImportsAreUndoneTheLatestFirst) {
  const auto add = [&](const std::string& date, const std::vector<std::string>& tags) {
    (void)store.createMemo(day(date), {.body = "a", .tags = tags});
  };
  EXPECT_EQ(undo.undoLatestNotesImport(), 0U);
  add("2026-03-01", {"_notes_import", "_notes_import_batch_20260301"});
  add("2026-03-02", {"_notes_import", "_notes_import_batch_20260302"});
  add("2026-03-03", {"_notes_import", "_notes_import_batch_20260302"});
  add("2026-03-04", {"_notes_import_batch_20260309", "_flomo_import_x"});
  EXPECT_EQ(undo.countLatestNotesImport().memos, 2U);
  EXPECT_EQ(undo.undoLatestNotesImportDetailed(),
            (ImportUndoManager::Places{{day("2026-03-02"), 1}, {day("2026-03-03"), 1}}));
  EXPECT_EQ(undo.undoLatestNotesImport(), 1U);
  EXPECT_EQ(undo.undoLatestNotesImport(), 0U);
  EXPECT_EQ(undo.undoFlomoImport(), 0U);
}

}  // namespace
}  // namespace nomely::test
