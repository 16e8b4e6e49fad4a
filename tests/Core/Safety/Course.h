#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "Core/Safety/Oracle.h"
#include "Core/Safety/Scenario.h"
#include "Support/FaultyFileSystem.h"
#include "Support/TemporaryFolder.h"

namespace nomely::test {

using Left = MemoryFileSystem::Left;

// Stores on the root in `folder`.
[[nodiscard]] StoreContext contextAt(const std::filesystem::path& folder, FileSystem& files);

// A disk in memory with a root, and a gate, of its own.
class Disk {
 public:
  explicit Disk(const Tree& tree);

  [[nodiscard]] StoreContext context(FileSystem& through) const {
    return contextAt(folder_.path(), through);
  }
  void perform(const Scenario& scenario) { scenario.run(context(files), context(files)); }

 private:
  TemporaryFolder folder_{quickParent()};  // in which the gate locks the real root

 public:
  MemoryFileSystem files;
};

// "before call 12, rename 2026-03-01/002.md".
[[nodiscard]] std::string momentOf(std::size_t number, const FaultyFileSystem::Call& call);

// A run that nothing disturbs.
struct Course {
  explicit Course(const Scenario& scenario);

  std::vector<FaultyFileSystem::Call> calls;
  // What the disk would hold had the process or the power gone before some call; with the first
  // such moment.
  std::map<Tree, std::string> cuts;
  std::map<Left, Tree> end;
  Oracle oracle;

 private:
  [[nodiscard]] static Tree run(const Scenario& scenario, Course& course);
};

}  // namespace nomely::test
