#include "bench/Workspace.h"

#include <cerrno>
#include <cstdlib>
#include <memory>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Platform/Files/FileError.h"

namespace nomely::bench {
namespace {

namespace fs = std::filesystem;

class Folder {
 public:
  explicit Folder(const fs::path& parent) {
    std::string pattern = parent / "nomely-bench-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) throw FileError("新建文件夹", parent, errno);
    path_ = pattern;
  }
  ~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  [[nodiscard]] const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

}  // namespace

const fs::path& workspace() {
  static const Folder folder([] {
    const char* const chosen = std::getenv("NOMELY_BENCH_FOLDER");
    return chosen != nullptr ? fs::path(chosen) : programFolder();
  }());
  return folder.path();
}

const std::optional<fs::path>& memoryWorkspace() {
  constexpr const char* place = "/dev/shm";
  static const std::unique_ptr<Folder> folder =
      fs::is_directory(place) ? std::make_unique<Folder>(place) : nullptr;
  static const std::optional<fs::path> path = folder ? std::optional(folder->path()) : std::nullopt;
  return path;
}

fs::path programFolder() {
  return fs::read_symlink("/proc/self/exe").parent_path();
}

StoreContext contextFor(const fs::path& root) {
  static const SystemClock clock;
  return {{root}, FileManager(posixFileSystem()), clock};
}

const std::vector<MemoryFile>& filesInMemory() {
  static const std::vector<MemoryFile> files = [] {
    std::vector<MemoryFile> made;
    visitCorpus({.memos = 3000}, [&](const CorpusMemo& memo) {
      made.push_back({memo, MemoFrontmatterParser::serialize(memo.frontmatter, memo.body)});
    });
    return made;
  }();
  return files;
}

const MemoryFile& fileInMemory(std::size_t turn) {
  return filesInMemory()[turn % filesInMemory().size()];
}

double bytesInStep() {
  std::size_t bytes = 0;
  for (const MemoryFile& file : filesInMemory()) bytes += file.content.size();
  return static_cast<double>(bytes) * filesInStep / static_cast<double>(filesInMemory().size());
}

}  // namespace nomely::bench
