#include <stdexcept>

#include "Core/Storage/DayStore.h"
#include "bench/BareWrite.h"
#include "bench/Comparison.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

const Day day = corpusEnd;
constexpr std::int64_t memosOfDay = 6;

Memo memoAt(std::size_t at, std::int64_t number) {
  Memo memo;
  static_cast<MemoFrontmatter&>(memo) = fileInMemory(at).memo.frontmatter;
  memo.body = fileInMemory(at).memo.body;
  memo.memoId = "memo_of_this_place";  // updates never change who stands there
  memo.seqNumber = number;
  return memo;
}

std::int64_t numberAt(std::size_t at) {
  return 1 + static_cast<std::int64_t>(at) % memosOfDay;
}

// A root with one day, and the usual number of memos in it.
DayStore usualDay(const std::filesystem::path& folder) {
  DayStore store(contextFor(folder / "root"));
  for (std::int64_t number = 1; number <= memosOfDay; ++number)
    store.memoStore().write(memoAt(static_cast<std::size_t>(number), number), day);
  return store;
}

std::filesystem::path bareFolder(const std::filesystem::path& parent) {
  std::filesystem::path folder = parent / "bare" / day.string();
  std::filesystem::create_directories(folder);
  return folder;
}

// Writes the turn's file under a number: each turn another, or always that of the next memo.
template <typename Number>
Steps::Step bareStep(const std::filesystem::path& parent, Number number) {
  return [folder = bareFolder(parent), number](std::size_t turn) {
    if (!bareWrite(folder, DiskPaths::memoFileName(number(turn)), fileInMemory(turn).content))
      throw std::runtime_error("bare write failed");
  };
}

Steps writing(const std::filesystem::path& folder) {
  return {.floor = bareStep(folder, numberAt),
          .ours = [store = usualDay(folder)](std::size_t turn) {
            store.memoStore().write(memoAt(turn, numberAt(turn)), day);
          }};
}

Steps updating(const std::filesystem::path& folder) {
  return {.floor = bareStep(folder, numberAt),
          .ours = [store = usualDay(folder)](std::size_t turn) {
            store.updateMemo(memoAt(turn, numberAt(turn)), day, std::nullopt);
          }};
}

Steps creating(const std::filesystem::path& folder) {
  const DayStore store = usualDay(folder);
  constexpr std::int64_t next = memosOfDay + 1;
  return {
      .floor = bareStep(folder, [](std::size_t) { return next; }),
      .ours =
          [store](std::size_t turn) {
            const Memo like = memoAt(turn, 0);
            (void)store.createMemo(day, {.body = like.body, .tags = like.tags, .mood = like.mood});
          },
      // A file that takes no other's place is quicker to make durable.
      .tidy =
          [file = store.paths().memoFile(day, next),
           bare = bareFolder(folder) / DiskPaths::memoFileName(next)] {
            std::filesystem::remove(file);
            std::filesystem::remove(bare);
          },
  };
}

using Prepare = Steps (*)(const std::filesystem::path& folder);

void onDisk(const std::string& what, Prepare prepare, const Goal& goal) {
  registerComparison({what, [prepare] { return prepare(workspace()); }, goal});
}

// Shows what the store itself takes.
void inMemory(const std::string& what, Prepare prepare) {
  const auto prepared = [prepare] {
    if (!memoryWorkspace()) throw Skipped("no file system in memory");
    return prepare(*memoryWorkspace());
  };
  registerComparison({what + ", in memory", prepared});
}

}  // namespace

void registerWriting() {
  // The floor is the bare sequence of temporary file, fsync, rename, fsync.
  onDisk("MemoStore::write", writing, {.ratio = 1.3, .perSecond = 1500});
  onDisk("DayStore::updateMemo", updating, {});
  onDisk("DayStore::createMemo", creating, {});
  inMemory("MemoStore::write", writing);
  inMemory("DayStore::updateMemo", updating);
  inMemory("DayStore::createMemo", creating);
}

}  // namespace nomely::bench
