#include <array>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <thread>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include "Platform/Time/Day.h"
#include "bench/BareParse.h"

// Reads every memo file of a root and has the library tell the events of its header, with as little
// besides as can be: files opened relative to their day's folder, one buffer a thread for all.

namespace {

void readFile(int folder, const char* name, std::vector<char>& buffer) {
  const int file = ::openat(folder, name, O_RDONLY | O_CLOEXEC);
  const ssize_t size = ::read(file, buffer.data(), buffer.size());
  ::close(file);
  if (size <= 0) throw std::runtime_error("unreadable memo");
  nomely::bench::readEvents(
      nomely::bench::headerOf({buffer.data(), static_cast<std::size_t>(size)}));
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

// nomely-bench-bare-read ROOT THREADS
int main(int count, char** words) {
  if (count != 3) return 2;
  std::vector<std::filesystem::path> days;
  for (const auto& entry : std::filesystem::directory_iterator(words[1]))
    if (nomely::Day::parse(entry.path().filename().string())) days.push_back(entry.path());
  std::atomic<std::size_t> next{0};
  const auto work = [&] {
    std::vector<char> buffer(std::size_t{1} << 20);
    for (std::size_t i = next++; i < days.size(); i = next++) readDay(days[i].c_str(), buffer);
  };
  std::vector<std::jthread> others;
  for (int left = std::atoi(words[2]); left > 1; --left) others.emplace_back(work);
  work();
}
