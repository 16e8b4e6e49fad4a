#include "Core/Lifecycle/Backup/BackupCompression.h"

#include <algorithm>
#include <array>

#include <sys/stat.h>

#include "Core/Extensions/PathNames.h"
#include "Core/Lifecycle/Backup/BackupError.h"
#include "Core/Lifecycle/Backup/BackupNames.h"
#include "Core/Storage/MemoFile.h"
#include "Platform/Archive/ZipError.h"
#include "Platform/Archive/ZipWriter.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"

namespace nomely {
namespace {

using BackupPack::Record;

// Deflating these takes most of a backup's time and gains next to nothing.
constexpr std::array<std::string_view, 32> compressedKinds{
    "7z",   "aac",  "avif", "br",   "bz2", "docx", "epub", "flac", "gif", "gz",  "heic",
    "heif", "jpeg", "jpg",  "m4a",  "m4v", "mkv",  "mov",  "mp3",  "mp4", "oga", "ogg",
    "opus", "pdf",  "png",  "pptx", "rar", "webm", "webp", "xlsx", "xz",  "zip"};

ZipWriter::Compression compressionFor(const std::string& name) {
  return std::ranges::binary_search(compressedKinds, lowerCaseExtension(lastComponent(name)))
             ? ZipWriter::Compression::store
             : ZipWriter::Compression::deflate;
}

class Compression {
 public:
  Compression(File& target, std::uint64_t bytes, BackupManifest manifest, const BackupWork& work)
      : writer_(target), all_(bytes + 1), manifest_(std::move(manifest)), work_(work) {}

  void run(const BackupSnapshot& snapshot) {
    snapshot.visit(
        {.folder = [this](const Record& folder) { addFolder(folder); },
         .small = [this](const Record& file,
                         std::string_view contents) { addSmall(file, contents); },
         .large = [this](const Record& file,
                         const BackupSnapshot::Producer& produce) { addLarge(file, produce); }});
    writer_.add({BackupManifest::fileName, S_IFREG | 0600U, manifest_.createdAt}, manifest_.json(),
                ZipWriter::Compression::deflate);
    writer_.finish();
  }

 private:
  [[nodiscard]] static ZipWriter::Item itemOf(const Record& record, unsigned type) {
    constexpr unsigned usual = 0777;
    return {record.name, type | (record.permissions & usual), record.modified};
  }

  void addFolder(const Record& folder) { writer_.addFolder(itemOf(folder, S_IFDIR)); }

  void addSmall(const Record& file, std::string_view contents) {
    throwIfStopped(work_.stop);
    if (BackupNames::isNote(file.name)) checkNote(file.name, contents);
    writer_.add(itemOf(file, S_IFREG), contents, compressionFor(file.name));
    advance(file.size);
  }

  void addLarge(const Record& file, const BackupSnapshot::Producer& produce) {
    const bool isNote = BackupNames::isNote(file.name);
    const bool isHeld = isNote && file.size <= MemoFile::maxSize;
    std::string note;
    const auto producing = [&](const ZipWriter::Sink& sink) {
      produce([&](std::string_view piece) {
        throwIfStopped(work_.stop);
        if (isHeld) note += piece;
        sink(piece);
        advance(piece.size());
      });
    };
    writer_.add(itemOf(file, S_IFREG), file.size, producing, compressionFor(file.name));
    if (isNote) checkNote(file.name, note);
  }

  void checkNote(const std::string& name, std::string_view contents) {
    if (!BackupNames::isReadableNote(contents))
      manifest_.unreadableFiles.push_back(BackupNames::listed(name));
  }

  void advance(std::uint64_t bytes) {
    done_ += bytes;
    if (work_.progress) work_.progress(static_cast<double>(done_) / static_cast<double>(all_));
  }

  ZipWriter writer_;
  std::uint64_t all_;
  std::uint64_t done_ = 0;
  BackupManifest manifest_;
  const BackupWork& work_;
};

void keepToOwner(File& file) {
  try {
    file.setPermissions(0600);
  } catch (const FileError& error) {
    // Sticks and cards have no permissions to give.
    if (error.kind() != FileError::Kind::accessDenied &&
        error.kind() != FileError::Kind::unsupported)
      throw;
  }
}

}  // namespace

void compressBackup(const BackupSnapshot& snapshot, BackupManifest manifest, FileSystem& fileSystem,
                    const std::filesystem::path& target, const BackupWork& work) {
  const std::unique_ptr<File> file =
      fileSystem.open(target, FileSystem::OpenMode::createNew, LinkPolicy::noFollow);
  keepToOwner(*file);
  try {
    Compression(*file, snapshot.bytes(), std::move(manifest), work).run(snapshot);
  } catch (const ZipError& error) {
    throw BackupError(BackupError::Kind::zipFailed, error.status());
  }
  file->sync();
}

}  // namespace nomely
