#include "Core/Lifecycle/Backup/BackupArchive.h"

#include <algorithm>
#include <limits>

#include <fmt/format.h>
#include <sys/stat.h>

#include "Core/Extensions/PathNames.h"
#include "Core/Lifecycle/Backup/BackupNames.h"
#include "Core/Storage/MemoFile.h"
#include "Platform/Cancellation.h"
#include "Platform/Text/Printable.h"

namespace nomely {
namespace {

using Kind = BackupError::Kind;

// Runs a reading of the archive. What is wrong with it as a ZIP archive becomes verifyFailed.
template <typename Body>
auto verified(Body body) {
  try {
    return body();
  } catch (const ZipError& error) {
    throw BackupError(Kind::verifyFailed, error.status());
  }
}

[[noreturn]] void refuse(const std::string& reason) {
  throw BackupError(Kind::restoreFailed, reason);
}

void checkIdentity(const BackupManifest& manifest) {
  if (manifest.appName != "Nomely" || manifest.schemaVersion != 1 ||
      manifest.rootStyle != "contents")
    refuse("备份身份或格式版本不支持");
}

void checkTypes(const std::vector<ZipEntry>& entries) {
  for (const ZipEntry& entry : entries) {
    const bool isSafe = BackupNames::isSafe(entry.name);
    if (!isSafe || (entry.isFolder() && entry.size > 0)) refuse("备份含不安全路径或嵌套备份");
  }
  for (const ZipEntry& entry : entries) {
    const unsigned type = entry.mode & S_IFMT;
    if (type == S_IFLNK) refuse("备份包含符号链接，已停止恢复");
    const unsigned expected = entry.isFolder() ? S_IFDIR : S_IFREG;
    if (type != 0 && type != expected) refuse("备份包含特殊文件，已停止恢复");
  }
}

// No path may stand for two things.
void checkCollisions(const ZipReader& zip) {
  const auto refuseName = [](std::string_view name) {
    refuse(fmt::format("备份含重复或互相冲突的路径：{}", printable(name)));
  };
  const ZipEntry* previous = nullptr;
  std::string_view folder;
  for (const ZipEntry* entry : zip.byName()) {
    const std::string_view name = entry->name;
    if (previous != nullptr && previous->name == name) refuseName(name);
    previous = entry;
    // A folder's entry ends in "/", so that what its name is without it must be no file's.
    const std::string_view within = name.substr(0, name.rfind('/') + 1);
    if (within == folder) continue;
    folder = within;
    for (std::size_t slash = within.find('/'); slash != std::string_view::npos;
         slash = within.find('/', slash + 1))
      if (zip.find(within.substr(0, slash)) != nullptr) refuseName(within.substr(0, slash));
  }
}

}  // namespace

BackupArchive::BackupArchive(FileSystem& fileSystem, const std::filesystem::path& path)
    : zip_(verified([&] { return std::make_unique<ZipReader>(fileSystem, path); })) {}

BackupManifest BackupArchive::manifest() const {
  const ZipEntry* const entry = zip_->find(BackupManifest::fileName);
  if (entry == nullptr) throw BackupError::manifestNotFound();
  return BackupManifest::parse(verified([&] { return zip_->contents(*entry, MemoFile::maxSize); }));
}

BackupArchive::Contents BackupArchive::prove(const BackupWork& work) const {
  Contents contents;
  std::vector<const ZipEntry*> unreadable;
  verified([&] {
    zip_->checkStructure(work.stop);
    readAll(work, contents, unreadable);
  });
  contents.manifest = manifest();
  checkIdentity(contents.manifest);
  checkTypes(zip_->entries());
  checkCollisions(*zip_);

  std::vector<std::string> listed = contents.manifest.unreadableFiles;
  std::ranges::sort(listed);
  for (const ZipEntry* entry : unreadable)
    if (!std::ranges::binary_search(listed, BackupNames::listed(entry->name)))
      refuse(fmt::format("备份含无法读取的笔记：{}", printable(lastComponent(entry->name))));
  return contents;
}

void BackupArchive::readAll(const BackupWork& work, Contents& contents,
                            std::vector<const ZipEntry*>& unreadable) const {
  std::uint64_t all = 1;
  for (const ZipEntry& entry : zip_->entries()) all += entry.compressedSize;
  std::uint64_t done = 0;
  ZipReader::Cursor cursor(*zip_);
  std::string collected;
  for (const ZipEntry* entry : zip_->inFileOrder()) {
    throwIfStopped(work.stop);
    const bool isNote = BackupNames::isNote(entry->name);
    const bool isHeld = isNote && entry->size <= MemoFile::maxSize;
    bool isReadable = false;
    std::uint64_t given = 0;
    collected.clear();
    cursor.read(*entry, [&](std::string_view piece) {
      throwIfStopped(work.stop);
      given += piece.size();
      if (!isHeld) return;
      if (piece.size() == entry->size)
        isReadable = BackupNames::isReadableNote(piece);
      else
        collected += piece;
    });
    if (!collected.empty()) isReadable = BackupNames::isReadableNote(collected);
    if (isNote && isReadable) ++contents.notes;
    if (isNote && !isReadable) unreadable.push_back(entry);
    if (!entry->isFolder() && entry->name != BackupManifest::fileName) ++contents.files;
    contents.bytes += given;
    done += entry->compressedSize;
    if (work.progress) work.progress(static_cast<double>(done) / static_cast<double>(all));
  }
}

}  // namespace nomely
