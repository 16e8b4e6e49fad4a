#include "Platform/Files/InotifyWatches.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Platform/Files/FileSystem.h"
#include "Platform/System/Log.h"

namespace nomely {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostChanges = 4096;

// A file is told when its writer has closed it; one that got a second name is never closed.
constexpr std::uint32_t ofEntries = IN_CREATE | IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM |
                                    IN_DELETE | IN_ONLYDIR | IN_EXCL_UNLINK;
constexpr std::uint32_t ofFolderItself = IN_MOVE_SELF | IN_DELETE_SELF;
constexpr std::uint32_t folderIsElsewhere = ofFolderItself | IN_UNMOUNT | IN_IGNORED;

bool isHidden(std::string_view name) {
  return name.starts_with('.');
}

}  // namespace

void InotifyWatches::Seen::add(const fs::path& file) {
  if (isIncomplete) return;
  changed.insert(file.string());
  if (changed.size() < mostChanges) return;
  changed.clear();
  isIncomplete = true;
}

InotifyWatches::InotifyWatches(fs::path root, std::function<bool(const std::string&)> isWatched)
    : root_(std::move(root)),
      isWatched_(std::move(isWatched)),
      inotify_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
  if (inotify_.get() < 0) throw FileError("监听", root_, errno);
  // From here on a change of what the path names is told; what it names is looked up afterwards.
  watchName(root_);
  std::error_code failed;
  if (fs::path canonical = fs::canonical(root_, failed); !failed && canonical != root_) {
    root_ = std::move(canonical);
    watchName(root_);
  }
  Seen nothingYet;
  scan(nothingYet);
  if (names_.empty() && !identity_) throw FileError("监听", root_, ENOENT);
}

// One whose folder may not be listed does without: the root tells that it has been moved itself.
void InotifyWatches::watchName(const fs::path& path) {
  if (!path.has_relative_path()) return;
  const int watch = add(path.parent_path(), IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE |
                                                IN_ONLYDIR | ofFolderItself);
  if (watch >= 0) names_.push_back({watch, path.filename().string()});
}

int InotifyWatches::add(const fs::path& path, std::uint32_t mask) const {
  return ::inotify_add_watch(inotify_.get(), path.c_str(), mask);
}

void InotifyWatches::scan(Seen& seen) {
  // All from one descriptor, so that the watches are of one root whatever its path names meanwhile.
  // It is closed again: held open it would keep a disk from being unmounted.
  const Descriptor root(::open(root_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  struct stat status {};
  if (root.get() < 0 || ::fstat(root.get(), &status) != 0) {
    if (errno != ENOENT && errno != ENOTDIR) throw FileError("监听", root_, errno);
    seen.isRootTouched = identity_.has_value();
    return;
  }
  const FolderIdentity found{status.st_dev, status.st_ino};
  if (identity_ && identity_ != found) {
    seen.isRootTouched = true;
    return;
  }
  const fs::path path = fmt::format("/proc/self/fd/{}", root.get());
  rootWatch_ = add(path, ofEntries | ofFolderItself);
  if (rootWatch_ < 0) throw refusal(errno);
  identity_ = found;

  std::vector<std::string> names;
  for (DirectoryEntry& entry : posixFileSystem().list(path))
    if (entry.type == FileType::directory && isWatched_(entry.name))
      names.push_back(std::move(entry.name));
  std::ranges::sort(names, std::greater<>());
  forgetAllBut(names);
  const std::size_t before = watchOf_.size();
  isPartial_ = false;
  for (const std::string& name : names)
    if (!watchFolder(name, path / name) && isPartial_) break;
  if (watchOf_.size() > before) seen.isIncomplete = true;
}

// `names` in descending order.
void InotifyWatches::forgetAllBut(const std::vector<std::string>& names) {
  std::vector<std::string> gone;
  for (const auto& [name, watch] : watchOf_)
    if (!std::ranges::binary_search(names, name, std::greater<>())) gone.push_back(name);
  for (const std::string& name : gone) unwatch(name);
}

// False when there is no such folder, or no room for it.
bool InotifyWatches::watchFolder(const std::string& name, const fs::path& path) {
  const int watch = addWithinLimit(name, path);
  if (watch < 0) return false;
  if (const auto old = watchOf_.find(name); old != watchOf_.end() && old->second != watch)
    unwatch(name);
  watchOf_[name] = watch;
  folderOf_[watch] = name;
  return true;
}

int InotifyWatches::addWithinLimit(const std::string& name, const fs::path& path) {
  constexpr std::uint32_t mask = ofEntries | IN_DONT_FOLLOW;
  for (;;) {
    const int watch = add(path, mask);
    if (watch >= 0 || errno != ENOSPC) return watch;
    isPartial_ = true;
    tellOfLimit();
    const auto least = watchOf_.begin();
    if (least == watchOf_.end() || least->first >= name) return -1;
    unwatch(std::string(least->first));
  }
}

void InotifyWatches::unwatch(const std::string& name) {
  const auto found = watchOf_.find(name);
  if (found == watchOf_.end()) return;
  const auto folder = folderOf_.find(found->second);
  // Another name may have been given to the folder.
  if (folder != folderOf_.end() && folder->second == name) {
    ::inotify_rm_watch(inotify_.get(), found->second);
    folderOf_.erase(folder);
  }
  watchOf_.erase(found);
}

// Of an errno that speaks of the disk where there are no more watches.
FileError InotifyWatches::refusal(int errorNumber) const {
  if (errorNumber != ENOSPC) return {"监听", root_, errorNumber};
  tellOfLimit();
  return {"监听", root_, EMFILE};
}

// Once in a process.
void InotifyWatches::tellOfLimit() const {
  static std::atomic<bool> hasTold = false;
  if (hasTold.exchange(true)) return;
  Log::error(LogChannel::storage,
             "⚠️ FileEvents.watch: "
             "系统允许监听的文件夹数不够，较早日期的文件夹不受监听：{}。"
             "可用 sysctl fs.inotify.max_user_watches=1048576 提高",
             root_.string());
}

void InotifyWatches::read(Seen& seen) {
  alignas(inotify_event) std::array<char, 65536> buffer;
  const ssize_t length = ::read(inotify_.get(), buffer.data(), buffer.size());
  bool hasOverflowed = false;
  for (ssize_t at = 0; at < length;) {
    const auto& event = *reinterpret_cast<const inotify_event*>(&buffer[static_cast<size_t>(at)]);
    at += static_cast<ssize_t>(sizeof event + event.len);
    if ((event.mask & IN_Q_OVERFLOW) != 0)
      hasOverflowed = true;
    else
      take(event, event.len > 0 ? event.name : "", seen);
  }
  if (!hasOverflowed) return;
  seen.isIncomplete = true;
  scan(seen);
}

void InotifyWatches::retry(Seen& seen) {
  if (isPartial_) scan(seen);
}

void InotifyWatches::take(const inotify_event& event, std::string_view name, Seen& seen) {
  for (const Name& each : names_)
    if (each.watch == event.wd && (each.name == name || (event.mask & folderIsElsewhere) != 0))
      seen.isRootTouched = true;
  if (event.wd == rootWatch_) return takeOfRoot(event.mask, std::string(name), seen);
  const auto folder = folderOf_.find(event.wd);
  if (folder == folderOf_.end()) return;
  if ((event.mask & IN_IGNORED) != 0) {
    watchOf_.erase(folder->second);
    folderOf_.erase(folder);
  } else if ((event.mask & IN_ISDIR) == 0 && !name.empty() && !isHidden(name)) {
    seen.add(root_ / folder->second / name);
  }
}

void InotifyWatches::takeOfRoot(std::uint32_t mask, const std::string& name, Seen& seen) {
  if ((mask & folderIsElsewhere) != 0) seen.isRootTouched = true;
  if ((mask & IN_IGNORED) != 0) rootWatch_ = -1;
  if (name.empty() || isHidden(name)) return;
  if ((mask & IN_ISDIR) == 0) return seen.add(root_ / name);
  if (!isWatched_(name)) return;
  if ((mask & (IN_CREATE | IN_MOVED_TO)) != 0)
    folderCame(name, seen);
  else
    unwatch(name);
}

// Listed when its watch is set: what was written before stands there, what comes later is told.
void InotifyWatches::folderCame(const std::string& name, Seen& seen) {
  const fs::path folder = root_ / name;
  if (!watchFolder(name, folder)) return;
  try {
    for (const DirectoryEntry& entry : posixFileSystem().list(folder))
      if (entry.type != FileType::directory && !isHidden(entry.name)) seen.add(folder / entry.name);
  } catch (const FileError&) {
    seen.isIncomplete = true;  // it is gone again, or can't be read
  }
}

}  // namespace nomely
