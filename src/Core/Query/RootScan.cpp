#include "Core/Query/RootScan.h"

#include <algorithm>
#include <memory>
#include <thread>
#include <tuple>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Query/DayReader.h"
#include "Platform/Cancellation.h"
#include "Platform/Concurrency/InOrder.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

// Besides the caller's. More than the cores: while files are not yet in the system's cache, most of
// the threads wait.
std::size_t helpers() {
  constexpr std::size_t readsUnderWay = 4;
  return std::max<std::size_t>(readsUnderWay, std::thread::hardware_concurrency()) - 1;
}

bool orderedInList(const Memo& left, const Memo& right) {
  const auto rank = [](const Memo& memo) { return std::tuple(memo.lockedOnTop, memo.pinned); };
  return rank(left) != rank(right) ? rank(left) > rank(right) : orderedBeforeInDay(left, right);
}

template <typename Item>
struct DayItems {
  std::vector<Item> items;
  std::vector<RootScan::Unreadable> unreadable;
};

// A file of a day as it was read, not yet looked into.
struct MemoBytes {
  DayReader& reader;
  const std::string& name;
  std::string_view bytes;

  [[nodiscard]] Memo parsed() const { return reader.parsed(name, bytes); }
  [[nodiscard]] Memo parsedHeader() const { return reader.parsedHeader(name, bytes); }
};

template <typename Item, typename Make>
DayItems<Item> readDay(const DiskPaths& paths, DayReader& reader, Day day, const Make& make) {
  DayItems<Item> found;
  try {
    for (const DirectoryEntry& entry : reader.open(day)) {
      if (!DayReader::memoNumber(entry.name)) continue;
      try {
        if (const auto content = reader.read(entry.name))
          if (auto item = make(day, MemoBytes{reader, entry.name, content->bytes}))
            found.items.push_back(std::move(*item));
      } catch (const Error& error) {
        found.unreadable.push_back({paths.dayFolder(day) / entry.name, error.what()});
      }
    }
  } catch (const FileError& error) {
    // A plain file under a day's name is nothing to report, nor a folder that has gone meanwhile.
    if (error.kind() != FileError::Kind::notADirectory && error.kind() != FileError::Kind::notFound)
      found.unreadable.push_back({paths.dayFolder(day), error.what()});
  }
  return found;
}

}  // namespace

RootScan::RootScan(StoreContext context, std::stop_token stop)
    : context_(std::move(context)),
      stop_(std::move(stop)),
      jobs_(std::make_unique<JobPool>(helpers())) {}

std::vector<Day> RootScan::days(const MemoFilter& filter, Order order) const {
  std::vector<Day> days;
  if (!context_.files.exists(context_.paths.rootURL)) return days;
  std::vector<DirectoryEntry> entries;
  context_.files.openFolder(context_.paths.rootURL)->list(entries);
  for (const DirectoryEntry& entry : entries)
    if (const auto day = Day::parse(entry.name); day && filter.mayHold(*day)) days.push_back(*day);
  std::ranges::sort(days);
  if (order == Order::newestFirst) std::ranges::reverse(days);
  return days;
}

template <typename Item, typename Make, typename Take>
void RootScan::forEachDay(const MemoFilter& filter, Order order, const Make& make,
                          const Take& take) {
  throwIfStopped(stop_);
  const std::vector<Day> all = days(filter, order);
  const auto newReader = [&] {
    return [&, reader = std::make_shared<DayReader>(context_)](std::size_t i) {
      return readDay<Item>(context_.paths, *reader, all[i], make);
    };
  };
  const auto takeDay = [&](std::size_t i, DayItems<Item>&& found) {
    throwIfStopped(stop_);
    if (order == Order::oldestFirst) std::ranges::reverse(found.unreadable);
    if (onUnreadable)
      for (const Unreadable& file : found.unreadable) onUnreadable(file);
    if (!take(all[i], std::move(found.items))) return false;
    if (progress) progress(static_cast<double>(i + 1) / static_cast<double>(all.size()));
    return true;
  };
  InOrder(all.size(), newReader, takeDay).run(*jobs_, helpers());
}

void RootScan::forEach(const MemoFilter& filter, Order order, const Visit& visit) {
  const auto make = [&](Day day, const MemoBytes& file) -> std::optional<Memo> {
    Memo memo = file.parsed();
    return filter.matches(day, memo) ? std::optional(std::move(memo)) : std::nullopt;
  };
  forEachDay<Memo>(filter, order, make, [&](Day day, std::vector<Memo>&& memos) {
    std::ranges::sort(memos, orderedInList);
    if (order == Order::oldestFirst) std::ranges::reverse(memos);
    return std::ranges::all_of(memos, [&](Memo& memo) {
      return visit({day, std::make_shared<const Memo>(std::move(memo))});
    });
  });
}

void RootScan::forEachTagged(const std::string& tag, const Visit& visit) {
  const auto make = [&](Day, const MemoBytes& file) -> std::optional<Memo> {
    if (file.bytes.find(tag) == std::string_view::npos &&
        !MemoFrontmatterParser::mayEscape(file.bytes))
      return std::nullopt;
    Memo memo = file.parsed();
    if (std::ranges::find(memo.tags, tag) == memo.tags.end()) return std::nullopt;
    return memo;
  };
  forEachDay<Memo>({}, Order::oldestFirst, make, [&](Day day, std::vector<Memo>&& memos) {
    std::ranges::sort(memos, std::greater(), &Memo::seqNumber);
    return std::ranges::all_of(memos, [&](Memo& memo) {
      return visit({day, std::make_shared<const Memo>(std::move(memo))});
    });
  });
}

void RootScan::search(const SearchQuery& query, const MemoFilter& filter, Order order,
                      const VisitResult& visit) {
  if (query.isEmpty()) return;
  const auto make = [&](Day day, const MemoBytes& file) -> std::optional<SearchResult> {
    if (!query.mayMatchFile(file.bytes)) return std::nullopt;
    const IndexedMemo memo(file.parsed());
    if (!filter.holds(day, memo.memo()) || !query.matches(memo.text())) return std::nullopt;
    return query.result(day, memo);
  };
  forEachDay<SearchResult>(filter, order, make, [&](Day, std::vector<SearchResult>&& results) {
    std::ranges::sort(results, std::greater(), [](const SearchResult& result) {
      return std::tie(result.time, result.seqNumber);
    });
    if (order == Order::oldestFirst) std::ranges::reverse(results);
    return std::ranges::all_of(results,
                               [&](SearchResult& result) { return visit(std::move(result)); });
  });
}

std::vector<TagUse> RootScan::allTags() {
  TagCounts counts;
  const auto make = [](Day, const MemoBytes& file) -> std::optional<Memo> {
    Memo memo = file.parsedHeader();
    return memo.tags.empty() ? std::nullopt : std::optional(std::move(memo));
  };
  forEachDay<Memo>({}, Order::newestFirst, make, [&](Day day, std::vector<Memo>&& memos) {
    std::ranges::sort(memos, orderedBeforeInDay);
    for (const Memo& memo : memos) counts.add(day, memo, memo.seqNumber);
    return true;
  });
  return std::move(counts).rows();
}

std::vector<SizedEntry> RootScan::audioBySize(MemoFilter filter, std::size_t most) {
  filter.audio = true;
  std::vector<SizedEntry> largest;  // a heap, the smallest of them first
  forEach(filter, Order::newestFirst, [&](const MemoEntry& entry) {
    largest.push_back({audioBytes(entry, context_), entry});
    std::ranges::push_heap(largest, isLarger);
    if (largest.size() > most) {
      std::ranges::pop_heap(largest, isLarger);
      largest.pop_back();
    }
    return true;
  });
  std::ranges::sort_heap(largest, isLarger);
  return largest;
}

}  // namespace nomely
