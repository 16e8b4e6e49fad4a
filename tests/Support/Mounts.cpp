#include "Support/Mounts.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <unistd.h>

#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

[[noreturn]] void failWith(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// Without privileges of its own a process has them inside a user namespace.
bool unshareMounts() {
  if (::unshare(CLONE_NEWNS) == 0) return true;
  const auto user = std::to_string(::geteuid());
  const auto group = std::to_string(::getegid());
  if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  writeFile("/proc/self/setgroups", "deny");
  writeFile("/proc/self/uid_map", "0 " + user + " 1");
  writeFile("/proc/self/gid_map", "0 " + group + " 1");
  return true;
}

void run(const std::string& command) {
  if (std::system(("PATH=$PATH:/sbin:/usr/sbin; exec 2>&1; " + command).c_str()) == 0) return;
  errno = EIO;
  failWith(command);
}

}  // namespace

std::optional<std::string> takePrivateMounts() {
  try {
    if (!unshareMounts()) failWith("unshare");
    if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) failWith("mount");
    return std::nullopt;
  } catch (const std::exception& error) {
    return std::string("mounting is not permitted here: ") + error.what();
  }
}

Mount::Mount(const Source& source, fs::path folder) : folder_(std::move(folder)) {
  if (source.type == "ext4")  // with a loop device that goes with the mount
    run("mount -n -t ext4 -o loop " + source.device + " " + folder_.string());
  else if (::mount("none", folder_.c_str(), source.type.c_str(), 0, source.options.c_str()) != 0)
    failWith("mount " + source.type);
}

Mount::~Mount() {
  if (mounted_) ::umount2(folder_.c_str(), MNT_DETACH);
}

void Mount::makeReadOnly() {
  if (::mount("none", folder_.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) != 0)
    failWith("remount");
}

void Mount::unmount() {
  if (::umount2(folder_.c_str(), 0) != 0) failWith("umount");
  mounted_ = false;
}

void makeExt4(const fs::path& image, std::uintmax_t size) {
  writeFile(image, "");
  fs::resize_file(image, size);
  run("mkfs.ext4 -q " + image.string());
}

void cutPower(const fs::path& folder) {
  constexpr unsigned long shutdownRequest = _IOR('X', 125, std::uint32_t);
  std::uint32_t withoutFlushingTheJournal = 2;
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const int failed = ::ioctl(descriptor, shutdownRequest, &withoutFlushingTheJournal);
  ::close(descriptor);
  if (failed != 0) failWith("EXT4_IOC_SHUTDOWN");
}

}  // namespace nomely::test
