#include "Core/Lifecycle/Backup/BackupPack.h"

#include <cerrno>
#include <cstring>

#include "Platform/Archive/FileWindow.h"
#include "Platform/Files/FileError.h"

namespace nomely::BackupPack {
namespace {

constexpr std::size_t bufferSize = std::size_t{1} << 20;
// Written while the next one fills: half of the time that the gate is held for small files.
constexpr std::size_t handOverSize = std::size_t{4} << 20;

// In the machine's own form: nobody else reads it.
struct Header {
  std::int64_t modified;
  std::uint64_t size;
  std::uint64_t number;
  std::uint32_t nameLength;
  std::uint16_t permissions;
  Type type;
};

}  // namespace

Writer::Writer(FileSystem& fileSystem, const std::filesystem::path& path)
    : file_(fileSystem.open(path, FileSystem::OpenMode::createNew, LinkPolicy::noFollow)) {
  buffer_.reserve(handOverSize + bufferSize);
  handedOver_.reserve(handOverSize + bufferSize);
}

void Writer::add(const Record& record, std::string_view contents) {
  Header header{};
  header.modified = record.modified.time_since_epoch().count();
  header.size = record.size;
  header.number = record.number;
  header.nameLength = static_cast<std::uint32_t>(record.name.size());
  header.permissions = static_cast<std::uint16_t>(record.permissions);
  header.type = record.type;
  buffer_.append(reinterpret_cast<const char*>(&header), sizeof(header));
  buffer_ += record.name;
  buffer_ += contents;
  if (buffer_.size() < handOverSize) return;
  settle();
  handedOver_.swap(buffer_);
  buffer_.clear();
  writing_ = std::async(std::launch::async, [this] { write(handedOver_); });
}

void Writer::finish() {
  settle();
  write(buffer_);
  buffer_.clear();
}

void Writer::write(std::string_view bytes) {
  while (!bytes.empty()) bytes.remove_prefix(file_->write(bytes));
}

void Writer::settle() {
  if (writing_.valid()) writing_.get();
}

void read(FileSystem& fileSystem, const std::filesystem::path& path,
          const std::function<void(const Record& record, std::string_view contents)>& take) {
  const std::unique_ptr<File> file =
      fileSystem.open(path, FileSystem::OpenMode::read, LinkPolicy::noFollow);
  if (!file) throw FileError("读取", path, ENOENT);
  const std::uint64_t size = file->attributes().size;
  FileWindow window(*file, size, bufferSize);
  Record record;
  for (std::uint64_t at = 0; at < size;) {
    Header header;
    std::memcpy(&header, window.at(at, sizeof(header)).data(), sizeof(header));
    at += sizeof(header);
    record.type = header.type;
    record.permissions = header.permissions;
    record.modified = Moment(std::chrono::microseconds(header.modified));
    record.size = header.size;
    record.number = header.number;
    record.name = window.at(at, header.nameLength);
    at += header.nameLength;
    const std::size_t length = header.type == Type::held ? std::size_t{header.size} : 0;
    take(record, window.at(at, length));
    at += length;
  }
}

}  // namespace nomely::BackupPack
