#include "Core/Query/SearchIndex.h"

#include <algorithm>
#include <iterator>
#include <ranges>
#include <span>
#include <thread>
#include <utility>

#include "Core/Query/SearchQuery.h"
#include "Core/Storage/MemoStore.h"
#include "Platform/Concurrency/InOrder.h"
#include "Platform/Error.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

std::shared_ptr<const MemoCache::DayMemos> readDay(DiskSignature::DayFiles& files) {
  MemoCache::Memos memos;
  const auto isMemo = [](const DirectoryEntry& entry) {
    return DayReader::memoNumber(entry.name).has_value();
  };
  memos.reserve(static_cast<std::size_t>(std::ranges::count_if(files.entries, isMemo)));
  for (std::size_t i = 0; i < files.entries.size(); ++i) {
    const std::string& name = files.entries[i].name;
    if (!isMemo(files.entries[i])) continue;
    try {
      const auto content = files.reader.read(name);
      if (!content) continue;  // gone since the folder was listed
      files.stamps[i] = FileStamp::of(content->attributes);
      memos.push_back(std::make_shared<IndexedMemo>(files.reader.parsed(name, content->bytes)));
    } catch (const Error& error) {
      Log::error(LogChannel::storage,
                 "⚠️ SearchIndex.build: 跳过无法解析的 memo 文件 {}：{}", name,
                 error.what());
    }
  }
  return MemoCache::sortedDay(files.day, std::move(memos));
}

// The stamp of the file if it holds that memo. What another program put there right after our own
// write gets none: the cache knows nothing of it, and it is to be noticed.
std::optional<FileStamp> stampOf(const Memo* memo, Day date, std::int64_t seqNumber,
                                 const StoreContext& context) {
  if (memo == nullptr) return std::nullopt;
  try {
    const auto stamp = FileStamp::of(context.paths.memoFile(date, seqNumber), context.files);
    const auto onDisk = MemoStore(context).read(date, seqNumber);
    return onDisk && isStoredAs(*onDisk, *memo) ? stamp : std::nullopt;
  } catch (const Error&) {
    return std::nullopt;
  }
}

// Searches `days`, appending at most `limit` results.
void searchDays(std::span<const std::shared_ptr<const MemoCache::DayMemos>> days,
                const SearchQuery& query, std::size_t limit, std::vector<SearchResult>& results) {
  for (const auto& day : days) {
    if (!query.mayMatch(*day)) continue;
    const std::vector<SearchableText>& texts = day->texts();
    for (std::size_t i = 0; i < texts.size(); ++i) {
      if (!query.matches(texts[i])) continue;
      results.push_back(query.result(day->date(), *day->memos()[i]));
      if (results.size() >= limit) return;
    }
  }
}

}  // namespace

SearchIndex::SearchIndex(StoreContext context, JobPool& jobs)
    : context_(std::move(context)),
      jobs_(jobs),
      background_(jobs),
      subscription_(context_.gate.changes().observe(
          {.written = [this](const Memo& memo, Day day) { indexMemo(memo, day); },
           .removed = [this](Day day, std::int64_t seqNumber) { removeMemo(day, seqNumber); },
           .manyChanged = [this] { invalidateCache(); }})) {}

SearchIndex::Cache SearchIndex::cached() const {
  const std::lock_guard lock(lock_);
  return cache_;
}

SearchIndex::Cache SearchIndex::ensureCache() {
  if (Cache cache = cached()) return cache;
  const std::lock_guard building(buildLock_);
  for (;;) {
    std::uint64_t noted = 0;
    {
      const std::lock_guard lock(lock_);
      if (cache_) return cache_;
      noted = generation_;
    }
    Built built = build();
    const std::lock_guard lock(lock_);
    // A writer that came meanwhile may have been missed: what was read is thrown away.
    if (generation_ != noted) continue;
    cache_ = std::move(built.cache);
    builtSignature_ = std::move(built.signature);
    return cache_;
  }
}

// Each file is stamped before it is read, so that a write in between makes the signature stale and
// not the cache wrong.
SearchIndex::Built SearchIndex::build() const {
  MemoCache::Days days;
  DiskSignature signature = DiskSignature::read(
      context_, jobs_,
      {.begin = [&](std::size_t count) { days.resize(count); },
       .day = [&](DiskSignature::DayFiles& files) { days[files.index] = readDay(files); }});
  std::ranges::reverse(days);
  return {std::make_shared<MemoCache>(std::move(days)), std::move(signature)};
}

void SearchIndex::patch(Day date, std::int64_t seqNumber, const Memo* memo,
                        const std::function<Cache(const MemoCache&)>& change) {
  const auto stamp = isBuilt() ? stampOf(memo, date, seqNumber, context_) : std::nullopt;
  Cache old;  // destroyed when the lock is free again
  const std::lock_guard lock(lock_);
  ++generation_;
  if (!cache_) return;
  old = std::exchange(cache_, change(*cache_));
  if (!builtSignature_) return;
  builtSignature_->set(date, DiskPaths::memoFileName(seqNumber), stamp);
}

void SearchIndex::indexMemo(Memo memo, Day date) {
  const std::int64_t seqNumber = memo.seqNumber;
  patch(date, seqNumber, &memo,
        [&](const MemoCache& cache) { return cache.with(std::move(memo), date); });
}

void SearchIndex::removeMemo(Day date, std::int64_t seqNumber) {
  patch(date, seqNumber, nullptr,
        [&](const MemoCache& cache) { return cache.without(date, seqNumber); });
}

void SearchIndex::invalidateCache() {
  Cache old;
  std::optional<DiskSignature> oldSignature;
  const std::lock_guard lock(lock_);
  ++generation_;
  old.swap(cache_);
  oldSignature.swap(builtSignature_);
}

bool SearchIndex::rebuildIfDiskChanged() {
  constexpr std::size_t mostDays = 64;  // more are read as quickly with all the rest
  Cache old;
  for (;;) {
    std::uint64_t noted = 0;
    {
      const std::lock_guard lock(lock_);
      if (!cache_) return false;
      noted = generation_;
    }
    const DiskSignature present = DiskSignature::read(context_, jobs_, {});
    std::vector<Day> days;
    {
      const std::lock_guard lock(lock_);
      if (generation_ != noted) continue;
      const auto differing = builtSignature_->differences(present, mostDays);
      if (!differing) {
        ++generation_;
        old.swap(cache_);
        builtSignature_.reset();
        return true;
      }
      if (differing->empty()) return false;
      days = *differing;
    }
    DiskSignature signature;
    MemoCache::Days memos = readDays(days, signature);
    const std::lock_guard lock(lock_);
    if (generation_ != noted) continue;
    ++generation_;
    old = std::exchange(cache_, cache_->withDays(days, std::move(memos)));
    builtSignature_->replaceDays(days, std::move(signature));
    return true;
  }
}

MemoCache::Days SearchIndex::readDays(const std::vector<Day>& days,
                                      DiskSignature& signature) const {
  MemoCache::Days memos(days.size());
  signature = DiskSignature::readDays(
      context_, jobs_, days,
      {.day = [&](DiskSignature::DayFiles& files) { memos[files.index] = readDay(files); }});
  return memos;
}

void SearchIndex::warmUp(std::function<void()> completion) {
  background_.submit(
      [this, completion = std::move(completion)](const std::stop_token&) {
        (void)ensureCache();
        completion();
      },
      JobPool::Priority::utility);
}

void SearchIndex::makeFilters(const Cache& cache) {
  if (!cache->claimFilters()) return;
  background_.submit(
      [cache](const std::stop_token& stop) {
        for (const auto& day : cache->days()) {
          if (stop.stop_requested()) return;
          day->makeFilter();
        }
      },
      JobPool::Priority::utility);
}

bool SearchIndex::isFiltered() const {
  const Cache cache = cached();
  return cache && std::ranges::all_of(cache->days(),
                                      [](const auto& day) { return day->filter() != nullptr; });
}

std::vector<SearchResult> SearchIndex::search(std::string_view text, std::size_t limit) {
  const SearchQuery query(text);
  std::vector<SearchResult> results;
  if (query.isEmpty()) return results;
  const Cache cache = ensureCache();
  constexpr std::size_t step = 128;  // days; some hundred microseconds without filters
  const std::span days(cache->days());
  const auto newSearcher = [&] {
    return [&](std::size_t i) {
      std::vector<SearchResult> found;
      searchDays(days.subspan(i * step, std::min(step, days.size() - i * step)), query, limit,
                 found);
      return found;
    };
  };
  const auto take = [&](std::size_t, std::vector<SearchResult>&& found) {
    const std::size_t room = std::max<std::size_t>(limit, 1) - results.size();
    std::ranges::move(found | std::views::take(room), std::back_inserter(results));
    return results.size() < limit;
  };
  InOrder((days.size() + step - 1) / step, newSearcher, take)
      .run(jobs_, std::max(1U, std::thread::hardware_concurrency()) - 1);
  makeFilters(cache);
  return results;
}

void SearchIndex::forEachEntry(const std::function<bool(const MemoEntry&)>& visit) {
  const Cache cache = ensureCache();
  cache->forEachMemo([&](Day date, const std::shared_ptr<const IndexedMemo>& indexed) {
    return visit({date, {indexed, &indexed->memo()}});
  });
}

std::vector<MemoEntry> SearchIndex::allMemoEntries() {
  std::vector<MemoEntry> entries;
  forEachEntry([&](const MemoEntry& entry) {
    entries.push_back(entry);
    return true;
  });
  return entries;
}

std::vector<TagUse> SearchIndex::allTags() {
  TagCounts counts;
  forEachEntry([&](const MemoEntry& entry) {
    counts.add(entry.date, *entry.memo, entry.memo->seqNumber);
    return true;
  });
  return std::move(counts).rows();
}

std::vector<EntryTags> SearchIndex::allEntryTags() {
  std::vector<EntryTags> all;
  forEachEntry([&](const MemoEntry& entry) {
    all.push_back({entry.date, entry.memo->tags});
    return true;
  });
  return all;
}

}  // namespace nomely
