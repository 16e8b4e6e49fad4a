#include "bench/LargeRoot.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <thread>

#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
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

void readFile(int folder, const char* name, std::vector<char>& buffer) {
  const int file = ::openat(folder, name, O_RDONLY | O_CLOEXEC);
  const ssize_t size = ::read(file, buffer.data(), buffer.size());
  ::close(file);
  if (size <= 0) throw std::runtime_error("unreadable memo");
  readEvents(headerOf({buffer.data(), static_cast<std::size_t>(size)}));
}

void readDay(const char* path, std::vector<char>& buffer) {
  const int folder = ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  alignas(dirent64) std::array<char, std::size_t{1} << 15> entries;
  ssize_t size = 0;
  while ((size = ::getdents64(folder, entries.data(), entries.size())) > 0)
    for (ssize_t at = 0; at < size;) {
      const auto& entry = *reinterpret_cast<const dirent64*>(entries.data() + at);
      at += entry.d_reclen;
      if (std::string_view(entry.d_name).ends_with(".md")) readFile(folder, entry.d_name, buffer);
    }
  ::close(folder);
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
  std::atomic<std::size_t> next{0};
  const auto work = [&] {
    std::vector<char> buffer(std::size_t{1} << 20);
    for (std::size_t i = next++; i < root.days.size(); i = next++)
      readDay(root.days[i].c_str(), buffer);
  };
  std::vector<std::jthread> others;
  for (std::size_t i = 1; i < threads; ++i) others.emplace_back(work);
  work();
}

bool searchWithRipgrep(const std::string& word, const fs::path& folder) {
  const std::string command =
      fmt::format("rg -F -e '{}' '{}' >/dev/null 2>&1", word, folder.string());
  const int status = std::system(command.c_str());
  return WIFEXITED(status) && WEXITSTATUS(status) <= 1;
}

}  // namespace nomely::bench
