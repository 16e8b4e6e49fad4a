#pragma once

#include "Core/Query/SearchIndex.h"
#include "Core/Service/MemoService.h"
#include "Support/StoreFixture.h"

namespace nomely::test {

// The service on an empty root, with an index that nobody keeps in step by hand. What the index
// holds is compared with the disk at the end of every test.
class ServiceTest : public StoreTest {
 protected:
  void SetUp() override { (void)index.allMemoEntries(); }
  void TearDown() override { EXPECT_EQ(listed(index), listed(SearchIndex(context, jobs))); }

  static std::vector<std::string> listed(SearchIndex& index) {
    std::vector<std::string> all;
    for (const MemoEntry& entry : index.allMemoEntries())
      all.push_back(entry.date.string() + "/" + std::to_string(entry.memo->seqNumber) + " " +
                    entry.memo->memoId.value_or("-") + " " + entry.memo->body);
    return all;
  }
  static std::vector<std::string> listed(SearchIndex&& index) { return listed(index); }

  [[nodiscard]] std::filesystem::path fileOf(std::int64_t seqNumber) const {
    return context.paths.memoFile(today, seqNumber);
  }
  [[nodiscard]] Memo read(std::int64_t seqNumber) const {
    return store.memoStore().read(today, seqNumber).value();
  }
  [[nodiscard]] std::vector<std::string> pastOf(const Memo& memo) const {
    std::vector<std::string> bodies;
    for (const VersionEntry& version :
         service.versions().listVersions(today, memo.seqNumber, memo.memoId))
      bodies.push_back(version.memo.body);
    return bodies;
  }

  JobPool jobs{1};
  SearchIndex index{context, jobs};
  MemoService service{context};
  Day today = day("2026-03-01");
};

}  // namespace nomely::test
