#include "Support/TemporaryFolder.h"

#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include <stdlib.h>
#include <unistd.h>

namespace nomely::test {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder(const fs::path& parent) {
  std::string pattern = (parent / "nomely-test-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

fs::path quickParent() {
  const fs::path memory = "/dev/shm";
  return ::access(memory.c_str(), W_OK | X_OK) == 0 ? memory : fs::temp_directory_path();
}

void writeFile(const fs::path& file, const std::string& content) {
  fs::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream << content;
  if (!stream.flush()) throw std::runtime_error("could not write " + file.string());
}

std::string readFile(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error("could not read " + file.string());
  std::ostringstream content;
  content << stream.rdbuf();
  return content.str();
}

Tree treeOn(const fs::path& folder) {
  Tree tree;
  for (const auto& entry : fs::recursive_directory_iterator(folder))
    tree[entry.path().lexically_relative(folder).string() + (entry.is_directory() ? "/" : "")] =
        entry.is_regular_file() ? readFile(entry.path()) : std::string();
  return tree;
}

std::string treeOf(const fs::path& folder) {
  std::string text;
  for (const auto& [name, content] : treeOn(folder)) text += name + "\n" + content + "\n";
  return text;
}

}  // namespace nomely::test
