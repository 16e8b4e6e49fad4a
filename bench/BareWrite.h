#pragma once

#include <string>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

namespace nomely::bench {

// The least that a durable replacement of a file takes. False on any failure.
inline bool bareWrite(const std::string& folder, const std::string& name, std::string_view bytes) {
  const std::string temporary = folder + "/.bare.tmp";
  const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (file < 0) return false;
  const bool written =
      ::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
      ::fsync(file) == 0;
  ::close(file);
  if (!written || ::rename(temporary.c_str(), (folder + "/" + name).c_str()) != 0) return false;
  const int directory = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory < 0) return false;
  const bool durable = ::fsync(directory) == 0;
  ::close(directory);
  return durable;
}

}  // namespace nomely::bench
