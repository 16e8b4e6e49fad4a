#include <algorithm>
#include <array>
#include <fstream>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include "Platform/Time/Clock.h"
#include "bench/Comparison.h"
#include "bench/LargeRoot.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

using std::filesystem::path;

constexpr std::uint64_t memosInRoot = 10'000;
constexpr const char* absentWord = "爨龘";
constexpr const char* commonWord = "今天";
constexpr const char* text = "今天在图书馆看完了那本书，觉得值得。#生活/读书";

// The exit status of a program that sees nothing of the user's, or -1. Its output goes nowhere.
int runProgram(const std::vector<std::string>& words) {
  std::vector<std::string> settings{"HOME=" + (workspace() / "home").string(), "LC_ALL=C.UTF-8",
                                    "PATH=/usr/bin:/bin"};
  std::vector<char*> arguments;
  std::vector<char*> environment;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  for (std::string& setting : settings) environment.push_back(setting.data());
  arguments.push_back(nullptr);
  environment.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  for (const int descriptor : {0, 1, 2})
    ::posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_RDWR, 0);
  pid_t process = 0;
  const int failed = ::posix_spawn(&process, arguments[0], &actions, nullptr, arguments.data(),
                                   environment.data());
  ::posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  if (failed != 0 || ::waitpid(process, &status, 0) != process || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

const path& root() {
  static const path made = [] {
    path folder = workspace() / "processes";
    (void)writeCorpus({.memos = memosInRoot}, folder);
    std::filesystem::create_directories(workspace() / "home");
    return folder;
  }();
  return made;
}

path todayFolder() {
  return DiskPaths{root()}.dayFolder(SystemClock().today());
}

void emptyToday() {
  std::filesystem::create_directories(todayFolder());
  for (const auto& entry : std::filesystem::directory_iterator(todayFolder()))
    std::filesystem::remove(entry);
}

bool addNote() {
  return runProgram({programFolder() / "nomely", "--root", root(), "add", text}) == 0 &&
         std::filesystem::exists(todayFolder() / "001.md");
}

bool addBare() {
  return runProgram({programFolder() / "nomely-bench-bare-write", todayFolder(), "001.md", text}) ==
         0;
}

Steps addSteps() {
  emptyToday();
  if (!addNote()) throw Skipped("this nomely has no `add`");
  emptyToday();
  const auto checked = [](bool (*run)()) {
    return [run](std::size_t) {
      if (!run()) throw std::runtime_error("program failed");
    };
  };
  return {.floor = checked(addBare), .ours = checked(addNote), .tidy = emptyToday};
}

void runReader(std::vector<std::string> words) {
  words.insert(words.begin(), {programFolder() / "nomely", "--root", rootOnDisk().folder});
  if (runProgram(words) != 0) throw std::runtime_error("program failed");
}

Steps listSteps() {
  // A day with memos, so that there is something to show.
  const std::string day = std::ranges::max(rootOnDisk().days).filename();
  return {.floor = [](std::size_t) { runReader({"--version"}); },
          .ours =
              [=](std::size_t) {
                runReader({"list", "--day", day});
              }};
}

Steps searchSteps() {
  if (!searchWithRipgrep(absentWord, rootOnDisk().folder)) throw Skipped("no rg");
  return {.floor = [](std::size_t) { (void)searchWithRipgrep(absentWord, rootOnDisk().folder); },
          .ours =
              [](std::size_t) {
                runReader({"search", absentWord});
              }};
}

Steps tagSteps() {
  constexpr std::size_t threads = 2;
  (void)rootOnDisk();
  return {.floor = [](std::size_t) { readAndParse(rootOnDisk(), threads); },
          .ours = [](std::size_t) { runReader({"tags"}); }};
}

// A reader that ends with what it finds among the newest memos.
void registerBrief(const std::string& what, const std::vector<std::string>& words) {
  registerComparison({.what = what,
                      .prepare =
                          [=] {
                            (void)rootOnDisk();
                            return Steps{.ours = [=](std::size_t) { runReader(words); }};
                          },
                      .goal = {.perSecond = 25}});
}

}  // namespace

void registerProcesses() {
  registerComparison({.what = "nomely add to 10,000 memos",
                      .prepare = addSteps,
                      .goal = {.millisecondsBeyond = 30}});
  registerComparison({.what = "nomely list, 100,000 (floor: --version)",
                      .prepare = listSteps,
                      .goal = {.perSecond = 20}});
  registerComparison({.what = "nomely search, nowhere in 100,000 (floor: rg)",
                      .prepare = searchSteps,
                      .goal = {.ratio = 0.8},
                      .turns = 7});
  registerBrief("nomely search, a common word, 100,000", {"search", commonWord});
  registerBrief("nomely list --all -n 20, 100,000", {"list", "--all", "-n", "20"});
  registerComparison({.what = "nomely tags, 100,000 (floor: read, YAML events)",
                      .prepare = tagSteps,
                      .goal = {.ratio = 1.5},
                      .turns = 5});
}

}  // namespace nomely::bench
