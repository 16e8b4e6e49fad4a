#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "Core/Query/MemoEntry.h"
#include "Core/Query/MemoFilter.h"
#include "Core/Query/SearchQuery.h"
#include "Core/Query/SearchResult.h"
#include "Core/Query/SizedEntry.h"
#include "Core/Query/TagUse.h"
#include "Core/Storage/StoreContext.h"
#include "Platform/Concurrency/JobPool.h"

namespace nomely {

// Reads memos straight from the day folders, one day after another, for programs that run once:
// what a SearchIndex would tell, without the time and the memory that building one takes. What was
// found is handed on while the rest is still being read, and memory does not grow with the root.
//
// Several threads read; every call back runs on the caller's. A missing root holds nothing. Calls
// throw FileError when the root can't be listed and CancellationError when asked to stop.
class RootScan {
 public:
  enum class Order { newestFirst, oldestFirst };
  // A memo file that can't be read as a memo, or a day's folder that can't be listed.
  struct Unreadable {
    std::filesystem::path file;
    std::string reason;
  };
  // False ends the scan.
  using Visit = std::function<bool(const MemoEntry&)>;
  using VisitResult = std::function<bool(SearchResult&&)>;

  explicit RootScan(StoreContext context, std::stop_token stop = {});

  // Called once for each such file or folder that was come across, in the order of the scan.
  std::function<void(const Unreadable&)> onUnreadable;
  // Called with the share done, 0 to 1, after each day.
  std::function<void(double share)> progress;

  // The memos that match. Within a day the locked come first, then the pinned, then the others,
  // each as timelines order them. Order::oldestFirst is the reverse of all that.
  void forEach(const MemoFilter& filter, Order order, const Visit& visit);

  // Those with exactly that tag, oldest day first, the highest number of a day first. A file whose
  // bytes already rule the tag out is not looked into further, nor told of when it can't be read.
  void forEachTagged(const std::string& tag, const Visit& visit);

  // What SearchIndex::search finds and in its order, or the reverse of that, without the memos that
  // the filter does not hold. A file whose bytes already rule out a hit is not looked into further,
  // nor told of when it can't be read.
  void search(const SearchQuery& query, const MemoFilter& filter, Order order,
              const VisitResult& visit);

  // What SearchIndex::allTags tells.
  [[nodiscard]] std::vector<TagUse> allTags();

  // Of the memos with recordings that match, the `most` with the largest ones, largest first.
  [[nodiscard]] std::vector<SizedEntry> audioBySize(MemoFilter filter, std::size_t most);

 private:
  [[nodiscard]] std::vector<Day> days(const MemoFilter& filter, Order order) const;
  // Calls `take` with what `make(day, memo file)` gave for the files of each day, until it returns
  // false. `make` runs on any thread.
  template <typename Item, typename Make, typename Take>
  void forEachDay(const MemoFilter& filter, Order order, const Make& make, const Take& take);

  StoreContext context_;
  std::stop_token stop_;
  std::unique_ptr<JobPool> jobs_;
};

}  // namespace nomely
