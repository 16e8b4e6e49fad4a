#pragma once

#include <filesystem>
#include <map>
#include <string>

namespace nomely::test {

namespace fs = std::filesystem;

// What lies below some folder: contents by path relative to it. A folder's path ends in "/".
using Tree = std::map<std::string, std::string>;

// An empty folder that goes with everything in it when the test ends.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(
      const std::filesystem::path& parent = std::filesystem::temp_directory_path());
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// A parent for folders of tests that make thousands of files durable: in memory where the machine
// has that, else the usual one.
[[nodiscard]] std::filesystem::path quickParent();

// Plain reads and writes, with parents made, for setting up and looking at a folder.
void writeFile(const std::filesystem::path& file, const std::string& content);
[[nodiscard]] std::string readFile(const std::filesystem::path& file);
[[nodiscard]] Tree treeOn(const std::filesystem::path& folder);
// The tree as one text; two equal texts mean equal trees.
[[nodiscard]] std::string treeOf(const std::filesystem::path& folder);

}  // namespace nomely::test
