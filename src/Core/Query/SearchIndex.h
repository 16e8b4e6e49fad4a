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
#include "Core/Query/SearchResult.h"
#include "Core/Query/TagUse.h"
#include "Core/Storage/StoreContext.h"
#include "Platform/Concurrency/JobGroup.h"
#include "Platform/Concurrency/JobPool.h"

namespace nomely {

struct EntryTags {
  Day date;
  std::vector<std::string> tags;
};

// Keeps every memo in memory, newest first, so that lists and searches never touch the disk. The
// first reader builds it, each write of this process updates it, and rebuildIfDiskChanged drops it
// when another program has changed the files.
//
// Safe on any thread. Readers see one state from first to last and hold no lock meanwhile; only one
// of them builds, and the others wait for it. Calls do not throw for files that can't be read:
// those memos are left out. The destructor waits for the background jobs that the index started.
class SearchIndex {
 public:
  // `jobs` must outlive the index. More threads than cores help while files are not yet in the
  // system's cache.
  SearchIndex(StoreContext context, JobPool& jobs);
  SearchIndex(const SearchIndex&) = delete;
  SearchIndex& operator=(const SearchIndex&) = delete;

  // The newest memos that contain every word of `query`, at most `limit` (0 counts as 1). Blanks
  // separate words; a word that begins with "#" is looked for in tags alone.
  [[nodiscard]] std::vector<SearchResult> search(std::string_view query, std::size_t limit);

  [[nodiscard]] std::vector<MemoEntry> allMemoEntries();
  // Calls `visit` with each of these entries, without a copy of the list, until it returns false.
  void forEachEntry(const std::function<bool(const MemoEntry&)>& visit);

  // All tags, hidden ones included, the most recently used first.
  [[nodiscard]] std::vector<TagUse> allTags();
  [[nodiscard]] std::vector<EntryTags> allEntryTags();

  // To be called after a memo file was written, or removed. For every write that passes the gate
  // the index does so itself.
  void indexMemo(Memo memo, Day date);
  void removeMemo(Day date, std::int64_t seqNumber);
  // To be called after many files changed: drops the cache.
  void invalidateCache();
  // Compares the stamps of all memo files with those of the cache. Where they differ, reads the
  // days that they are of anew, or drops the cache when those are many; returns whether they did.
  bool rebuildIfDiskChanged();

  // Whether the next reader finds it built.
  [[nodiscard]] bool isBuilt() const { return cached() != nullptr; }
  // Whether the Bloom filters of the present cache are ready. Searches without them find the same,
  // only slower.
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
  // Memos of these days, which ascend; null stands for a day without any.
  [[nodiscard]] MemoCache::Days readDays(const std::vector<Day>& days,
                                         DiskSignature& signature) const;
  [[nodiscard]] Cache cached() const;
  // Starts a background job that makes the cache's Bloom filters, once for each cache.
  void makeFilters(const Cache& cache);
  // Applies `change` to the cache if there is one, and brings the file's stamp up to date. `memo`
  // is what the file holds by then; null: there is none.
  void patch(Day date, std::int64_t seqNumber, const Memo* memo,
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
