#include "AI/Voice/LockedRecording.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <string>
#include <string_view>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Core/Extensions/DateFormatters.h"
#include "Platform/Audio/MediaFile.h"
#include "Platform/Files/FileError.h"
#include "Platform/Files/FileManager.h"
#include "Platform/System/Uuid.h"

namespace nomely {
namespace {

constexpr std::string_view prefix = "voice_";
constexpr std::string_view extension = ".m4a";
// Of files that get their name once they are locked.
constexpr std::string_view hiddenPrefix = ".voice_";

std::filesystem::path hiddenIn(const std::filesystem::path& folder) {
  return folder / fmt::format("{}{}", hiddenPrefix, Uuid::random().compact());
}

bool isNamed(const Descriptor& file, const std::filesystem::path& path) {
  struct stat opened {};
  struct stat named {};
  return ::fstat(file.get(), &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

// No file when it is held by another, or gone by now.
Descriptor openLocked(const std::filesystem::path& path, int flags) {
  Descriptor file(::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | flags, 0600));
  if (file.get() < 0 && errno == ENOENT) return Descriptor();
  if (file.get() < 0) throw FileError("打开", path, errno);
  if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0 || !isNamed(file, path)) return Descriptor();
  return file;
}

// Somebody may take a file for left behind that isn't locked yet.
Descriptor createLocked(std::filesystem::path& path, const std::filesystem::path& folder) {
  for (;;) {
    path = hiddenIn(folder);
    if (Descriptor file = openLocked(path, O_CREAT | O_EXCL); file.get() >= 0) return file;
    if (errno == ENOLCK || errno == EOPNOTSUPP) throw FileError("锁定", path, errno);
  }
}

std::uint64_t bigEndian(std::string_view bytes) {
  std::uint64_t value = 0;
  for (const char byte : bytes) value = value << 8U | static_cast<unsigned char>(byte);
  return value;
}

// The box of the ISO base media format that begins there.
struct Box {
  std::string type;
  std::uint64_t size = 0;
};

std::optional<Box> boxAt(int file, std::uint64_t offset) {
  std::array<char, 16> head{};
  if (::pread(file, head.data(), head.size(), static_cast<off_t>(offset)) != std::ssize(head))
    return std::nullopt;
  const std::string_view bytes(head.data(), head.size());
  const std::uint64_t size = bigEndian(bytes.substr(0, 4));
  return Box{.type = std::string(bytes.substr(4, 4)),
             .size = size == 1 ? bigEndian(bytes.substr(8)) : size};
}

// The type of the first box with sound, or of the first that tells of some.
std::string firstSound(int file) {
  constexpr int most = 16;
  std::uint64_t offset = 0;
  for (int i = 0; i < most; ++i) {
    const auto box = boxAt(file, offset);
    if (!box || box->size < 8) return "";
    if (box->type == "moof" || box->type == "mdat") return box->type;
    offset += box->size;
  }
  return "";
}

}  // namespace

LockedRecording LockedRecording::create(const std::filesystem::path& folder, Moment now) {
  std::filesystem::path hidden;
  Descriptor file = createLocked(hidden, folder);
  const std::string stem =
      fmt::format("{}{}", prefix, DateFormatters::fileNameTimestamp.format(now));
  for (int number = 1;; ++number) {
    const std::string name = number == 1 ? fmt::format("{}{}", stem, extension)
                                         : fmt::format("{}_{}{}", stem, number, extension);
    try {
      posixFileSystem().rename(hidden, folder / name, Replacement::forbid);
    } catch (const FileError& error) {
      if (error.kind() == FileError::Kind::alreadyExists) continue;
      ::unlink(hidden.c_str());
      throw;
    }
    posixFileSystem().syncDirectory(folder);
    return {folder / name, std::move(file)};
  }
}

std::optional<LockedRecording> LockedRecording::tryLock(const std::filesystem::path& file) {
  Descriptor locked = openLocked(file, 0);
  if (locked.get() < 0) return std::nullopt;
  return LockedRecording(file, std::move(locked));
}

std::vector<LockedRecording> LockedRecording::leftBehind(const std::filesystem::path& folder) {
  const FileManager files(posixFileSystem());
  std::vector<LockedRecording> left;
  if (!files.exists(folder)) return left;
  for (const DirectoryEntry& entry : files.listAll(folder)) {
    if (entry.type != FileType::regular) continue;
    const bool isHidden = entry.name.starts_with(hiddenPrefix);
    if (!isHidden && entry.name.starts_with('.')) continue;
    auto recording = tryLock(folder / entry.name);
    if (recording && isHidden)
      recording->remove();
    else if (recording)
      left.push_back(std::move(*recording));
  }
  std::ranges::stable_sort(left, {}, &LockedRecording::begun);
  return left;
}

Moment LockedRecording::begun() const {
  constexpr std::size_t stampLength = std::string_view("2026-03-01_093005").size();
  const std::string name = path_.filename().string();
  if (name.starts_with(prefix))
    if (const auto told =
            DateFormatters::fileNameTimestamp.parse(name.substr(prefix.size(), stampLength)))
      return *told;
  const auto attributes = posixFileSystem().attributes(path_, LinkPolicy::noFollow);
  return attributes ? attributes->modified : Moment{};
}

bool LockedRecording::isEmpty() const {
  constexpr std::uint64_t mostOfHeader = 4096;
  const auto attributes = posixFileSystem().attributes(path_, LinkPolicy::noFollow);
  return (!attributes || attributes->size < mostOfHeader) && firstSound(descriptor()).empty();
}

void LockedRecording::makePlain(const std::stop_token& stop) {
  if (firstSound(descriptor()) != "moof") return;
  std::filesystem::path hidden;
  Descriptor plain = createLocked(hidden, path_.parent_path());
  try {
    MediaFile::remux(descriptor(), plain.get(), stop);
    posixFileSystem().rename(hidden, path_, Replacement::allow);
  } catch (...) {
    ::unlink(hidden.c_str());
    throw;
  }
  // Its lock was held before it had the name.
  file_ = std::move(plain);
  posixFileSystem().syncDirectory(path_.parent_path());
}

void LockedRecording::remove() const {
  FileManager(posixFileSystem()).removeFile(path_);
}

}  // namespace nomely
