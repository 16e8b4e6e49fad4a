#include "Core/Lifecycle/Backup/BackupSnapshot.h"

#include <algorithm>
#include <cerrno>
#include <vector>

#include <fmt/format.h>

#include "Core/Lifecycle/Backup/BackupError.h"
#include "Core/Lifecycle/Backup/BackupNames.h"
#include "Core/Lifecycle/Backup/BackupObstacles.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/Files/OpenFolder.h"
#include "Platform/System/Uuid.h"
#include "Platform/Text/Printable.h"

namespace nomely {
namespace {

using std::filesystem::path;

// Up to here reading a file and writing it into the pack takes less of the gate's time than a link
// to it, which has to reach the journal and to be removed again.
constexpr std::uint64_t heldAtMost = std::uint64_t{1} << 16;

constexpr unsigned ownerOnly = 0700;

[[noreturn]] void refuse(std::string_view reason, const path& name) {
  throw BackupError(BackupError::Kind::snapshotFailed,
                    fmt::format("{}：{}", reason, printable(name.native())));
}

bool isVanished(const FileError& error) {
  return error.kind() == FileError::Kind::notFound ||
         error.kind() == FileError::Kind::notADirectory;
}

}  // namespace

class BackupSnapshot::Walk {
 public:
  Walk(BackupSnapshot& snapshot, bool includesVersions, const BackupWork& work)
      : snapshot_(snapshot),
        fileSystem_(snapshot.files_.fileSystem()),
        scope_(fileSystem_, snapshot.root_, includesVersions),
        work_(work),
        pack_(fileSystem_, snapshot.folder_ / packName) {}

  static constexpr const char* packName = "pack";

  void run() {
    const std::unique_ptr<OpenFolder> root = fileSystem_.openFolder(snapshot_.root_);
    const std::vector<DirectoryEntry> entries = sorted(*root);
    std::size_t done = 0;
    for (const DirectoryEntry& entry : entries) {
      add(*root, snapshot_.root_, "", entry);
      ++done;
      if (work_.progress)
        work_.progress(static_cast<double>(done) / static_cast<double>(entries.size()));
    }
    pack_.finish();
  }

 private:
  [[nodiscard]] static std::vector<DirectoryEntry> sorted(OpenFolder& folder) {
    std::vector<DirectoryEntry> entries;
    folder.list(entries);
    std::ranges::sort(entries, {}, &DirectoryEntry::name);
    return entries;
  }

  // `within` is the parent relative to the root, with a "/" at its end unless it is the root.
  void add(OpenFolder& folder, const path& parent, const std::string& within,
           const DirectoryEntry& entry) {
    const std::string name = within + entry.name;
    if (scope_.leavesOut(name)) return;
    const path whole = parent / entry.name;
    if (const auto reason = BackupObstacles::reason(name, entry.type); !reason.empty())
      refuse(reason, whole);
    throwIfStopped(work_.stop);
    if (entry.type == FileType::directory)
      addFolder(whole, name + "/");
    else
      addFile(folder, whole, entry.name, name);
  }

  void addFolder(const path& whole, const std::string& name) {
    const auto attributes = fileSystem_.attributes(whole, LinkPolicy::noFollow);
    if (!attributes || attributes->type != FileType::directory) return;
    std::unique_ptr<OpenFolder> folder;
    std::vector<DirectoryEntry> entries;
    try {
      folder = fileSystem_.openFolder(whole);
      entries = sorted(*folder);
    } catch (const FileError& error) {
      if (!isVanished(error)) throw;
      return;
    }
    pack_.add(
        {.name = name, .permissions = attributes->permissions, .modified = attributes->modified},
        {});
    for (const DirectoryEntry& entry : entries) add(*folder, whole, name, entry);
  }

  void addFile(OpenFolder& folder, const path& whole, const std::string& fileName,
               const std::string& name) {
    std::optional<FileContent> content;
    try {
      content = folder.read(fileName, buffer_, heldAtMost);
    } catch (const FileError& error) {
      if (error.kind() == FileError::Kind::tooLarge) return addLarge(whole, name);
      if (!isVanished(error)) throw;
    }
    if (!content) return;
    if (content->attributes.type != FileType::regular)
      refuse("备份期间文件被换成了别的东西，请稍后重试", whole);
    pack_.add({.type = BackupPack::Type::held,
               .name = name,
               .permissions = content->attributes.permissions,
               .modified = content->attributes.modified,
               .size = content->bytes.size()},
              content->bytes);
    snapshot_.bytes_ += content->bytes.size();
  }

  void addLarge(const path& whole, const std::string& name) {
    const std::optional<FileAttributes> kept = keep(whole, snapshot_.asideFile(count_));
    if (!kept) return;
    pack_.add({.type = BackupPack::Type::aside,
               .name = name,
               .permissions = kept->permissions,
               .modified = kept->modified,
               .size = kept->size,
               .number = count_++},
              {});
    snapshot_.bytes_ += kept->size;
  }

  // Gives the work folder its own hold on the file's contents, the quickest way that there is.
  // Absent when the file is gone.
  [[nodiscard]] std::optional<FileAttributes> keep(const path& whole, const path& target) {
    if (!mayShare_)
      if (const auto linked = link(whole, target)) return *linked;
    const std::unique_ptr<File> source =
        fileSystem_.open(whole, FileSystem::OpenMode::read, LinkPolicy::noFollow);
    if (!source) return std::nullopt;
    FileAttributes attributes = source->attributes();
    std::unique_ptr<File> copy =
        fileSystem_.open(target, FileSystem::OpenMode::createNew, LinkPolicy::noFollow);
    if (mayShare_ && !copy->shareContents(*source)) {
      mayShare_ = false;
      copy.reset();
      fileSystem_.remove(target);
      return keep(whole, target);
    }
    if (!mayShare_) copy->copyContents(*source);
    attributes.size = copy->attributes().size;
    return attributes;
  }

  // Absent where there can be no link; absent in turn when the file is gone.
  [[nodiscard]] std::optional<std::optional<FileAttributes>> link(const path& whole,
                                                                  const path& target) {
    try {
      if (!fileSystem_.link(whole, target)) return std::nullopt;
    } catch (const FileError& error) {
      if (!isVanished(error)) throw;
      return std::optional<FileAttributes>();
    }
    // Of the link, as the name may stand for another file by this time.
    return fileSystem_.attributes(target, LinkPolicy::noFollow);
  }

  BackupSnapshot& snapshot_;
  FileSystem& fileSystem_;
  BackupObstacles scope_;
  const BackupWork& work_;
  BackupPack::Writer pack_;
  ReadBuffer buffer_;
  bool mayShare_ = true;
  std::uint64_t count_ = 0;  // of files aside
};

BackupSnapshot::BackupSnapshot(const FileManager& files, path root)
    : files_(files), root_(std::move(root)) {}

BackupSnapshot::~BackupSnapshot() {
  try {
    if (!folder_.empty()) files_.removeTree(folder_);
  } catch (const FileError&) {
    // Dead weight, which is found by its name later; what became of the archive matters more.
  }
}

void BackupSnapshot::take(bool includesVersions, const BackupWork& work) {
  makeFolder();
  Walk(*this, includesVersions, work).run();
}

void BackupSnapshot::makeFolder() {
  FileSystem& fileSystem = files_.fileSystem();
  const std::string name = BackupNames::workPrefix + Uuid::random().string();
  const path beside = root_.parent_path() / name;
  if (!fileSystem.isMountPoint(root_)) {
    try {
      folder_ = beside;
      fileSystem.makeDirectory(beside, ownerOnly);
      return;
    } catch (const FileError& error) {
      if (error.kind() != FileError::Kind::accessDenied &&
          error.kind() != FileError::Kind::readOnly)
        throw;
    }
  }
  files_.createDirectories(root_ / BackupNames::backups, ownerOnly);
  folder_ = root_ / BackupNames::backups / name;
  fileSystem.makeDirectory(folder_, ownerOnly);
}

path BackupSnapshot::asideFile(std::uint64_t number) const {
  return folder_ / fmt::format("{}", number);
}

void BackupSnapshot::visit(const Visitor& visitor) const {
  BackupPack::read(files_.fileSystem(), folder_ / Walk::packName,
                   [&](const BackupPack::Record& record, std::string_view contents) {
                     switch (record.type) {
                       case BackupPack::Type::folder:
                         return visitor.folder(record);
                       case BackupPack::Type::held:
                         return visitor.small(record, contents);
                       case BackupPack::Type::aside:
                         return visitor.large(record,
                                              [&](const Sink& sink) { produce(record, sink); });
                     }
                   });
}

void BackupSnapshot::produce(const BackupPack::Record& record, const Sink& sink) const {
  const path name = asideFile(record.number);
  const std::unique_ptr<File> file =
      files_.fileSystem().open(name, FileSystem::OpenMode::read, LinkPolicy::noFollow);
  if (!file) throw FileError("读取", name, ENOENT);
  std::string buffer(std::size_t{1} << 18, '\0');
  // A file that a link holds may have grown: what was added came after the moment of the snapshot.
  for (std::uint64_t left = record.size; left > 0;) {
    const std::span<char> room(
        buffer.data(), static_cast<std::size_t>(std::min<std::uint64_t>(left, buffer.size())));
    const std::size_t count = file->read(room);
    if (count == 0) return;
    sink(std::string_view(buffer.data(), count));
    left -= count;
  }
}

}  // namespace nomely
