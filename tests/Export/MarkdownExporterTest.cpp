#include <cerrno>
#include <set>

#include "Export/MarkdownExporter.h"
#include "Export/NestedBody.h"
#include "Platform/Error.h"
#include "Support/FaultyFileSystem.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

class MarkdownExporterTest : public StoreTest {
 protected:
  // A memo whose attachments hold their own names.
  MemoEntry& add(const std::string& date, const std::string& body,
                 const std::vector<std::string>& names) {
    for (const std::string& name : names)
      writeFile(context.paths.dayFolder(day(date)) / name, date + name);
    auto memo = std::make_shared<Memo>();
    memo->time = "09:30";
    memo->body = body;
    memo->attachments = names;
    latest = memo.get();
    return entries.emplace_back(MemoEntry{day(date), memo});
  }
  void exportAll(FileSystem& fileSystem, Replacement replacement = Replacement::forbid) {
    const StoreContext storage{context.paths, FileManager(fileSystem), clock};
    result = MarkdownExporter::exportTo(document, selection, storage, replacement);
  }

  // Of everything beside the document, folders included; a temporary is swept later.
  [[nodiscard]] std::string names() const {
    std::set<std::string> sorted;
    for (const auto& entry : fs::recursive_directory_iterator(target.path()))
      if (!FileManager::isTemporaryName(entry.path().filename().string()))
        sorted.insert(entry.path().string());
    return testing::PrintToString(sorted);
  }

  TemporaryFolder target{quickParent()};
  const fs::path document = target.path() / "旅 行.md";
  std::vector<MemoEntry> entries;
  Memo* latest = nullptr;
  const ExportSelection selection{0, [this](const auto& visit) {
                                    for (const MemoEntry& entry : entries) visit(entry);
                                  }};
  MarkdownExporter::Result result;
};

TEST(NestedBody, LeavesTheOutlineToTheDocument) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"headings", "# a\n   ## b\n###### c\n#\tt\n#", "### a\n   #### b\n###### c\n###\tt\n###\n"},
      {"no headings", "#tag\n    # code\n####### x", "#tag\n    # code\n####### x\n"},
      {"code", "```sh\n# a\n```\n# b\n~~~~\n~~~\n# c",
       "```sh\n# a\n```\n### b\n~~~~\n~~~\n# c\n~~~~\n"},
      {"code in a line", "```a```\n# b\n", "```a```\n### b\n"},
      {"rules", "a\n---\n\n---\nb\r\n===\r\n", "a\n\n---\n\n---\nb\r\n\n===\r\n"},
      {"nothing else", "a  \n\n- b\n| c |\n|---|\n\n", "a  \n\n- b\n| c |\n|---|\n\n"},
  };
  for (const auto& [name, body, nested] : cases) EXPECT_EQ(nestedBody(body), nested) << name;
}

TEST_F(MarkdownExporterTest, DocumentWithItsFiles) {
  add("2026-03-01", "# 计划\n", {"A1.PNG", "B2.pdf", "C3.png", "D4.m4a"});
  latest->tags = {"工作/会议", "_imported", "a*b"};
  latest->mood = 4;
  latest->originalNames = {
      {"A1.PNG", "图 [1].png"}, {"B2.pdf", "../报告：终.pdf"}, {"C3.png", "图 [1].PNG"}};
  latest->attachmentDescriptions = {{"A1.PNG", "山顶\n<日出>"}};
  fs::remove(context.paths.dayFolder(day("2026-03-01")) / "D4.m4a");
  add("2026-03-01", "", {"A1.PNG", "../../etc/passwd"});
  add("2026-02-28", "b\n\n---\n<!-- original-base64:YQ== -->", {"A1.PNG"});
  exportAll(posixFileSystem());

  EXPECT_EQ(readFile(document),
            "# 2026年3月1日 周日\n\n## 09:30\n\n#工作/会议 #a\\*b 心情 4\n\n### 计划\n"
            "\n![图 \\[1\\].png](旅%20行-附件/2026-03-01/图%20%5B1%5D.PNG) 山顶 \\<日出\\>\n"
            "\n[../报告：终.pdf](旅%20行-附件/2026-03-01/B2.pdf)\n"
            "\n![图 \\[1\\].PNG](旅%20行-附件/2026-03-01/图%20%5B1%5D.png)\n"
            "\n*缺少附件：D4.m4a*\n"
            "\n## 09:30\n\n![A1.PNG](旅%20行-附件/2026-03-01/A1.PNG)\n"
            "\n*缺少附件：../../etc/passwd*\n"
            "\n# 2026年2月28日 周六\n\n## 09:30\n\nb\n"
            "\n![A1.PNG](旅%20行-附件/2026-02-28/A1.PNG)\n");
  EXPECT_EQ(result.bytes, readFile(document).size());
  EXPECT_EQ(result.missing, 2U);
  EXPECT_EQ(readFile(target.path() / "旅 行-附件/2026-02-28/A1.PNG"), "2026-02-28A1.PNG");

  std::string text;
  MarkdownExporter::write(selection, context, [&](std::string_view piece) { text += piece; });
  EXPECT_THAT(
      text,
      HasSubstr("](" + (context.paths.dayFolder(day("2026-02-28")) / "A1.PNG").string() + ")"));
}

TEST_F(MarkdownExporterTest, NamesThatAreTaken) {
  const fs::path copies = MarkdownExporter::attachmentFolder(document) / "2026-03-01";
  writeFile(copies / "A.png", "mine");
  writeFile(copies / "B.png", "2026-03-01B.png");
  writeFile(document, "mine");
  add("2026-03-01", "", {"A.png", "B.png"});
  EXPECT_THROW(exportAll(posixFileSystem()), Error);
  EXPECT_EQ(readFile(document), "mine");
  EXPECT_FALSE(fs::exists(copies / "A-2.png"));
  exportAll(posixFileSystem(), Replacement::allow);
  EXPECT_EQ(treeOf(copies).find("B-2.png"), std::string::npos);
  EXPECT_EQ(readFile(copies / "A.png"), "mine");
  EXPECT_EQ(readFile(copies / "A-2.png"), "2026-03-01A.png");
  EXPECT_THAT(readFile(document), HasSubstr("/A-2.png)"));
}

// Whichever call fails: either everything is there, or what was there before.
TEST_F(MarkdownExporterTest, AFailureLeavesNothingHalf) {
  add("2026-03-01", "", {"A.png", "B.png"});
  add("2026-02-28", "", {"A.png"});
  for (const Replacement replacement : {Replacement::forbid, Replacement::allow})
    for (const auto mode : {FaultyFileSystem::Mode::fail, FaultyFileSystem::Mode::failLate}) {
      for (std::uint64_t call = 1;; ++call) {
        SCOPED_TRACE(call);
        fs::remove_all(target.path());
        fs::create_directory(target.path());
        if (replacement == Replacement::allow) {
          writeFile(document, "mine");
          writeFile(MarkdownExporter::attachmentFolder(document) / "2026-03-01/A.png", "mine");
        }
        const std::string before = names();
        FaultyFileSystem faulty(posixFileSystem(),
                                {.mode = mode, .atCall = call, .errorNumber = ENOSPC});
        try {
          exportAll(faulty, replacement);
        } catch (const Error&) {
          const std::string left = names();
          if (replacement == Replacement::forbid || readFile(document) == "mine")
            EXPECT_EQ(left, before);
          else
            EXPECT_THAT(left, HasSubstr("A-2.png"));
        }
        if (faulty.calls() < call) break;
      }
    }
}

}  // namespace
}  // namespace nomely::test
