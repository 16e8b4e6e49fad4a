#include "Support/Mounts.h"

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <linux/loop.h>
#include <sched.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Support/TemporaryFolder.h"

namespace nomely::test {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void failWith(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

class Descriptor {
 public:
  Descriptor(const fs::path& file, int flags) : value_(::open(file.c_str(), flags | O_CLOEXEC)) {
    if (value_ < 0) failWith(file.string());
  }
  ~Descriptor() {
    if (value_ >= 0) ::close(value_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int get() const { return value_; }
  int release() { return std::exchange(value_, -1); }

 private:
  int value_;
};

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

void makeFileSystem(const fs::path& image) {
  std::array words{std::string("mkfs.ext4"), std::string("-q"), image.string()};
  std::array arguments{words[0].data(), words[1].data(), words[2].data(),
                       static_cast<char*>(nullptr)};
  std::array<char*, 1> environment{nullptr};
  const fs::path program =
      fs::exists("/usr/sbin/mkfs.ext4") ? "/usr/sbin/mkfs.ext4" : "/sbin/mkfs.ext4";
  pid_t child = 0;
  errno = ::posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments.data(),
                        environment.data());
  if (errno != 0) failWith("mkfs.ext4");
  int status = 0;
  if (::waitpid(child, &status, 0) != child || status != 0) {
    errno = EIO;
    failWith("mkfs.ext4");
  }
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
  if (::mount(source.device.c_str(), folder_.c_str(), source.type.c_str(), 0,
              source.options.c_str()) != 0)
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

Ext4Image::Ext4Image(fs::path image, std::uintmax_t size) {
  writeFile(image, "");
  fs::resize_file(image, size);
  makeFileSystem(image);
  attach(image);
}

Ext4Image::~Ext4Image() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

void Ext4Image::attach(const fs::path& image) {
  const Descriptor control("/dev/loop-control", O_RDWR);
  const Descriptor file(image, O_RDWR);
  loop_config config{};
  config.fd = static_cast<decltype(config.fd)>(file.get());
  config.info.lo_flags = LO_FLAGS_AUTOCLEAR;
  for (;;) {
    const int number = ::ioctl(control.get(), LOOP_CTL_GET_FREE);
    if (number < 0) failWith("LOOP_CTL_GET_FREE");
    device_ = "/dev/loop" + std::to_string(number);
    Descriptor device(device_, O_RDWR);
    if (::ioctl(device.get(), LOOP_CONFIGURE, &config) == 0) {
      descriptor_ = device.release();
      return;
    }
    if (errno != EBUSY) failWith("LOOP_CONFIGURE");  // else another process was quicker
  }
}

void cutPower(const fs::path& folder) {
  constexpr unsigned long shutdownRequest = _IOR('X', 125, std::uint32_t);
  std::uint32_t withoutFlushingTheJournal = 2;
  const Descriptor descriptor(folder, O_RDONLY | O_DIRECTORY);
  if (::ioctl(descriptor.get(), shutdownRequest, &withoutFlushingTheJournal) != 0)
    failWith("EXT4_IOC_SHUTDOWN");
}

}  // namespace nomely::test
