#include <array>
#include <memory>
#include <stdexcept>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "AI/Summaries/AIMonthlySummarizer.h"
#include "bench/Comparison.h"
#include "bench/LargeRoot.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

void readFile(const char* name) {
  static std::array<char, 1 << 20> buffer;
  const int file = ::open(name, O_RDONLY | O_CLOEXEC);
  const ssize_t size = ::read(file, buffer.data(), buffer.size());
  ::close(file);
  if (size < 0) throw std::runtime_error("unreadable memo");
}

Steps corpusSteps() {
  const LargeRoot& root = rootInMemory();
  const std::string year = root.days[root.days.size() / 2].filename().string().substr(0, 4);
  const auto memos = std::make_shared<const MemoService>(contextFor(root.folder));
  const auto notes = [=] {
    return AIMonthlySummarizer(*memos).collectNotesForYear(std::stoi(year), {});
  };
  return {.floor =
              [=, &root](std::size_t) {
                for (const auto& day : std::filesystem::directory_iterator(root.folder))
                  if (day.path().filename().string().starts_with(year))
                    forEachMemoFile(day.path(), readFile);
              },
          .ours =
              [=](std::size_t) {
                const std::string corpus = NoteCorpus::text(notes());
                benchmark::DoNotOptimize(corpus.data());
              },
          .note = fmt::format("{} notes", notes().size())};
}

}  // namespace

void registerSummaries() {
  registerComparison({.what = "a year's notes for a summary (floor: bare reads of its files)",
                      .prepare = corpusSteps,
                      .goal = {.ratio = 2.0}});
}

}  // namespace nomely::bench
