#include <iterator>
#include <sstream>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "Core/Extensions/DateFormatters.h"
#include "Core/Lifecycle/Settling/RootSettling.h"
#include "Core/Storage/MemoFile.h"
#include "Core/Storage/TrashStore.h"
#include "Core/Storage/WriteError.h"
#include "Support/FaultyFileSystem.h"
#include "Support/MemoryFileSystem.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

// The text of a note, from a word such as "b3": note b, last changed in minute 3, which its body
// says. "b3+e": it names the file 0000000e.png.
std::string noteText(const std::string& word) {
  Memo memo;
  memo.schemaVersion = MemoFrontmatter::currentSchemaVersion;
  memo.memoId = std::string("memo_") + word[0];
  memo.createdAt = fmt::format("2026-03-01T08:00:0{}+08:00", word[0] % 10);
  memo.updatedAt = fmt::format("2026-03-01T09:0{}:00+08:00", word[1]);
  memo.time = "08:00";
  memo.body = word.substr(0, 2) + "\n";
  if (word.size() == 4) memo.attachments = {fmt::format("0000000{}.png", word[3])};
  return MemoFile::contentOf(memo);
}

const std::vector<std::pair<std::string, std::string>> places{
    {"1/", "2026-03-01/"},
    {"2/", "2026-03-02/"},
    {"t/", ".trash/2026-03-01_003/"},
    {"ha/", ".versions/by-id/" + DiskPaths::identityName("memo_a") + "/"},
    {"hb/", ".versions/by-id/" + DiskPaths::identityName("memo_b") + "/"}};

// "1/003": of the first day; "a1" is a note's text, "<a1|b2>" one with git's markers around two,
// anything else stands for itself.
std::string contentOf(const std::string& word) {
  const auto isNote = [](const std::string& text) {
    return (text.size() == 2 || text.size() == 4) && text[1] >= '0' && text[1] <= '9';
  };
  if (isNote(word)) return noteText(word);
  if (word[0] != '<') return word;
  const std::size_t bar = word.find('|');
  const auto side = [&](std::size_t begin, std::size_t end) {
    const std::string text = contentOf(word.substr(begin, end - begin));
    return text.ends_with('\n') ? text : text + "\n";
  };
  return "<<<<<<< HEAD\n" + side(1, bar) + "=======\n" + side(bar + 1, word.size() - 1) +
         ">>>>>>> theirs\n";
}

std::string pathOf(std::string name) {
  for (const auto& [word, folder] : places)
    if (name.starts_with(word)) name = folder + name.substr(word.size());
  return name.find('.', name.rfind('/')) == std::string::npos && !name.ends_with('/') ? name + ".md"
                                                                                      : name;
}

std::vector<std::string> wordsIn(const std::string& words) {
  std::istringstream stream(words);
  return {std::istream_iterator<std::string>(stream), {}};
}

// A root from words "name=content", "name=content@seconds" with the time of the file.
void putRoot(const fs::path& root, const std::string& words) {
  for (const std::string& word : wordsIn(words)) {
    const std::size_t equal = word.find('=');
    const std::size_t at = word.find('@', equal);
    const fs::path file = root / pathOf(word.substr(0, equal));
    if (word.ends_with('/')) {
      fs::create_directories(root / word);
      continue;
    }
    writeFile(file, contentOf(word.substr(equal + 1, at - equal - 1)));
    const int seconds = at == std::string::npos ? 1 : std::stoi(word.substr(at + 1));
    fs::last_write_time(file, fs::file_time_type::clock::from_sys(std::chrono::sys_seconds(
                                  std::chrono::seconds(1'700'000'000 + seconds))));
  }
}

// The word for the content of a file.
std::string wordOf(const std::string& bytes) {
  static const std::map<std::string, std::string> notes = [] {
    std::map<std::string, std::string> words;
    for (const char id : std::string("abc"))
      for (int minute = 0; minute < 10; ++minute)
        for (const char* files : {"", "+e", "+f"}) {
          const std::string word = fmt::format("{}{}{}", id, minute, files);
          words[noteText(word)] = word;
        }
    return words;
  }();
  const auto note = notes.find(bytes);
  return note == notes.end() ? bytes : note->second;
}

// The words of a root, sorted; what is kept in a history is a "version" or an "original".
std::string wordsOf(const fs::path& root) {
  std::set<std::string> words;
  for (const auto& [name, bytes] : treeOn(root)) {
    if (name.ends_with('/')) continue;
    std::string path = name;
    for (const auto& [word, folder] : places)
      if (path.starts_with(folder)) path = word + path.substr(folder.size());
    if (path.starts_with(".trash/2026-03-01_003_")) path = "own" + path.substr(path.rfind('/'));
    if (path[0] == 'h' && path.find('_') != std::string::npos)
      path = path.substr(0, 3) + (path.ends_with(".md") ? "version" : "original");
    if (path.ends_with(".md")) path = path.substr(0, path.size() - 3);
    words.insert(path + "=" + wordOf(bytes));
  }
  return fmt::format("{}", fmt::join(words, " "));
}

std::string expanded(const std::string& words) {
  std::vector<std::string> all;
  for (const std::string& word : wordsIn(words)) {
    const std::size_t content = word.find('=') + 1;
    all.push_back(word.substr(0, content) + wordOf(contentOf(word.substr(content))));
  }
  return fmt::format("{}", fmt::join(all, " "));
}

struct Row {
  const char* before;
  const char* after;  // empty: as before
  std::size_t notes = 0;
};

class SettlingTest : public StoreTest {
 protected:
  [[nodiscard]] SettlingResult settleAt(const fs::path& root) const {
    const StoreContext at({root}, FileManager(posixFileSystem()), clock);
    return RootSettling(MemoService(at)).run({});
  }

  // Settles it on two machines, and once more on one of them.
  void expectRows(const std::vector<Row>& rows) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
      SCOPED_TRACE(rows[i].before);
      const fs::path here = folder.path() / fmt::format("here{}", i);
      const fs::path there = folder.path() / fmt::format("there{}", i);
      putRoot(here, rows[i].before);
      putRoot(there, rows[i].before);
      const std::string after = *rows[i].after ? expanded(rows[i].after) : wordsOf(here);
      EXPECT_EQ(settleAt(here).notes, rows[i].notes);
      EXPECT_EQ(wordsOf(here), after);
      clock.advance(std::chrono::hours(1));
      (void)settleAt(there);
      EXPECT_EQ(treeOf(there), treeOf(here)) << "another machine";
      EXPECT_EQ(settleAt(here).told.size(), 0U) << "again";
      EXPECT_EQ(treeOf(there), treeOf(here)) << "again";
    }
  }
};

TEST_F(SettlingTest, StraysOfADay) {
  expectRows({
      {"1/003=a1 1/003.sync-conflict-2.md=b2", "1/003=a1 1/004=b2", 1},
      {"1/003=a1 1/003~2=c2 1/003~3=b3", "1/003=a1 1/004=b3 1/005=c2", 2},
      {"1/003=a1 1/003~2=a1", "1/003=a1 ha/version=a1"},
      {"1/003=a2 1/003~2=a1", "1/003=a2 ha/version=a1", 1},
      {"1/003=a1 1/003~2=a2", "1/003=a2 ha/version=a1", 1},
      {"1/003=a1 2/003~2=a2", "1/003=a2 ha/version=a1", 1},
      {"1/003=a3 1/x~1=a1 1/x~2=a2 1/x~3=a2", "1/003=a3 ha/version=a1 ha/version=a2", 3},
      {"1/7=a1 1/000=b1", "1/008=a1 1/009=b1", 2},
      {"1/003=a1 1/003~=damaged\xFF", ""},
      {"1/00000000x=b1 1/3F2504E0.md=b1 1/.hidden.md=b1", ""},
      // A note of a machine that has thrown it away in this state, a later or an earlier one.
      {"t/memo=a1 1/003~=a1", "ha/version=a1 t/memo=a1"},
      {"t/memo=a2 t/meta.txt=2026-03-01,3 1/003~=a1",
       "ha/version=a1 t/memo=a2 t/meta.txt=2026-03-01,3"},
      {"t/memo=a2 t/meta.txt=2026-03-01,3 1/003~=a3", "1/001=a3 ha/version=a2", 2},
      // Files go with the text that names them.
      {"1/003=a2 1/003~=a1+e 1/0000000e.png=x",
       "1/003=a2 ha/attachments/0000000e.png=x "
       "ha/version=a1+e",
       1},
      {"1/003=a1+e 1/004=b1+e 1/003~=a2 1/0000000e.png=x",
       "1/0000000e.png=x 1/003=a2 1/004=b1+e ha/attachments/0000000e.png=x ha/version=a1+e", 1},
      {"1/003=a1 2/003~=a2+e 2/0000000e.png=x", "1/0000000e.png=x 1/003=a2+e ha/version=a1", 1},
      {"1/0000000e.png=x 1/0000000e~1.png=x 1/0000000f.png=y 1/0000000f~1.png=z",
       "1/0000000e.png=x 1/0000000f.png=y 1/0000000f~1.png=z"},
  });
}

TEST_F(SettlingTest, GitsMarkers) {
  expectRows({
      {".git/ 1/003=<a1|a2>", "1/003=a2 ha/version=a1", 1},
      {".git/ 1/003=<b1|a1>", "1/003=a1 1/004=b1", 1},
      {".git/ 1/003=<b1|a1> 1/004=a2", "1/004=a2 1/005=b1 ha/version=a1", 2},
      {".git/ 1/003=<b1|damaged\xFF>", "1/003=b1 hb/original=<b1|damaged\xFF>"},
      {".git/ 1/003=<broken\xFF|damaged\xFF>", ""},
  });
}

TEST_F(SettlingTest, NotesThatStandTwice) {
  expectRows({
      {"1/003=a1 1/004=a2", ""},
      {".stfolder/ 1/003=a1 1/004=a2", "1/004=a2 ha/version=a1", 1},
      {".stfolder/ 1/003=a2 2/001=a1@9", "1/003=a2 ha/version=a1", 1},
      {".stfolder/ 1/003=a1 1/004=a1", "1/004=a1 ha/version=a1"},
      {".stfolder/ 1/003=a1@9 1/004=a1", "1/003=a1 ha/version=a1"},
      {".stfolder/ 1/003=a1 2/001=a1@9", "2/001=a1 ha/version=a1"},
      {".stfolder/ 1/003=a1@9 2/001=a1", "1/003=a1 ha/version=a1"},
      {".stfolder/ 1/003=a1 2/001=a1@2", "2/001=a1 ha/version=a1"},
      {".git/ 1/003=a1@9 2/001=a1", "2/001=a1 ha/version=a1"},
      // Two machines have each taken another one of them away.
      {".stfolder/ ha/place.txt=2026-03-01,3 "
       "ha/1.000000_00000000-0000-8000-8000-000000000000.md=a1",
       "1/003=a1 ha/place.txt=2026-03-01,3", 1},
      {".stfolder/ 1/003=a1+e 1/0000000e.png=x 2/001=a1+e@9",
       "2/0000000e.png=x 2/001=a1+e ha/version=a1+e"},
  });
}

TEST_F(SettlingTest, TheTrash) {
  expectRows({
      {"t/memo=a1 t/memo~2=a1 t/meta.txt=m t/meta~2.txt=m", "t/memo=a1 t/meta.txt=m"},
      {"t/memo~2=a1 t/memo~3=a2 t/meta~2.txt=m", "ha/version=a1 t/memo=a2 t/meta.txt=m", 1},
      {"t/memo=<a1|a2> t/meta.txt=m", "ha/version=a1 t/memo=a2 t/meta.txt=m", 1},
      {"t/memo=a2 t/memo~2=a1+e t/attachments/0000000e.png=x t/meta.txt=2026-03-01,3",
       "ha/attachments/0000000e.png=x ha/version=a1+e t/memo=a2 t/meta.txt=2026-03-01,3", 1},
      {"t/memo=a1 t/memo~2=b2+e t/attachments/0000000e.png=x t/meta.txt=2026-03-01,3",
       "own/0000000e.png=x own/memo=b2+e own/meta.txt=2026-03-01,3 t/memo=a1 "
       "t/meta.txt=2026-03-01,3",
       1},
      {"t/memo=a1 t/memo~2=a2 t/meta.txt=2026-03-01,3 t/meta~2.txt=x",
       "ha/version=a1 t/memo=a2 t/meta.txt=2026-03-01,3", 1},
      {".stfolder/ 1/003=a2+e t/memo=a1+e t/meta.txt=2026-03-01,3 t/attachments/0000000e.png=x "
       "t/attachments/0000000f.png=y",
       "1/0000000e.png=x 1/003=a2+e ha/attachments/0000000e.png=x ha/attachments/0000000f.png=y "
       "ha/version=a1+e",
       1},
      {".stfolder/ 1/003=a1 t/memo=a1 t/meta.txt=2026-03-01,3",
       "1/003=a1 t/memo=a1 t/meta.txt=2026-03-01,3"},
      {".stfolder/ 1/003=a1+e t/memo=a2+e t/meta.txt=2026-03-01,3 t/attachments/0000000e.png=x",
       "1/0000000e.png=x 1/003=a1+e t/attachments/0000000e.png=x t/memo=a2+e "
       "t/meta.txt=2026-03-01,3"},
  });
}

TEST_F(SettlingTest, EmptyingTheTrashKeepsTheHistoryOfANoteThatStands) {
  putRoot(folder.path(), "1/003=a1 t/memo=a2 t/meta.txt=2026-03-01,3 ha/100_0=a0 hb/100_0=b0");
  TrashStore(context).emptyTrash();
  EXPECT_EQ(wordsOf(folder.path()), expanded("1/003=a1 ha/version=a0 hb/version=b0"));
}

TEST_F(SettlingTest, ATextThatComesWhileAnotherIsWrittenStays) {
  putRoot(folder.path(), "1/003=a1");
  FaultyFileSystem engine(posixFileSystem(), {}, [&](const FaultyFileSystem::Call& call) {
    if (call.name == "write" && call.path.parent_path().filename() == "2026-03-01")
      putRoot(folder.path(), "1/003=a2");
  });
  const MemoService service({{folder.path()}, FileManager(engine), clock});
  const Day on = day("2026-03-01");
  const Memo memo = service.days().memoStore().read(on, 3).value();
  EXPECT_THROW((void)service.edit(on, memo, "b"), WriteError);
  EXPECT_THAT(wordsOf(folder.path()), testing::HasSubstr("1/003=a2"));
}

TEST_F(SettlingTest, WhatIsFreshOrCannotBeSettledWaitsAndIsNamed) {
  const char* const words =
      ".stfolder/ 1/003=a2 1/003~1=a1 1/004~=damaged\xFF 1/005=b1 2/001=b1 t/memo=c1 "
      "t/memo~1=c2 ha/place.txt=x ha/place~1.txt=y";
  putRoot(folder.path(), words);
  clock.set(DateFormatters::isoDateTime.format(std::chrono::time_point_cast<Moment::duration>(
      std::chrono::system_clock::now() + std::chrono::seconds(1))));
  const MemoService service(context);
  const auto shown = [&] {
    std::string text;
    for (const Stray& stray : RootSettling(service).strays())
      text += fmt::format("{} {}\n", stray.path.string(), stray.canBeSettled);
    return text;
  };
  const std::string waiting = shown();
  EXPECT_EQ(waiting,
            "2026-03-01/003~1.md true\n2026-03-01/004~.md false\n2026-03-01/005.md "
            "false\n2026-03-02/001.md false\n.trash/2026-03-01_003/memo~1.md true\n" +
                (".versions/by-id/" + DiskPaths::identityName("memo_a")) + "/place~1.txt true\n");
  putRoot(folder.path(), words);
  EXPECT_TRUE(RootSettling(service).run({}).isWaiting);
  EXPECT_EQ(shown(), waiting);
}

}  // namespace
}  // namespace nomely::test
