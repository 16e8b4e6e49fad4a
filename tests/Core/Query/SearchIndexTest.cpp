#include <atomic>
#include <future>
#include <map>
#include <random>
#include <ranges>
#include <thread>

#include <fmt/format.h>

#include "Core/Query/SearchIndex.h"
#include "Support/PausingFileSystem.h"
#include "Support/StoreFixture.h"

namespace nomely::test {
namespace {

using Call = PausingFileSystem::Call;

class SearchIndexTest : public StoreTest {
 protected:
  // Straight to the store: the index is told by the tests themselves.
  Memo write(Day of, const std::string& body, std::vector<std::string> tags = {},
             const std::string& time = "09:30") {
    return store.createMemo(of, {.body = body, .tags = std::move(tags), .time = time});
  }
  [[nodiscard]] std::vector<std::string> bodies() { return bodiesOf(index.allMemoEntries()); }
  [[nodiscard]] std::vector<std::string> found(std::string_view query, std::size_t limit = 50) {
    std::vector<std::string> all;
    for (const SearchResult& result : index.search(query, limit)) all.push_back(result.body);
    return all;
  }
  [[nodiscard]] fs::path file(const Memo& memo, Day of) const {
    return context.paths.memoFile(of, memo.seqNumber);
  }

  PausingFileSystem files{posixFileSystem()};
  JobPool jobs{2};
  SearchIndex index{{context.paths, FileManager(files), clock}, jobs};
  Day today = day("2026-03-05");
  Day yesterday = day("2026-03-04");
};

TEST_F(SearchIndexTest, NewestFirstHoweverItCame) {
  write(yesterday, "d", {}, "23:00");
  write(today, "c", {}, "08:00");
  write(today, "a", {}, "10:00");
  write(today, "b", {}, "08:00");
  writeFile(context.paths.dayFolder(today) / "009.md", "damaged");
  write(day("2026-03-03"), "");
  testing::internal::CaptureStderr();
  EXPECT_THAT(bodies(), ElementsAre("a", "b", "c", "d", ""));
  testing::internal::GetCapturedStderr();
  for (const auto& [date, time, body] : {std::tuple(today, "09:00", "ab"),
                                         {yesterday, "23:30", "cd"},
                                         {day("2026-03-06"), "", "0"},
                                         {day("2020-01-01"), "", "z"},
                                         {yesterday, "00:00", "de"}})
    index.indexMemo(write(date, body, {}, time), date);
  EXPECT_THAT(bodies(), ElementsAre("0", "a", "ab", "b", "c", "cd", "d", "de", "", "z"));
}

TEST_F(SearchIndexTest, ADayOfManyMemosChangesInPieces) {
  // Straight to the index: no file is needed for what it is told.
  const auto put = [&](std::int64_t number, int minute, const std::string& body) {
    Memo memo;
    memo.seqNumber = number;
    memo.time = fmt::format("{:02}:{:02}", minute / 60, minute % 60);
    memo.body = body;
    index.indexMemo(memo, today);
  };
  write(yesterday, "昨天");
  write(day("2026-03-06"), "明天");
  EXPECT_THAT(bodies(), SizeIs(2));
  std::map<std::pair<int, std::int64_t>, std::string> expected;  // by minute and number
  std::mt19937 random(1);
  constexpr std::int64_t most = 1500;
  for (std::int64_t number = 1; number <= most; ++number) {
    const int minute = static_cast<int>(number % 3 == 0 ? random() % 1440 : 720 + number / 10);
    expected[{minute, number}] = std::to_string(number);
    put(number, minute, std::to_string(number));
  }
  for (auto at = expected.begin(); at != expected.end();) {
    const auto [minute, number] = at->first;
    if (random() % 3 == 0) put(number, minute, at->second += "改");
    if (number % 5 != 0) {
      ++at;
      continue;
    }
    index.removeMemo(today, number);
    at = expected.erase(at);
  }
  std::vector<std::string> all{"明天"};
  for (const auto& [place, body] : expected | std::views::reverse) all.push_back(body);
  all.emplace_back("昨天");
  EXPECT_EQ(bodies(), all);
  EXPECT_THAT(found("749"), ElementsAre(expected.at({720 + 74, 749})));
}

TEST_F(SearchIndexTest, FindsWords) {
  write(yesterday, "春天 ABC，读书", {"工作/计划", "_hidden"});
  write(today, "工作报告 abc", {"生活"});
  const std::string older = "春天 ABC，读书";
  const std::string newer = "工作报告 abc";
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"", {}},
      {" \t\u3000", {}},
      {"天\u3000A", {}},
      {"划_", {}},
      {"#", {}},
      {"##生活", {}},
      {"abc 没有", {}},
      {"\xFF", {}},
      {"作", {newer, older}},
      {"#作", {older}},
      {"aBc", {newer, older}},
      {"  abc   春天 ", {older}},
      {"#工作 读书", {older}},
      {"#计划 #HIDDEN", {older}},
      {"abc #生活", {newer}},
      {"abc abc abc", {newer, older}}};
  for (const auto& [query, expected] : cases) EXPECT_EQ(found(query), expected) << query;
  for (const std::size_t limit : {0U, 1U}) EXPECT_THAT(found("abc", limit), ElementsAre(newer));
  EXPECT_THAT(found(std::string(10'000, 'a')), IsEmpty());
  std::string manyWords;
  for (int i = 0; i < 5'000; ++i) manyWords += "a b ";
  EXPECT_THAT(found(manyWords), ElementsAre(newer, older));
}

TEST_F(SearchIndexTest, SnippetShowsTheFirstWordTyped) {
  const Memo memo = write(today, "读了一本很长的书 Abc", {"工作"});
  const std::pair<const char*, const char*> cases[] = {
      {"书 一本很长", "读了一本很长的>>>书<<< Abc"},
      {"abc", "读了一本很长的书 >>>Abc<<<"},
      {"工作 书", ""},
      {"#工作 书", "读了一本很长的书 Abc"},
      {"#工作", "读了一本很长的书 Abc"},
  };
  for (const auto& [query, snippet] : cases) {
    const auto results = index.search(query, 50);
    ASSERT_EQ(results.size(), 1U) << query;
    EXPECT_EQ(results[0].snippet, snippet);
  }
  const SearchResult result = index.search("书", 1)[0];
  EXPECT_EQ(std::tie(result.date, result.seqNumber, result.time, result.tags),
            std::tie(today, memo.seqNumber, memo.time, memo.tags));
  EXPECT_NE(result.id, index.search("书", 1)[0].id);
}

TEST_F(SearchIndexTest, TagsByLastUse) {
  write(yesterday, "", {"b", " a\t", "  "});
  write(today, "", {"c", "b"});
  write(today, "", {"_x"});
  EXPECT_THAT(
      index.allTags(),
      ElementsAre(TagUse{"_x", 1, "2026-03-05:000002"}, TagUse{"c", 1, "2026-03-05:000001"},
                  TagUse{"b", 2, "2026-03-05:000001"}, TagUse{"a", 1, "2026-03-04:000001"}));
  std::vector<std::vector<std::string>> tags;
  for (const EntryTags& entry : index.allEntryTags()) tags.push_back(entry.tags);
  EXPECT_THAT(
      tags, ElementsAre(ElementsAre("_x"), ElementsAre("c", "b"), ElementsAre("b", " a\t", "  ")));
}

TEST_F(SearchIndexTest, ChangedMemoKeepsItsPlaceUntilTheNextBuild) {
  Memo memo = write(today, "a", {}, "08:00");
  write(today, "b", {}, "09:00");
  EXPECT_THAT(bodies(), ElementsAre("b", "a"));
  memo.time = "10:00";
  memo.body = "A";
  store.updateMemo(memo, today, {});
  index.indexMemo(memo, today);
  EXPECT_THAT(bodies(), ElementsAre("b", "A"));
  index.invalidateCache();
  EXPECT_THAT(bodies(), ElementsAre("A", "b"));
}

TEST_F(SearchIndexTest, OwnWritesAreNoChangeFromOutside) {
  EXPECT_FALSE(index.rebuildIfDiskChanged()) << "nothing is built";
  Memo memo = write(today, "a");
  EXPECT_THAT(bodies(), ElementsAre("a"));
  memo.body = "longer";
  store.updateMemo(memo, today, {});
  index.indexMemo(memo, today);
  const Memo other = write(yesterday, "b");
  index.indexMemo(other, yesterday);
  EXPECT_FALSE(index.rebuildIfDiskChanged());
  store.deleteMemo(yesterday, other);
  index.removeMemo(yesterday, other.seqNumber);
  EXPECT_FALSE(index.rebuildIfDiskChanged());
  EXPECT_THAT(bodies(), ElementsAre("longer"));
  writeFile(context.paths.dayFolder(today) / "a.png", "no memo");
  EXPECT_FALSE(index.rebuildIfDiskChanged());
}

TEST_F(SearchIndexTest, ChangesFromOutsideAreNoticedOnce) {
  const Memo memo = write(today, "a");
  const auto eachOfMany = [&](auto change) {
    for (int month = 1; month <= 12; ++month)
      for (int of = 1; of <= 10; ++of)
        change(context.paths.memoFile(day(fmt::format("2025-{:02}-{:02}", month, of)), 1));
  };
  const std::pair<const char*, std::function<void()>> changes[] = {
      {"edited", [&] { writeFile(file(memo, today), "---\ntime: 09:30\n---\n\nlonger than it"); }},
      {"added", [&] { writeFile(context.paths.dayFolder(today) / "901.md", "---\n---\nb"); }},
      {"no memo by its name", [&] { writeFile(context.paths.dayFolder(today) / "x.md", ""); }},
      {"new day", [&] { writeFile(context.paths.dayFolder(yesterday) / "901.md", ""); }},
      {"replaced, same size and time",
       [&] {
         const auto time = fs::last_write_time(file(memo, today));
         fs::copy_file(file(memo, today), folder.path() / "copy");
         fs::last_write_time(folder.path() / "copy", time);
         fs::rename(folder.path() / "copy", file(memo, today));
       }},
      {"removed", [&] { fs::remove(file(memo, today)); }},
      {"day removed", [&] { fs::remove_all(context.paths.dayFolder(today)); }},
      {"many days",
       [&] { eachOfMany([](const fs::path& file) { writeFile(file, "---\n---\nm"); }); }},
      {"and gone",
       [&] { eachOfMany([](const fs::path& file) { fs::remove_all(file.parent_path()); }); }},
  };
  testing::internal::CaptureStderr();
  for (const auto& [name, change] : changes) {
    SCOPED_TRACE(name);
    (void)bodies();
    change();
    EXPECT_TRUE(index.rebuildIfDiskChanged());
    EXPECT_EQ(bodies(), bodiesOf(SearchIndex(context, jobs).allMemoEntries()));
    EXPECT_FALSE(index.rebuildIfDiskChanged());
  }
  testing::internal::GetCapturedStderr();
  EXPECT_THAT(bodies(), IsEmpty());
}

// Each way of overtaking a build that has read the memo's day already, or is about to.
TEST_F(SearchIndexTest, WriterOvertakesABuild) {
  Memo memo = write(today, "old");
  const Memo other = write(yesterday, "other");
  const std::pair<const char*, std::function<void()>> writers[] = {
      {"changed",
       [&] {
         memo.body += "er";
         store.updateMemo(memo, today, {});
         index.indexMemo(memo, today);
       }},
      {"invalidated", [&] { index.invalidateCache(); }},
      {"created and removed",
       [&] {
         const Memo brief = write(today, "brief");
         index.indexMemo(brief, today);
         store.deleteMemo(today, brief);
         index.removeMemo(today, brief.seqNumber);
       }},
  };
  const std::pair<Call, fs::path> moments[] = {{Call::list, folder.path()},
                                               {Call::open, file(memo, today)},
                                               {Call::read, file(memo, today)},
                                               {Call::open, file(other, yesterday)}};
  for (const auto& [name, writer] : writers)
    for (const auto& [call, path] : moments) {
      SCOPED_TRACE(name);
      index.invalidateCache();
      bool startedAnew = false;
      files.at(call, path, [&, act = writer] {
        act();
        files.at(Call::list, folder.path(), [&] { startedAnew = true; });
      });
      const std::vector<std::string> seen = bodies();
      EXPECT_THAT(seen, ElementsAre(memo.body, "other"));
      EXPECT_FALSE(files.isPending());
      EXPECT_TRUE(startedAnew);
      EXPECT_FALSE(index.rebuildIfDiskChanged());
    }
}

TEST_F(SearchIndexTest, EditElsewhereDuringABuildIsNoticedLater) {
  const Memo memo = write(today, "old");
  files.at(Call::read, file(memo, today),
           [&] { writeFile(file(memo, today), "---\ntime: 09:30\n---\n\nnewer"); });
  EXPECT_THAT(bodies(), ElementsAre("newer"));
  EXPECT_TRUE(index.rebuildIfDiskChanged()) << "the stamp is older than what was read";
  EXPECT_THAT(bodies(), ElementsAre("newer"));
  EXPECT_FALSE(index.rebuildIfDiskChanged());
}

// Another program is quicker than the announcement of our own write.
TEST_F(SearchIndexTest, EditElsewhereRightAfterAWriteIsNoticedLater) {
  const Memo memo = write(today, "old");
  for (const auto& announce :
       std::vector<std::function<void()>>{[&] { index.indexMemo(memo, today); },
                                          [&] { index.removeMemo(today, memo.seqNumber); }}) {
    (void)bodies();
    writeFile(file(memo, today), "---\ntime: 09:30\n---\n\nnewer");
    announce();
    EXPECT_TRUE(index.rebuildIfDiskChanged());
    EXPECT_THAT(bodies(), ElementsAre("newer"));
  }
}

TEST_F(SearchIndexTest, WriterOvertakesASignature) {
  Memo memo = write(today, "old");
  (void)bodies();
  files.at(Call::list, context.paths.dayFolder(today), [&] {
    memo.body = "written meanwhile";
    store.updateMemo(memo, today, {});
    index.indexMemo(memo, today);
  });
  EXPECT_FALSE(index.rebuildIfDiskChanged());
  EXPECT_THAT(bodies(), ElementsAre("written meanwhile"));
  files.at(Call::list, context.paths.dayFolder(today), [&] { index.invalidateCache(); });
  writeFile(file(memo, today), "changed");
  EXPECT_FALSE(index.rebuildIfDiskChanged()) << "nothing left to drop";
}

TEST_F(SearchIndexTest, ReadersShareOneBuild) {
  const Memo memo = write(today, "a");
  std::atomic<int> builds = 0;
  std::future<std::vector<std::string>> second;
  files.at(Call::open, file(memo, today), [&] {
    files.at(Call::list, folder.path(), [&] { ++builds; });
    second = std::async(std::launch::async, [&] { return bodies(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  });
  EXPECT_THAT(bodies(), ElementsAre("a"));
  EXPECT_THAT(second.get(), ElementsAre("a"));
  EXPECT_EQ(builds, 0);
}

TEST_F(SearchIndexTest, FirstAnswerWaitsForNoFilter) {
  write(today, "第一个答案");
  std::promise<void> answered;
  JobPool busy(1);
  busy.submit([&](const std::stop_token&) { answered.get_future().wait(); });
  SearchIndex fresh(context, busy);
  EXPECT_EQ(fresh.search("答案", 1).size(), 1U);
  EXPECT_FALSE(fresh.isFiltered());
  answered.set_value();
  while (!fresh.isFiltered()) std::this_thread::yield();
  fresh.indexMemo(write(today, "新来的"), today);
  EXPECT_EQ(fresh.search("新来", 1).size(), 1U);
}

TEST_F(SearchIndexTest, WarmsUpInTheBackgroundOrGoesMeanwhile) {
  const Memo memo = write(today, "a");
  std::promise<void> done;
  index.warmUp([&] { done.set_value(); });
  done.get_future().wait();
  fs::remove(file(memo, today));
  EXPECT_THAT(bodies(), ElementsAre("a"));
  for (int i = 0; i < 20; ++i) SearchIndex(context, jobs).warmUp([] {});
}

TEST_F(SearchIndexTest, ManyThreadsAtOnce) {
  std::vector<Memo> memos;
  for (int i = 0; i < 4; ++i) memos.push_back(write(today, "memo"));
  std::vector<std::jthread> threads;
  for (std::size_t i = 0; i < 4; ++i)
    threads.emplace_back([&, i] {
      for (int round = 0; round < 50; ++round) {
        EXPECT_EQ(index.search("MEMO", 50).size(), 4U);
        index.indexMemo(memos[i], today);
        if (round % 8 == 0) index.invalidateCache();
        EXPECT_FALSE(index.rebuildIfDiskChanged());
        EXPECT_EQ(index.allTags().size(), 0U);
      }
    });
}

}  // namespace
}  // namespace nomely::test
