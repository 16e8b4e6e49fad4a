#include <algorithm>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "Browser/MonthOverviewStore.h"
#include "Core/Query/SearchIndex.h"
#include "Core/Storage/AttachmentManager.h"
#include "Core/Storage/DayStore.h"
#include "Export/HTMLExporter.h"
#include "bench/Comparison.h"
#include "bench/LargeRoot.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t exportedMemos = 10'000;
constexpr std::uint64_t pictureBytes = 200'000'000;

const fs::path& pagesFolder() {
  static const fs::path folder = [] {
    fs::path made = memoryWorkspace().value_or(workspace()) / "pages";
    (void)writeCorpus({.memos = exportedMemos, .mediaBytes = pictureBytes}, made / "root");
    return made;
  }();
  return folder;
}

// The page as a file of its own, made durable. Returns its bytes.
std::size_t writePage(const std::vector<MemoEntry>& entries, const StoreContext& context) {
  const AttachmentManager attachments(context);
  const HTMLExporter::Selection selection{
      entries.size(), [&](const auto& visit) { std::ranges::for_each(entries, visit); }};
  std::size_t bytes = 0;
  context.files.writeAtomically(pagesFolder() / "page.html", [&](const FileManager::Sink& sink) {
    HTMLExporter::writePage(selection, attachments, context.clock, [&](std::string_view piece) {
      bytes += piece.size();
      sink(piece);
    });
  });
  return bytes;
}

// As many bytes of nothing in particular.
void writeBare(std::size_t bytes) {
  static const std::string block(std::size_t{1} << 20U, 'x');
  const int file =
      ::open((pagesFolder() / "bare").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  for (std::size_t left = bytes; file >= 0 && left > 0;) {
    const ssize_t count = ::write(file, block.data(), std::min(left, block.size()));
    if (count < 0) throw std::runtime_error("can't write");
    left -= static_cast<std::size_t>(count);
  }
  if (file < 0 || ::fsync(file) != 0 || ::close(file) != 0) throw std::runtime_error("can't write");
}

Steps exporting() {
  const StoreContext context = contextFor(pagesFolder() / "root");
  auto entries = std::make_shared<std::vector<MemoEntry>>();
  const DayStore store(context);
  for (const Day day : store.listAllDates())
    for (Memo& memo : store.listMemos(day))
      entries->push_back({day, std::make_shared<const Memo>(std::move(memo))});
  const std::size_t bytes = writePage(*entries, context);
  return {.floor = [=](std::size_t) { writeBare(bytes); },
          .ours = [=](std::size_t) { (void)writePage(*entries, context); },
          .bytes = static_cast<double>(bytes),
          .note = fmt::format("{} memos", entries->size())};
}

using Month = std::pair<int, unsigned>;

Month monthOf(const MemoEntry& entry) {
  const auto civil = entry.date.civil();
  return {static_cast<int>(civil.year()), static_cast<unsigned>(civil.month())};
}

Steps overview() {
  static JobPool jobs;
  static SearchIndex index(contextFor(rootInMemory().folder), jobs);
  auto entries = std::make_shared<const std::vector<MemoEntry>>(index.allMemoEntries());
  std::map<Month, std::size_t> counts;
  for (const MemoEntry& entry : *entries) ++counts[monthOf(entry)];
  const auto fullest =
      *std::ranges::max_element(counts, {}, [](const auto& c) { return c.second; });
  const auto [year, month] = fullest.first;
  return {.floor =
              [=](std::size_t) {
                auto count = std::ranges::count(*entries, fullest.first, monthOf);
                benchmark::DoNotOptimize(count);
              },
          .ours =
              [=](std::size_t) {
                auto made = MonthOverviewStore::compute(year, month, *entries);
                benchmark::DoNotOptimize(made);
              },
          .note = fmt::format("{} memos in the month", fullest.second)};
}

}  // namespace

void registerPages() {
  registerComparison({.what = "export html, 10,000 memos (floor: bare writing)",
                      .prepare = exporting,
                      .turns = 5});
  registerComparison({.what = "month among 100,000 memos (floor: finding its memos)",
                      .prepare = overview,
                      .goal = {.millisecondsBeyond = 20}});
}

}  // namespace nomely::bench
