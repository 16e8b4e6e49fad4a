#include "bench/LargeRoot.h"

#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Time/Day.h"
#include "bench/BareParse.h"
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

void readAndParse(const char* name) {
  const int file = ::open(name, O_RDONLY | O_CLOEXEC);
  struct stat info {};
  if (file < 0 || ::fstat(file, &info) != 0) throw std::runtime_error("unreadable memo");
  std::string content(static_cast<std::size_t>(info.st_size), '\0');
  if (::read(file, content.data(), content.size()) != info.st_size)
    throw std::runtime_error("unreadable memo");
  ::close(file);
  readEvents(headerOf(content));
}

bool searchWithRipgrep(const std::string& word, const fs::path& folder) {
  const std::string command =
      fmt::format("rg -F -e '{}' '{}' >/dev/null 2>&1", word, folder.string());
  const int status = std::system(command.c_str());
  return WIFEXITED(status) && WEXITSTATUS(status) <= 1;
}

}  // namespace nomely::bench
