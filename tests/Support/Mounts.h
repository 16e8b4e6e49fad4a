#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace nomely::test {

// Gives this process mounts of its own, which go when it ends, and the right to mount tmpfs. For a
// child process, before it starts a thread. Returns why that isn't permitted here, if so.
[[nodiscard]] std::optional<std::string> takePrivateMounts();

// A mounted file system; unmounted when it is destroyed, at the latest when nobody uses it any
// more. Throws std::system_error.
class Mount {
 public:
  struct Source {
    std::string type;
    std::string device = "none";
    std::string options = {};
  };

  // `folder` must exist. With type "ext4", `device` is an image file.
  Mount(const Source& source, std::filesystem::path folder);
  ~Mount();
  Mount(const Mount&) = delete;
  Mount& operator=(const Mount&) = delete;

  void makeReadOnly();
  // Fails while somebody uses it.
  void unmount();

 private:
  std::filesystem::path folder_;
  bool mounted_ = true;
};

// Makes an ext4 file system in a file. Throws std::system_error where that is not possible.
void makeExt4(const std::filesystem::path& image, std::uintmax_t size);

// Ends the ext4 file system on which `folder` lies as a power cut would: what has not reached the
// disk never will, and every later call on it fails.
void cutPower(const std::filesystem::path& folder);

}  // namespace nomely::test
