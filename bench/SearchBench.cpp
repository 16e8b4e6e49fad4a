#include <algorithm>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <malloc.h>
#include <sys/stat.h>

#include "Core/Query/SearchIndex.h"
#include "Core/Storage/DayStore.h"
#include "bench/Comparison.h"
#include "bench/LargeRoot.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

namespace fs = std::filesystem;

const LargeRoot& root() {
  return rootInMemory();
}

JobPool& pool() {
  static JobPool jobs;
  return jobs;
}

// An index that is built, and what it took to hold it.
struct BuiltIndex {
  std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
  SearchIndex index{contextFor(root().folder), pool()};
  double memoryRatio = [this] {
    (void)index.search("热身", 1);
    while (!index.isFiltered()) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const std::size_t after = mallinfo2().uordblks + mallinfo2().hblkhd;
    return static_cast<double>(after - before) / static_cast<double>(root().summary.memoBytes);
  }();
};

BuiltIndex& built() {
  static BuiltIndex index;
  return index;
}

constexpr std::size_t threadsOfFloor = 2;

Steps buildSteps() {
  static std::unique_ptr<SearchIndex> index;
  (void)root();
  return {.floor = [](std::size_t) { readAndParse(root(), threadsOfFloor); },
          .ours =
              [](std::size_t) {
                // No search: after that the filters would be made beside the next step.
                index = std::make_unique<SearchIndex>(contextFor(root().folder), pool());
                index->forEachEntry([](const MemoEntry&) { return false; });
              },
          .tidy = [] { index.reset(); }};
}

Steps signatureSteps() {
  (void)built();
  return {
      .floor =
          [](std::size_t) {
            pool().parallelFor(root().days.size(), [](std::size_t i) {
              forEachMemoFile(root().days[i], [](const char* name) {
                struct stat info {};
                if (::stat(name, &info) != 0) throw std::runtime_error("unreadable memo");
                benchmark::DoNotOptimize(info);
              });
            });
          },
      .ours =
          [](std::size_t) {
            if (built().index.rebuildIfDiskChanged()) throw std::runtime_error("changed");
          },
  };
}

// The whole program, as someone would search the folder without an index.
void ripgrep(const std::string& word) {
  if (!searchWithRipgrep(word, root().folder)) throw Skipped("no rg");
}

void registerSearch(const std::string& what, const std::string& query, std::size_t atLeast) {
  registerComparison({.what = "search " + what,
                      .prepare =
                          [=] {
                            if (built().index.search(query, 50).size() < atLeast)
                              throw std::runtime_error("finds too little");
                            return Steps{.ours = [=](std::size_t) {
                              auto found = built().index.search(query, 50);
                              benchmark::DoNotOptimize(found);
                            }};
                          },
                      .goal = {.perSecond = 50}});
}

// An index that is built and has no filters yet: the first search is what has them made. In `note`,
// the slowest of the searches that come while they are.
Steps unfilteredSteps() {
  static std::unique_ptr<SearchIndex> index;
  const auto renew = [] {
    while (index && !index->isFiltered()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    index = std::make_unique<SearchIndex>(contextFor(root().folder), pool());
    index->forEachEntry([](const MemoEntry&) { return false; });
  };
  const auto search = [] {
    auto found = index->search("爨龘", 50);
    benchmark::DoNotOptimize(found);
  };
  using Clock = std::chrono::steady_clock;
  using Milliseconds = std::chrono::duration<double, std::milli>;
  renew();
  search();
  Milliseconds slowest{0};
  const auto begun = Clock::now();
  while (!index->isFiltered()) {
    const auto before = Clock::now();
    search();
    slowest = std::max<Milliseconds>(slowest, Clock::now() - before);
  }
  const Milliseconds window = Clock::now() - begun;
  renew();
  return {.ours = [=](std::size_t) { search(); },
          .tidy = renew,
          .note = fmt::format("filters {:.0f} ms later, slowest search till then {:.1f} ms",
                              window.count(), slowest.count())};
}

Steps patchSteps() {
  const DayStore store(contextFor(root().folder));
  auto day = std::make_shared<Day>(store.listAllDates().back());
  auto memo = std::make_shared<Memo>(store.listMemos(*day).front());
  memo->seqNumber = 900;
  (void)built();
  return {.ours =
              [=](std::size_t) {
                built().index.indexMemo(*memo, *day);
                built().index.removeMemo(*day, memo->seqNumber);
              },
          .units = 2,
          .note = fmt::format("memory {:.2f} of the files' bytes", built().memoryRatio)};
}

}  // namespace

void registerSearching() {
  registerComparison({.what = "build the index (floor: read, YAML events)",
                      .prepare = buildSteps,
                      .goal = {.ratio = 1.7}});
  registerComparison({.what = "search before there are filters",
                      .prepare = unfilteredSteps,
                      .goal = {.perSecond = 50},
                      .turns = 5});
  registerComparison({.what = "disk signature (floor: list and stat)",
                      .prepare = signatureSteps,
                      .goal = {.ratio = 1.5}});
  registerSearch("a rare word", "囹圄", 1);
  registerSearch("a common word", "今天", 50);
  registerSearch("one character", "的", 50);
  registerSearch("a Latin word in the other case", "ZYZZYVA", 1);
  registerSearch("three words", "今天 读书 电影", 1);
  registerComparison({.what = "a word that is nowhere (floor: ripgrep)",
                      .prepare =
                          [] {
                            ripgrep("爨龘");
                            (void)built();
                            return Steps{.floor = [](std::size_t) { ripgrep("爨龘"); },
                                         .ours =
                                             [](std::size_t) {
                                               auto found = built().index.search("爨龘", 50);
                                               benchmark::DoNotOptimize(found);
                                             }};
                          },
                      .goal = {.ratio = 1.0 / 30}});
  registerComparison(
      {.what = "patch the index", .prepare = patchSteps, .goal = {.perSecond = 1000}});
}

}  // namespace nomely::bench
