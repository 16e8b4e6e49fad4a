#include "Core/Lifecycle/Backup/RestoreStaging.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <exception>
#include <set>
#include <string>
#include <thread>

#include <fmt/format.h>

#include "Core/Extensions/EngineNames.h"
#include "Core/Lifecycle/Backup/BackupError.h"
#include "Platform/Archive/ZipError.h"
#include "Platform/Cancellation.h"
#include "Platform/Files/FileError.h"
#include "Platform/System/Log.h"
#include "Platform/System/Uuid.h"
#include "Platform/Text/FoldedText.h"

namespace nomely {
namespace {

namespace fs = std::filesystem;

constexpr unsigned ownerOnly = 0700;
constexpr unsigned usualFolder = 0777;  // before the process's mask

BackupError refused(const std::string& reason) {
  return {BackupError::Kind::restoreFailed, reason};
}

BackupError indistinguishable(const fs::path& name) {
  return refused(fmt::format("备份中有此磁盘分不清的文件名：{}。请换一个区分大小写的磁盘再恢复",
                             name.string()));
}

unsigned permissionsOf(const ZipEntry& entry, unsigned ownersOwn) {
  constexpr unsigned plain = 0777;
  return (entry.mode & plain) | ownersOwn;
}

}  // namespace

RestoreStaging::RestoreStaging(const FileManager& files, const fs::path& parent)
    : files_(files), folder_(parent / (std::string(prefix) + Uuid::random().string())) {
  try {
    files_.fileSystem().makeDirectory(folder_, ownerOnly);
    probe();
  } catch (const FileError& error) {
    files_.removeTree(folder_);
    throw refused(fmt::format(
        "{}。恢复要在数据目录旁边先展开备份：请让上一级文件夹可写，或把备份解压到别处，用 --root "
        "指定",
        error.what()));
  }
}

RestoreStaging::~RestoreStaging() {
  try {
    files_.removeTree(folder_);
  } catch (const FileError& error) {
    Log::error(LogChannel::storage, "⚠️ RestoreStaging: {}", error.what());
  }
}

void RestoreStaging::probe() {
  FileSystem& fileSystem = files_.fileSystem();
  const fs::path first = folder_ / ".nomely-probe-a";
  const fs::path second = folder_ / ".nomely-probe-b";
  for (const fs::path& name : {first, second})
    usualPermissions_ =
        fileSystem.open(name, FileSystem::OpenMode::createNew, LinkPolicy::noFollow)
            ->attributes()
            .permissions;
  canExchange_ = fileSystem.exchange(first, second);
  foldsCase_ = files_.exists(folder_ / ".NOMELY-PROBE-A");
  for (const fs::path& name : {first, second}) fileSystem.remove(name);
}

void RestoreStaging::checkRoomFor(const ZipReader& zip, std::uint64_t bytes) const {
  constexpr double gigabyte = 1e9;
  if (const std::uint64_t room = files_.fileSystem().freeSpace(folder_); bytes > room)
    throw refused(fmt::format("磁盘空间不足：展开备份需要 {:.2f} GB，只剩 {:.2f} GB",
                              static_cast<double>(bytes) / gigabyte,
                              static_cast<double>(room) / gigabyte));
  if (!foldsCase_) return;
  std::set<std::string> names;
  for (const ZipEntry& entry : zip.entries())
    if (!names.insert(foldedText(entry.name)).second) throw indistinguishable(entry.name);
}

std::vector<const ZipEntry*> RestoreStaging::makeFolders(const ZipReader& zip) const {
  std::vector<const ZipEntry*> entries = zip.inFileOrder();
  std::set<fs::path> made{{}};
  const auto make = [&](const auto& self, const fs::path& name) -> void {
    if (!made.insert(name).second) return;
    self(self, name.parent_path());
    if (!files_.fileSystem().makeDirectory(folder_ / name, usualFolder))
      throw indistinguishable(name);
  };
  for (const ZipEntry* entry : entries) make(make, fs::path(entry->name).parent_path());
  std::erase_if(entries, [&](const ZipEntry* entry) {
    if (entry->isFolder() && entry->mode != 0)
      files_.setPermissions(folder_ / entry->name, permissionsOf(*entry, ownerOnly));
    return entry->isFolder();
  });
  return entries;
}

void RestoreStaging::unpackFile(ZipReader::Cursor& zip, const ZipEntry& entry) const {
  constexpr unsigned ownersOwn = 0600;
  try {
    const auto file = files_.fileSystem().open(
        folder_ / entry.name, FileSystem::OpenMode::createNew, LinkPolicy::noFollow);
    zip.read(entry, [&](std::string_view piece) {
      while (!piece.empty()) piece.remove_prefix(file->write(piece));
    });
    const unsigned permissions = permissionsOf(entry, ownersOwn);
    if (entry.mode != 0 && permissions != usualPermissions_) file->setPermissions(permissions);
    file->setModified(entry.modified);
  } catch (const ZipError&) {
    throw refused("解压失败");
  } catch (const FileError& error) {
    if (error.errorNumber() == EEXIST) throw indistinguishable(entry.name);
    throw;
  }
}

void RestoreStaging::unpack(const ZipReader& zip, const BackupWork& work) const {
  const std::vector<const ZipEntry*> entries = makeFolders(zip);
  constexpr std::size_t step = 256;         // neighbours for one thread
  constexpr std::size_t worthwhile = 1024;  // for a second thread
  std::atomic<std::size_t> next = 0;
  const auto unpackSome = [&](const auto& afterEach) {
    try {
      ZipReader::Cursor cursor(zip);
      for (std::size_t begin; (begin = next.fetch_add(step)) < entries.size();)
        for (std::size_t i = begin; i < std::min(begin + step, entries.size()); ++i) {
          throwIfStopped(work.stop);
          unpackFile(cursor, *entries[i]);
          afterEach(i + 1);
        }
    } catch (...) {
      next = entries.size();
      throw;
    }
  };
  std::exception_ptr failure;
  {
    std::jthread helper;
    if (entries.size() >= worthwhile)
      helper = std::jthread([&] {
        try {
          unpackSome([](std::size_t) {});
        } catch (...) {
          failure = std::current_exception();
        }
      });
    unpackSome([&](std::size_t count) {
      if (work.progress)
        work.progress(static_cast<double>(count) / static_cast<double>(entries.size()));
    });
  }
  if (failure) std::rethrow_exception(failure);
}

void RestoreStaging::takeOver(const fs::path& source, const fs::path& name, bool skipsUnreadable,
                              const std::stop_token& stop) const {
  std::vector<DirectoryEntry> entries;
  try {
    entries = files_.listAll(source);
  } catch (const FileError& error) {
    if (!skipsUnreadable) throw;
    Log::error(LogChannel::storage, "⚠️ RestoreStaging.takeOver: {}", error.what());
    return;
  }
  files_.fileSystem().makeDirectory(folder_ / name, usualFolder);
  files_.setPermissions(
      folder_ / name, files_.attributes(source).value_or(FileAttributes{}).permissions | ownerOnly);
  for (const DirectoryEntry& entry : entries) {
    throwIfStopped(stop);
    if (entry.type == FileType::directory)
      takeOver(source / entry.name, name / entry.name, skipsUnreadable, stop);
    else if (entry.type == FileType::regular && !FileManager::isTemporaryName(entry.name) &&
             !EngineNames::isTemporary(entry.name))
      linkOrCopy(source / entry.name, folder_ / name / entry.name);
  }
}

void RestoreStaging::linkOrCopy(const fs::path& from, const fs::path& to) const {
  FileSystem& fileSystem = files_.fileSystem();
  if (fileSystem.link(from, to)) return;
  const auto source = fileSystem.open(from, FileSystem::OpenMode::read, LinkPolicy::noFollow);
  if (!source) throw FileError("复制", from, ENOENT);
  const auto copy = fileSystem.open(to, FileSystem::OpenMode::createNew, LinkPolicy::noFollow);
  copy->copyContents(*source);
  copy->copyMetadata(*source);
}

}  // namespace nomely
