#include "bench/LargeRoot.h"

#include <cstdlib>
#include <stdexcept>

#include <fmt/format.h>

#include "Platform/Time/Day.h"
#include "bench/Workspace.h"

namespace nomely::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t memosInRoot = 100'000;

LargeRoot written(const fs::path& folder) {
  LargeRoot root{folder, writeCorpus({.memos = memosInRoot}, folder), {}};
  for (const auto& entry : fs::directory_iterator(folder))
    if (entry.is_directory() && Day::parse(entry.path().filename().string()))
      root.days.push_back(entry.path());
  return root;
}

}  // namespace

const LargeRoot& rootInMemory() {
  static const LargeRoot root = written(memoryWorkspace().value_or(workspace()) / "large");
  return root;
}

const LargeRoot& rootOnDisk() {
  static const LargeRoot root = [] {
    LargeRoot made = written(workspace() / "large-on-disk");
    ::sync();
    return made;
  }();
  return root;
}

void readAndParse(const LargeRoot& root, std::size_t threads) {
  const std::string command =
      fmt::format("'{}' '{}' {}", (programFolder() / "nomely-bench-bare-read").string(),
                  root.folder.string(), threads);
  if (std::system(command.c_str()) != 0) throw std::runtime_error("program failed");
}

bool searchWithRipgrep(const std::string& word, const fs::path& folder) {
  const std::string command =
      fmt::format("rg -F -e '{}' '{}' >/dev/null 2>&1", word, folder.string());
  const int status = std::system(command.c_str());
  return WIFEXITED(status) && WEXITSTATUS(status) <= 1;
}

}  // namespace nomely::bench
