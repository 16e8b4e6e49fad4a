#include <cstdlib>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <malloc.h>

#include "Core/Lifecycle/Backup/BackupManager.h"
#include "Core/Lifecycle/Backup/BackupSnapshot.h"
#include "bench/Comparison.h"
#include "bench/Corpus.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t memos = 100'000;
constexpr std::uint64_t mediaBytes = 300'000'000;
// A minute would not do for as many turns as others take.
constexpr std::size_t fewTurns = 2;

fs::path writtenRoot(const std::string& name, std::uint64_t count, std::uint64_t bytes) {
  fs::path root = workspace() / "backup" / name;
  (void)writeCorpus({.memos = count, .mediaBytes = bytes}, root);
  ::sync();
  return root;
}

// A diary of many years, on the disk.
const fs::path& diaryRoot() {
  static const fs::path root = writtenRoot("diary", memos, mediaBytes);
  return root;
}

void run(const std::string& command) {
  if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
}

void requireProgram(const std::string& name) {
  if (std::system(fmt::format("command -v {} >/dev/null", name).c_str()) != 0)
    throw Skipped("no " + name);
}

// Nothing that was made goes before the end: a large tree's removal, which ext4 does later, would
// slow whoever comes next. Each turn takes a name of its own.
fs::path freshName(const std::string& what) {
  static int count = 0;
  return workspace() / "backup" / fmt::format("{}-{}", what, ++count);
}

void makeArchive(const fs::path& root, const fs::path& destination) {
  BackupManager(contextFor(root), 3).createArchive(destination, ArchiveKind::manual, true, {});
}

Steps makingArchives() {
  requireProgram("zip");
  const fs::path root = diaryRoot();
  return {.floor =
              [=](std::size_t) {
                run(fmt::format("cd '{}' && zip -qr '{}' .", root.string(),
                                freshName("theirs").string() + ".zip"));
              },
          .ours = [=](std::size_t) { makeArchive(root, freshName("ours").string() + ".zip"); }};
}

Steps holdingTheGate() {
  const fs::path root = diaryRoot();
  const auto snapshots = std::make_shared<std::vector<std::unique_ptr<BackupSnapshot>>>();
  return {
      .floor =
          [=](std::size_t) {
            run(fmt::format("cp -a --reflink=auto '{}' '{}'", root.string(),
                            freshName("copy").string()));
          },
      .ours =
          [=](std::size_t) {
            snapshots->push_back(std::make_unique<BackupSnapshot>(contextFor(root).files, root));
            snapshots->back()->take(true, {});
          }};
}

Steps verifying() {
  requireProgram("unzip");
  const fs::path archive = freshName("verified").string() + ".zip";
  makeArchive(diaryRoot(), archive);
  return {
      .floor = [=](std::size_t) { run(fmt::format("unzip -tqq '{}'", archive.string())); },
      .ours =
          [=](std::size_t) { (void)BackupManager(contextFor(diaryRoot()), 3).verify(archive, {}); },
      .bytes = static_cast<double>(fs::file_size(archive))};
}

// Both from the archive to a folder that is on the disk whole. Ours proves it first.
Steps restoring() {
  requireProgram("unzip");
  const fs::path archive = freshName("restored").string() + ".zip";
  makeArchive(diaryRoot(), archive);
  return {.floor =
              [=](std::size_t) {
                const std::string folder = freshName("unzipped").string();
                run(fmt::format("unzip -qq '{}' -d '{}' && sync -f '{}'", archive.string(), folder,
                                folder));
              },
          .ours =
              [=](std::size_t) {
                (void)BackupManager(contextFor(freshName("root")), 3)
                    .restore(archive, SafetyCopy::skip, {});
              },
          .bytes = static_cast<double>(fs::file_size(archive))};
}

// Bytes of the line with that name in /proc/self/status.
double statusBytes(const std::string& name) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;)
    if (word == name + ":") {
      double kibibytes = 0;
      status >> kibibytes;
      return kibibytes * 1024;
    }
  throw Skipped("no " + name);
}

double memoryOfArchive(const fs::path& root) {
  constexpr const char* forgetPeak = "5";
  ::malloc_trim(0);
  std::ofstream("/proc/self/clear_refs") << forgetPeak;
  const double before = statusBytes("VmRSS");
  makeArchive(root, freshName("measured").string() + ".zip");
  return statusBytes("VmHWM") - before;
}

Steps remembering() {
  constexpr std::uint64_t part = 10;
  const fs::path small = writtenRoot("small", memos / part, mediaBytes / part);
  const auto memory = std::make_shared<double>(0);
  (void)memoryOfArchive(small);
  return {.floor = [=](std::size_t) { *memory = memoryOfArchive(small); },
          .ours = [=](std::size_t) { *memory = memoryOfArchive(diaryRoot()); },
          .bytesTaken = [=] { return *memory; }};
}

}  // namespace

void registerBackups() {
  registerComparison({.what = "backup, to zip -r",
                      .prepare = &makingArchives,
                      .goal = {.ratio = 0.5},
                      .turns = fewTurns});
  registerComparison({.what = "gate held by a backup, to cp -a",
                      .prepare = &holdingTheGate,
                      .goal = {.ratio = 0.25},
                      .turns = 3});
  registerComparison(
      {.what = "verifying an archive, to unzip -t", .prepare = &verifying, .goal = {.ratio = 1.2}});
  registerComparison({.what = "restoring, synced, to unzip and sync",
                      .prepare = &restoring,
                      .goal = {.ratio = 1.35},
                      .turns = fewTurns});
  registerComparison({.what = "memory: a backup of ten times as much",
                      .prepare = &remembering,
                      .goal = {},
                      .turns = 1});
}

}  // namespace nomely::bench
