#include <memory>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "Core/Query/SearchIndex.h"
#include "bench/Comparison.h"
#include "bench/LargeRoot.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

constexpr std::size_t turns = 3;

// Takes the contents of the memo files out of the system's cache. Their names and attributes stay:
// dropping those is the superuser's, and would slow all else that runs on the machine.
void forgetContents() {
  for (const auto& day : rootOnDisk().days)
    forEachMemoFile(day, [](const char* name) {
      const int file = ::open(name, O_RDONLY | O_CLOEXEC);
      (void)::posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
      ::close(file);
    });
}

struct Reader {
  explicit Reader(std::size_t threads) : jobs(threads) {}

  JobPool jobs;
  std::unique_ptr<SearchIndex> index = {};
};

Steps buildSteps(std::size_t threads) {
  const auto reader = std::make_shared<Reader>(threads - 1);  // the caller is one of them
  forgetContents();
  return {.floor = [=](std::size_t) { readAndParse(rootOnDisk(), threads); },
          .ours =
              [=](std::size_t) {
                reader->index =
                    std::make_unique<SearchIndex>(contextFor(rootOnDisk().folder), reader->jobs);
                reader->index->forEachEntry([](const MemoEntry&) { return false; });
              },
          .tidy =
              [=] {
                reader->index.reset();
                forgetContents();
              }};
}

}  // namespace

void registerColdReading() {
  for (const std::size_t threads : {2, 8})
    registerComparison({.what = fmt::format("build, files uncached, {} threads", threads),
                        .prepare = [=] { return buildSteps(threads); },
                        .goal = {.ratio = 1.7},
                        .turns = turns});
}

}  // namespace nomely::bench
