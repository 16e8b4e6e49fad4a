#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Query/DiskSignature.h"
#include "Core/Query/MemoCache.h"
#include "Core/Storage/StoreContext.h"
#include "Platform/Concurrency/JobGroup.h"
#include "Platform/Concurrency/JobPool.h"
#include "Platform/System/Uuid.h"

namespace nomely {

struct SearchResult {
  Uuid id = Uuid::random();  // fresh for each result of each search
  Day date;
  std::int64_t seqNumber = 0;
  std::string time;
  std::string body;
  std::vector<std::string> tags;
  std::string snippet;  // empty when only a tag explains the hit
};

struct TagUse {
  std::string tag;
  std::int64_t count = 0;
  std::string latestDate;  // of the newest memo that has it: "2026-03-05:000012"

  friend bool operator==(const TagUse&, const TagUse&) = default;
};

struct EntryTags {
  Day date;
  std::vector<std::string> tags;
};

// Every memo in memory, newest first, so that lists and searches never touch the disk. Built by the
// first reader, patched by what the stores of this process announce, dropped when the files turn
// out to have been changed by someone else.
//
// Safe on any thread. Readers see one state from first to last and hold no lock meanwhile; only one
// of them builds, and the others wait for it. Nothing here fails visibly: what can't be read is
// left out. The destructor waits for the jobs that the index began.
class SearchIndex {
 public:
  // `jobs` must outlive the index. More threads than cores help while files are not yet in the
  // system's cache.
  SearchIndex(StoreContext context, JobPool& jobs);
  SearchIndex(const SearchIndex&) = delete;
  SearchIndex& operator=(const SearchIndex&) = delete;

  // The newest memos in which every word of `query` is found, `limit` of them at most but always
  // one. Words are parted by blanks; one that begins with "#" is looked for in tags alone.
  [[nodiscard]] std::vector<SearchResult> search(std::string_view query, std::size_t limit);

  [[nodiscard]] std::vector<MemoEntry> allMemoEntries();
  // The same without a copy, until `visit` returns false.
  void forEachEntry(const std::function<bool(const MemoEntry&)>& visit);

  // The tag used last first. Hidden ones are among them.
  [[nodiscard]] std::vector<TagUse> allTags();
  [[nodiscard]] std::vector<EntryTags> allEntryTags();

  // After a memo file was written, or went away. The index calls these itself for every write that
  // passes the gate.
  void indexMemo(Memo memo, Day date);
  void removeMemo(Day date, std::int64_t seqNumber);
  // After many changed.
  void invalidateCache();
  // Drops the cache when the files are not those that it knows; returns whether it did.
  bool rebuildIfDiskChanged();

  // Whether the filters of the present cache are made. Searches find the same without.
  [[nodiscard]] bool isFiltered() const;

  // Builds on a background job unless it is built; `completion` runs on that job's thread, or not
  // at all when the index ends first.
  void warmUp(std::function<void()> completion);

 private:
  using Cache = std::shared_ptr<const MemoCache>;
  struct Built {
    Cache cache;
    DiskSignature signature;
  };

  // The cache, built if need be.
  [[nodiscard]] Cache ensureCache();
  [[nodiscard]] Built build() const;
  [[nodiscard]] Cache cached() const;
  // Makes the filters that later searches begin with on a background job, once for a cache.
  void makeFilters(const Cache& cache);
  // Applies `change` to the cache if there is one, and brings the file's stamp up to date.
  void patch(Day date, std::int64_t seqNumber,
             const std::function<Cache(const MemoCache&)>& change);

  StoreContext context_;
  JobPool& jobs_;

  std::mutex buildLock_;  // held by whoever builds; taken before lock_
  mutable std::mutex lock_;
  // Guarded by lock_:
  Cache cache_;
  std::optional<DiskSignature> builtSignature_;
  std::uint64_t generation_ = 0;  // raised by each change to the cache

  JobGroup background_;
  Subscription subscription_;  // ends before what it calls
};

}  // namespace nomely
