#include "Core/Safety/Course.h"

#include <array>

#include <fmt/format.h>

namespace nomely::test {

StoreContext contextAt(const fs::path& folder, FileSystem& files) {
  return {{folder / "root"}, FileManager(files), diary().clock};
}

Disk::Disk(const Tree& tree) : files(folder_.path(), tree) {
  fs::create_directory(folder_.path() / "root");
}

std::string momentOf(std::size_t number, const FaultyFileSystem::Call& call) {
  // Behind the folder that is the disk's.
  const std::string& path = call.path.native();
  const std::size_t root = path.find("/root");
  return fmt::format("call {}, {} {}", number, call.name,
                     root == std::string::npos ? path : path.substr(root + 1));
}

Course::Course(const Scenario& scenario) : oracle(scenario.before, run(scenario, *this)) {}

Tree Course::run(const Scenario& scenario, Course& course) {
  Disk disk(scenario.before);
  constexpr std::array lefts{std::pair(Left::all, "the process ends"),
                             std::pair(Left::durable, "the power goes"),
                             std::pair(Left::names, "the power goes, names survive")};
  FaultyFileSystem files(disk.files, {}, [&](const FaultyFileSystem::Call& call) {
    course.calls.push_back(call);
    for (const auto& [left, what] : lefts)
      course.cuts.try_emplace(
          disk.files.tree(left),
          fmt::format("{} before {}", what, momentOf(course.calls.size(), call)));
  });
  scenario.run(disk.context(files), disk.context(disk.files));
  for (const auto& [left, what] : lefts) {
    course.end[left] = disk.files.tree(left);
    course.cuts.try_emplace(course.end[left], fmt::format("{} after the last call", what));
  }
  return course.end[Left::all];
}

}  // namespace nomely::test
