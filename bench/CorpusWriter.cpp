#include <cerrno>
#include <chrono>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Core/Markdown/Frontmatter/MemoFrontmatterParser.h"
#include "Core/Storage/DiskPaths.h"
#include "Platform/Files/FileError.h"
#include "Platform/Files/FileManager.h"
#include "bench/Corpus.h"

namespace nomely::bench {
namespace {

using std::filesystem::path;

// A folder held open. Files go into it without being made durable one by one.
class Folder {
 public:
  explicit Folder(path name)
      : path_(std::move(name)),
        descriptor_(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (descriptor_ < 0) throw FileError("打开", path_, errno);
  }
  ~Folder() { ::close(descriptor_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  void write(const std::string& name, std::string_view bytes) const {
    const int file =
        ::openat(descriptor_, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) throw FileError("写入", path_ / name, errno);
    int failure = 0;
    while (!bytes.empty() && failure == 0) {
      const ssize_t count = ::write(file, bytes.data(), bytes.size());
      if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
      if (count <= 0 && errno != EINTR) failure = count < 0 ? errno : ENOSPC;
    }
    if (::close(file) != 0 && failure == 0) failure = errno;
    if (failure != 0) throw FileError("写入", path_ / name, failure);
  }

  // Makes everything on this folder's file system durable.
  void syncAll() const {
    if (::syncfs(descriptor_) != 0) throw FileError("写入", path_, errno);
  }

 private:
  path path_;
  int descriptor_;
};

// Hands out the bytes that the attachments have together: sizes vary, and the sum is exact.
class MediaBudget {
 public:
  explicit MediaBudget(const CorpusOptions& options) : bytesLeft_(options.mediaBytes) {
    if (bytesLeft_ == 0) return;
    visitCorpus(options, [&](const CorpusMemo& memo) { filesLeft_ += memo.media.size(); });
  }

  std::uint64_t take(Random& random) {
    if (filesLeft_ == 0) return 0;
    const std::uint64_t mean = bytesLeft_ / filesLeft_--;
    const std::uint64_t share =
        filesLeft_ == 0 ? bytesLeft_ : mean / 4 + mean / 1000 * random.below(1500);
    bytesLeft_ -= std::min(share, bytesLeft_);
    return share;
  }

 private:
  std::uint64_t bytesLeft_;
  std::uint64_t filesLeft_ = 0;
};

void prepareRoot(const path& folder) {
  const FileManager files(posixFileSystem());
  if (files.exists(folder) && !files.listAll(folder).empty())
    throw CorpusError(
        fmt::format("文件夹“{}”不是空的：语料只写入新文件夹或空文件夹", folder.string()));
  DiskPaths{folder}.createRoot(FileManager(posixFileSystem()));
}

class Writer {
 public:
  Writer(const CorpusOptions& options, path root)
      : seed_(options.seed), paths_{std::move(root)}, budget_(options) {}

  void write(const CorpusMemo& memo) {
    if (day_ != memo.day) open(memo.day);
    const std::string content = MemoFrontmatterParser::serialize(memo.frontmatter, memo.body);
    folder_->write(DiskPaths::memoFileName(memo.number), content);
    for (std::size_t i = 0; i < memo.media.size(); ++i) {
      Random random(seed_, mediaPurpose, summary_.attachments++);
      const std::uint64_t size = budget_.take(random);
      const std::string media = drawMedia(memo.media[i], size, random);
      folder_->write(memo.frontmatter.attachments[i], media);
      summary_.mediaBytes += media.size();
    }
    ++summary_.memos;
    summary_.memoBytes += content.size();
  }

  CorpusSummary finish() {
    Folder(paths_.rootURL).syncAll();
    return summary_;
  }

 private:
  static constexpr std::uint64_t mediaPurpose = 100;

  void open(Day day) {
    const path name = paths_.dayFolder(day);
    if (::mkdir(name.c_str(), 0777) != 0) throw FileError("新建文件夹", name, errno);
    folder_.emplace(name);
    day_ = day;
    ++summary_.days;
  }

  std::uint64_t seed_;
  DiskPaths paths_;
  MediaBudget budget_;
  std::optional<Day> day_;
  std::optional<Folder> folder_;
  CorpusSummary summary_;
};

}  // namespace

CorpusSummary writeCorpus(const CorpusOptions& options, const path& folder,
                          const std::function<void(std::uint64_t)>& progress) {
  prepareRoot(folder);
  Writer writer(options, folder);
  std::uint64_t written = 0;
  auto told = std::chrono::steady_clock::now();
  visitCorpus(options, [&](const CorpusMemo& memo) {
    writer.write(memo);
    ++written;
    if (!progress || written % 64 != 0) return;
    const auto now = std::chrono::steady_clock::now();
    if (now - told < std::chrono::milliseconds(200)) return;
    told = now;
    progress(written);
  });
  return writer.finish();
}

}  // namespace nomely::bench
